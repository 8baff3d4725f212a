// Feeds arbitrary text to the input-stream reader, the block parser and the player (over the
// recording fake), and the same text to play-check. Nothing may crash, hang or leak.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "stream/input_stream.h"
#include "support/deferred_queue.h"

namespace {

// Bounds the work of commands that post many events (a scroll of two billion lines).
constexpr std::size_t maxPostsPerInput = 4096;

void serve(const std::string& text) {
    brisko::fake::FakePlatform platform;
    platform.events.failFrom = maxPostsPerInput;
    brisko::processState().postPacingMicroseconds = 0;
    std::istringstream in(text);
    brisko::testing::DeferredQueue player;
    try {
        // The end of input stops every block before the queue runs, so no block waits.
        brisko::serveInputStream(in, player);
    } catch (const brisko::fake::ProcessExit&) {
        // A command ended the process (for example once the fake stopped creating events).
    }
    std::istringstream answers(platform.streams.out());
    for (std::string line; std::getline(answers, line);) {
        if (!line.starts_with("played ")) __builtin_trap();
    }
}

void check(const std::string& text) {
    brisko::fake::FakePlatform platform;
    const int status = platform.run({"play-check"}, text);
    if (status != 0 && status != 2) __builtin_trap();
    if ((status == 0) == platform.streams.out().empty()) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    serve(text);
    check(text);
    return 0;
}
