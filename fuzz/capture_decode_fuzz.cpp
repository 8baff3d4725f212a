// Arbitrary bytes as a capture stream: the reference decoder must reject them with a message or
// decode them, never crash, hang or take memory the input does not justify.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "capture_stream_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    // Frames up to 4 Mi pixels: room for every code path, small enough to fuzz quickly.
    brisko::decode::CaptureStreamDecoder decoder({.maxFramePixels = std::uint64_t{1} << 22});
    try {
        brisko::decode::decodeCaptureStream(in, decoder, [](const brisko::decode::FrameRecord&) {});
    } catch (const brisko::decode::MalformedStream&) {
    }
    return 0;
}
