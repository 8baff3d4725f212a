#pragma once

namespace brisko {

// Writes the stream's preamble to standard output in one write. A failed write means the reader
// has gone: the process ends at once with status 0.
void writeCaptureStreamPreamble();

}  // namespace brisko
