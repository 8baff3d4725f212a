#include "capture/png_encoder.h"

#include <spng.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <vector>

namespace brisko {
namespace {

std::vector<std::uint8_t> rgbRows(const platform::BgraFrameView& picture) {
    std::vector<std::uint8_t> rgb(static_cast<std::size_t>(picture.width * picture.height * 3));
    std::uint8_t* out = rgb.data();
    for (std::int64_t y = 0; y < picture.height; ++y) {
        const std::uint8_t* in = picture.base + y * picture.bytesPerRow;
        for (std::int64_t x = 0; x < picture.width; ++x, in += 4, out += 3) {
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
        }
    }
    return rgb;
}

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

std::optional<std::vector<std::uint8_t>> encodePng(const platform::BgraFrameView& picture) {
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> png(spng_ctx_new(SPNG_CTX_ENCODER), &spng_ctx_free);
    if (!png) return std::nullopt;
    spng_ihdr header{};
    header.width = static_cast<std::uint32_t>(picture.width);
    header.height = static_cast<std::uint32_t>(picture.height);
    header.bit_depth = 8;
    header.color_type = SPNG_COLOR_TYPE_TRUECOLOR;
    const std::vector<std::uint8_t> rgb = rgbRows(picture);
    int error = spng_set_option(png.get(), SPNG_ENCODE_TO_BUFFER, 1);
    if (error == 0) error = spng_set_ihdr(png.get(), &header);
    if (error == 0) error = spng_encode_image(png.get(), rgb.data(), rgb.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    if (error != 0) return std::nullopt;
    std::size_t length = 0;
    const std::unique_ptr<void, FreeDeleter> bytes(spng_get_png_buffer(png.get(), &length, &error));
    if (!bytes || error != 0) return std::nullopt;
    const auto* first = static_cast<const std::uint8_t*>(bytes.get());
    return std::vector<std::uint8_t>(first, first + length);
}

}  // namespace

bool encodePngFile(const std::filesystem::path& path, const platform::BgraFrameView& picture) {
    const std::optional<std::vector<std::uint8_t>> png = encodePng(picture);
    if (!png) return false;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file.write(reinterpret_cast<const char*>(png->data()), static_cast<std::streamsize>(png->size()));
    file.close();
    return static_cast<bool>(file);
}

}  // namespace brisko
