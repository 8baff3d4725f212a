#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/pasteboard.h"

namespace brisko {

// Standard base64 (RFC 4648 alphabet "A-Za-z0-9+/") with "=" padding and no line breaks.
std::string base64Encode(const platform::Bytes& bytes);

// Strict standard base64: the text is whole groups of four characters of the alphabet, the last
// group optionally ending in "=" or "==". Anything else is absent: white space, line breaks, the
// URL-safe alphabet, padding inside the text, and unpadded text whose length is not a multiple of
// four (the agent's encoders always pad, so a short group means a truncated argument). Bits left
// over in the last character of a padded group are ignored.
std::optional<platform::Bytes> base64Decode(std::string_view text);

}  // namespace brisko
