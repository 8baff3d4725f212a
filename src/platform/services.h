#pragma once

#include <memory>

#include "platform/clock.h"
#include "platform/event_poster.h"
#include "platform/pasteboard.h"
#include "platform/process_signals.h"
#include "platform/process_streams.h"
#include "platform/screen_capture.h"
#include "platform/session_loop.h"
#include "platform/system_probe.h"
#include "platform/window_server.h"

namespace brisko::platform {

// The platform services the logic calls. The backend owns them; the logic only borrows.
struct Services {
    EventPoster& events;
    WindowServer& windows;
    ScreenCapture& capture;
    Pasteboard& pasteboard;
    SystemProbe& probe;
    Clock& clock;
    ProcessStreams& streams;
    ProcessSignals& signals;
    SessionLoop& sessionLoop;
};

// A backend: the services of one platform. Connections to the system are made lazily, on first
// use, so that commands that need no display work without one.
class Backend {
public:
    virtual ~Backend() = default;
    virtual Services& services() = 0;
};

}  // namespace brisko::platform
