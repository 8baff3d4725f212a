#pragma once

#include <filesystem>

#include "platform/capture_frame.h"

namespace brisko {

// The platform's PNG encoder: writes a picture of at least one pixel as an 8-bit RGB PNG file at
// exactly this path, creating or replacing the file. False when it could not; a partly written
// file may be left behind.
bool encodePngFile(const std::filesystem::path& path, const platform::BgraFrameView& picture);

}  // namespace brisko
