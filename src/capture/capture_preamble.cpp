#include "capture/capture_preamble.h"

#include <string_view>

#include "capture/stream_format.h"
#include "cli/diagnostics.h"
#include "cli/process_state.h"

namespace brisko {

void writeCaptureStreamPreamble() {
    ProcessState& state = processState();
    const std::vector<std::uint8_t> preamble =
        captureStreamPreamble(state.captureStreamMagic, state.captureStreamVersion);
    const std::string_view bytes(reinterpret_cast<const char*>(preamble.data()), preamble.size());
    if (!state.services.streams.writeOut(bytes)) exitProcess(0);
}

}  // namespace brisko
