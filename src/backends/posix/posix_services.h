#pragma once

#include "platform/process_signals.h"
#include "platform/process_streams.h"
#include "platform/session_loop.h"

// What both backends take from the POSIX system: this process's standard streams, its signals,
// and the loop its long-running sessions wait in.
namespace brisko::platform {

ProcessStreams& systemStreams();
ProcessSignals& systemSignals();
SessionLoop& systemSessionLoop();

}  // namespace brisko::platform
