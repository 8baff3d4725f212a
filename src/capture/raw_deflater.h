#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace brisko {

// Room for the raw DEFLATE form of n bytes: n + n/16 + 64. Incompressible data costs 5 bytes
// per 65535 in stored blocks, so compression never fails for want of room.
constexpr std::size_t deflateCapacity(std::size_t n) { return n + n / 16 + 64; }

// A raw DEFLATE compressor (RFC 1951: no zlib header, no checksum). Each thread uses its own.
class RawDeflater {
public:
    virtual ~RawDeflater() = default;
    // Compresses `input` in one call into `output`, which holds at least
    // deflateCapacity(input.size()) bytes. Returns the compressed length; 0 when the input is
    // empty or the compressor failed.
    virtual std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) = 0;
};

// The platform's compressor. `level` (1 fastest to 12 smallest) applies where the library has
// levels; the system library on macOS has one fixed level.
std::unique_ptr<RawDeflater> makeRawDeflater(int level);

}  // namespace brisko
