// Raw DEFLATE from the system compression library, whose COMPRESSION_ZLIB is raw DEFLATE.
#include <compression.h>

#include <vector>

#include "capture/raw_deflater.h"

namespace brisko {
namespace {

class SystemDeflater final : public RawDeflater {
public:
    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        if (input.empty()) return 0;
        return compression_encode_buffer(output.data(), output.size(), input.data(), input.size(), scratch_.data(),
                                         COMPRESSION_ZLIB);
    }

private:
    // Our own scratch space, so that the library does not allocate one on every call.
    std::vector<std::uint8_t> scratch_ =
        std::vector<std::uint8_t>(compression_encode_scratch_buffer_size(COMPRESSION_ZLIB));
};

}  // namespace

std::unique_ptr<RawDeflater> makeRawDeflater(int) { return std::make_unique<SystemDeflater>(); }

}  // namespace brisko
