#pragma once

#include <string>

#include "platform/capture_frame.h"

namespace brisko {

// Writes the picture as an 8-bit RGB PNG file at path (relative to the current directory when
// relative). The file appears whole or not at all: the bytes go to a new file beside it, which
// then takes the name. False when it could not be written; nothing is left behind then.
bool writePngFile(const std::string& path, const platform::BgraFrameView& picture);

}  // namespace brisko
