#include "capture/png_file.h"

#include <filesystem>
#include <random>
#include <system_error>

#include "capture/png_encoder.h"

namespace brisko {
namespace {

// A name beside the destination that no file has yet, so that two writers never share one.
std::filesystem::path partialName(const std::filesystem::path& destination) {
    std::random_device random;
    for (;;) {
        std::filesystem::path candidate = destination;
        candidate += ".partial-" + std::to_string(random());
        std::error_code error;
        if (!std::filesystem::exists(candidate, error)) return candidate;
    }
}

}  // namespace

bool writePngFile(const std::string& path, const platform::BgraFrameView& picture) {
    if (picture.base == nullptr || picture.width <= 0 || picture.height <= 0 || path.empty()) return false;
    const std::filesystem::path destination(path);
    const std::filesystem::path partial = partialName(destination);
    std::error_code error;
    if (encodePngFile(partial, picture)) {
        std::filesystem::rename(partial, destination, error);
        if (!error) return true;
    }
    std::filesystem::remove(partial, error);
    return false;
}

}  // namespace brisko
