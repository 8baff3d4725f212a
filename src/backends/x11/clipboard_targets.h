#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backends/x11/selection_server.h"

// The clipboard's contents as X names them (selection targets) and as the program reports them
// (the platform's type identifiers where X has a counterpart, the target's name otherwise).
namespace brisko::platform::x11 {

inline constexpr std::string_view plainTextType = "public.utf8-plain-text";
inline constexpr std::string_view concealedType = "org.nspasteboard.ConcealedType";
// Password managers mark secret contents by offering this target with the value "secret".
inline constexpr std::string_view passwordHintTarget = "x-kde-passwordManagerHint";
inline constexpr std::string_view secretHint = "secret";

// The type a target's data is reported under; absent for the targets that describe the
// selection rather than hold contents (TARGETS, TIMESTAMP, MULTIPLE, ...).
std::optional<std::string> reportedType(std::string_view target);

// The forms in which the clipboard offers data of a type: plain text as UTF8_STRING,
// text/plain;charset=utf-8, STRING (Latin-1) and TEXT; the concealed marker as the password
// manager hint; other types under their X target names.
std::vector<SelectionOffer> offersFor(std::string_view type, const std::vector<std::uint8_t>& data);

}  // namespace brisko::platform::x11
