#include "support/png_image.h"

#include <spng.h>

#include <cstdio>
#include <memory>

namespace brisko::testing {

std::uint32_t RgbaPicture::rgb(std::uint32_t x, std::uint32_t y) const {
    const std::uint8_t* p = rgba.data() + (static_cast<std::size_t>(y) * width + x) * 4;
    return (std::uint32_t{p[0]} << 16) | (std::uint32_t{p[1]} << 8) | p[2];
}

std::optional<RgbaPicture> readPng(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) return std::nullopt;
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> png(spng_ctx_new(0), &spng_ctx_free);
    spng_ihdr header{};
    std::size_t bytes = 0;
    if (!png || spng_set_png_file(png.get(), file.get()) != 0 || spng_get_ihdr(png.get(), &header) != 0 ||
        spng_decoded_image_size(png.get(), SPNG_FMT_RGBA8, &bytes) != 0) {
        return std::nullopt;
    }
    RgbaPicture picture{header.width, header.height, std::vector<std::uint8_t>(bytes)};
    if (spng_decode_image(png.get(), picture.rgba.data(), bytes, SPNG_FMT_RGBA8, 0) != 0) return std::nullopt;
    return picture;
}

}  // namespace brisko::testing
