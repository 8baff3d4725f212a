#include "png_file.h"

#include <spng.h>

#include <cstdio>
#include <memory>

namespace brisko::decode {

std::optional<std::string> writePng(const std::string& path, std::uint32_t width, std::uint32_t height,
                                    std::span<const std::uint8_t> rgba) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file) return "cannot create " + path;
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> png(spng_ctx_new(SPNG_CTX_ENCODER), &spng_ctx_free);
    if (!png) return std::string("out of memory");
    spng_ihdr header{};
    header.width = width;
    header.height = height;
    header.bit_depth = 8;
    header.color_type = SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
    int error = spng_set_png_file(png.get(), file.get());
    if (error == 0) error = spng_set_ihdr(png.get(), &header);
    if (error == 0) error = spng_encode_image(png.get(), rgba.data(), rgba.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    if (error != 0) return "cannot write " + path + ": " + spng_strerror(error);
    return std::nullopt;
}

}  // namespace brisko::decode
