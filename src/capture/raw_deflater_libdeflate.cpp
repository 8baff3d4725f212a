#include <libdeflate.h>

#include <new>

#include "capture/raw_deflater.h"

namespace brisko {
namespace {

class LibdeflateDeflater final : public RawDeflater {
public:
    explicit LibdeflateDeflater(int level) : compressor_(libdeflate_alloc_compressor(level)) {
        if (compressor_ == nullptr) throw std::bad_alloc();
    }
    ~LibdeflateDeflater() override { libdeflate_free_compressor(compressor_); }
    LibdeflateDeflater(const LibdeflateDeflater&) = delete;
    LibdeflateDeflater& operator=(const LibdeflateDeflater&) = delete;

    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        if (input.empty()) return 0;
        return libdeflate_deflate_compress(compressor_, input.data(), input.size(), output.data(), output.size());
    }

private:
    libdeflate_compressor* compressor_;
};

}  // namespace

std::unique_ptr<RawDeflater> makeRawDeflater(int level) { return std::make_unique<LibdeflateDeflater>(level); }

}  // namespace brisko
