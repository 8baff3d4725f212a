#include "backends/x11/x11_frame_stream.h"

#include <algorithm>
#include <utility>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include "capture/frame_pacer.h"
#include "backends/x11/x11_atoms.h"
#include "backends/x11/x11_monitors.h"

namespace brisko::platform::x11 {
namespace {

// After a frame that showed nothing new, the next may follow this soon: a window is mapped a
// moment before its client draws it, and the drawing must not wait for the next interval. It
// also bounds what a window that keeps redrawing the same pixels costs.
constexpr double showedNothingGapMs = 4.0;

double nowMs() {
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

const xcb_query_extension_reply_t* extension(xcb_connection_t* connection, xcb_extension_t& id) {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &id);
    return data && data->present ? data : nullptr;
}

bool damageReady(xcb_connection_t* connection) {
    if (!extension(connection, xcb_damage_id)) return false;
    const XcbReply<xcb_damage_query_version_reply_t> version(
        xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    return version != nullptr;
}

}  // namespace

X11FrameStream::X11FrameStream(std::uint32_t displayID, std::optional<PixelRect> display, const CaptureFilter& filter,
                               const FrameStreamConfiguration& configuration)
    : displayID_(displayID),
      display_(display),
      configuration_(configuration),
      excludedPids_(filter.excludedPids.begin(), filter.excludedPids.end()) {}

X11FrameStream::~X11FrameStream() {
    stop();
    if (wakeRead_ >= 0) ::close(wakeRead_);
    if (wakeWrite_ >= 0) ::close(wakeWrite_);
}

std::optional<std::string> X11FrameStream::addOutput(FrameStreamOutput& output) {
    output_ = &output;
    return std::nullopt;
}

std::optional<std::string> X11FrameStream::startCapture() {
    if (!output_) return "the stream has no output";
    if (!display_) return "the display is no longer there";
    if (auto unavailable = unavailableSize(*display_, configuration_.size)) return unavailable;
    xcb_connection_t* connection = connection_.get();
    if (!connection) return "cannot connect to the X server";
    composer_ = std::make_unique<FrameComposer>(connection, connection_.screen(), *display_);
    if (auto error = composer_->prepare()) return error;
    watchChanges(connection);
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0) return "cannot make a pipe";
    wakeRead_ = fds[0];
    wakeWrite_ = fds[1];
    thread_ = std::thread([this] { run(); });
    return std::nullopt;
}

std::optional<std::string> X11FrameStream::updateFilter(const CaptureFilter& filter) {
    {
        const std::lock_guard guard(filterLock_);
        excludedPids_ = std::set<std::int32_t>(filter.excludedPids.begin(), filter.excludedPids.end());
    }
    filterChanged_ = true;
    wake();
    return std::nullopt;
}

void X11FrameStream::stop() {
    stopping_ = true;
    wake();
    if (thread_.joinable()) thread_.join();
}

void X11FrameStream::wake() {
    if (wakeWrite_ < 0) return;
    const char byte = 1;
    // A full pipe already holds a wake.
    [[maybe_unused]] const ssize_t n = ::write(wakeWrite_, &byte, 1);
}

// What tells the stream that the picture may have changed: the root window's damage (whatever
// the server draws on the screen), each top-level window's damage (its contents also where
// others cover it, which shows where a left-out window lies), the window tree's changes and the
// cursor's shape.
void X11FrameStream::watchChanges(xcb_connection_t* connection) {
    const xcb_window_t root = connection_.root();
    // The root's own configuration changes with the screen's size; RandR tells of monitors that
    // move or change their mode within it.
    const std::uint32_t mask =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    // Which process a window belongs to may change without the tree changing: a window manager
    // marks the client in its frame (WM_STATE) and lists it on the root after decorating it.
    ownershipAtoms_ =
        internAtoms(connection, {"WM_STATE", "_NET_WM_PID", "_NET_CLIENT_LIST", "_NET_CLIENT_LIST_STACKING"});
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    const std::vector<xcb_window_t> topLevels =
        tree ? std::vector<xcb_window_t>(xcb_query_tree_children(tree.get()),
                                         xcb_query_tree_children(tree.get()) + xcb_query_tree_children_length(tree.get()))
             : std::vector<xcb_window_t>{};
    std::vector<xcb_query_tree_cookie_t> insides;
    for (const xcb_window_t w : topLevels) {
        watchProperties(connection, w);
        insides.push_back(xcb_query_tree(connection, w));
    }
    // The clients in the frames there are now; later ones are reparented into theirs.
    for (const auto cookie : insides) {
        const XcbReply<xcb_query_tree_reply_t> inside(xcb_query_tree_reply(connection, cookie, nullptr));
        if (!inside) continue;
        for (int i = 0; i < xcb_query_tree_children_length(inside.get()); ++i) {
            watchProperties(connection, xcb_query_tree_children(inside.get())[i]);
        }
    }
    if (const auto* randr = extension(connection, xcb_randr_id)) {
        std::free(xcb_randr_query_version_reply(connection, xcb_randr_query_version(connection, 1, 5), nullptr));
        randrEvent_ = randr->first_event;
        xcb_randr_select_input(connection, root,
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    }
    damage_ = damageReady(connection);
    if (damage_) {
        damageEvent_ = extension(connection, xcb_damage_id)->first_event;
        // The root's damage tells where the server drew on the screen, each new part in an
        // event of its own, so that no frame waits for a reply to learn it.
        rootDamage_ = xcb_generate_id(connection);
        xcb_damage_create(connection, rootDamage_, root, XCB_DAMAGE_REPORT_LEVEL_DELTA_RECTANGLES);
        for (const xcb_window_t w : topLevels) trackWindow(connection, w);
    }
    if (const auto* xfixes = extension(connection, xcb_xfixes_id); xfixes && configuration_.showsCursor) {
        xfixesEvent_ = xfixes->first_event;
        xcb_xfixes_select_cursor_input(connection, root, XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    }
    xcb_flush(connection);
}

// A damage object lives as long as its window; the server drops it when the window goes.
std::uint32_t X11FrameStream::trackWindow(xcb_connection_t* connection, xcb_window_t window) {
    if (!damage_) return XCB_NONE;
    const std::uint32_t damage = xcb_generate_id(connection);
    xcb_damage_create(connection, damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    return damage;
}

void X11FrameStream::watchProperties(xcb_connection_t* connection, xcb_window_t window) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

void X11FrameStream::run() {
    xcb_connection_t* connection = connection_.get();
    const double intervalMs = configuration_.minimumFrameIntervalSeconds * 1000.0;
    // Pointer motion is announced to no one, and without DAMAGE nothing is: look each interval.
    const bool poll = configuration_.showsCursor || !damage_;
    FramePacer pacer(intervalMs, showedNothingGapMs, poll ? std::optional<double>(intervalMs) : std::nullopt);
    while (!stopping_) {
        if (filterChanged_.exchange(false)) pacer.noteChange();
        if (handleEvents(connection)) pacer.noteChange();
        if (xcb_connection_has_error(connection)) {
            output_->didStopWithError("the connection to the X server was lost");
            return;
        }
        const double now = nowMs();
        const FramePacer::Decision decision = pacer.decide(now);
        if (decision.takeFrame) {
            pacer.frameTaken(now);
            // The server puts a window it has just mapped on the screen after it tells of the map:
            // after one round trip, the damage of what it drew up to now is in, and this frame
            // shows it.
            connection_.sync();
            handleEvents(connection);
            if (displayMoved_ && followDisplay(connection) == Followed::refused) return;
            const std::optional<std::vector<PixelRect>> drawn = takeDamage(connection);
            std::set<std::int32_t> excluded;
            {
                const std::lock_guard guard(filterLock_);
                excluded = excludedPids_;
            }
            const std::optional<BgraFrameView> frame = composer_->compose(excluded, configuration_.showsCursor, drawn);
            // A display that shrank refuses a read at its former size before the news of it comes.
            const Followed followed = frame ? Followed::same : followDisplay(connection);
            if (followed == Followed::refused) return;
            if (followed == Followed::moved) {
                pacer.noteChange();
                continue;
            }
            if (!frame) {
                output_->didStopWithError(xcb_connection_has_error(connection)
                                              ? "the connection to the X server was lost"
                                              : "the X server would not give the display's pixels");
                return;
            }
            if (!output_->didOutputFrame(*frame, 0)) pacer.frameShowedNothingNew();
            continue;
        }
        xcb_flush(connection);
        pollfd fds[2] = {{xcb_get_file_descriptor(connection), POLLIN, 0}, {wakeRead_, POLLIN, 0}};
        const int timeout = decision.waitMs ? static_cast<int>(std::ceil(*decision.waitMs)) : -1;
        const int ready = ::poll(fds, 2, timeout);
        if (ready == 0 && (!damage_ || pointerMoved(connection))) pacer.noteChange();
        if (ready > 0 && fds[1].revents != 0) {
            char bytes[64];
            while (::read(wakeRead_, bytes, sizeof bytes) > 0) {
            }
        }
    }
}

bool X11FrameStream::handleEvents(xcb_connection_t* connection) {
    bool changed = false;
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
        const std::uint8_t type = event->response_type & 0x7f;
        if (type == 0) {
            // An error: a window that went away between two requests. Nothing to do.
        } else if (damage_ && type == damageEvent_ + XCB_DAMAGE_NOTIFY) {
            const auto* notify = reinterpret_cast<xcb_damage_notify_event_t*>(event);
            if (notify->damage == rootDamage_) {
                noteDrawn({notify->area.x, notify->area.y, notify->area.width, notify->area.height});
            } else {
                damaged_.push_back(notify->damage);
            }
            changed = true;
        } else if (xfixesEvent_ != 0 && type == xfixesEvent_ + XCB_XFIXES_CURSOR_NOTIFY) {
            changed = true;
        } else if (randrEvent_ != 0 && (type == randrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                        type == randrEvent_ + XCB_RANDR_NOTIFY)) {
            displayMoved_ = true;
            changed = true;
        } else {
            // The root's own configuration changes with the screen's size.
            if (type == XCB_CONFIGURE_NOTIFY &&
                reinterpret_cast<xcb_configure_notify_event_t*>(event)->window == connection_.root()) {
                displayMoved_ = true;
            }
            switch (type) {
                case XCB_CREATE_NOTIFY: {
                    // The composer's own window changes whenever it is read: watching it would
                    // make frames without end.
                    const xcb_window_t created = reinterpret_cast<xcb_create_notify_event_t*>(event)->window;
                    if (created != composer_->ownWindow()) {
                        trackWindow(connection, created);
                        watchProperties(connection, created);
                    }
                    composer_->windowsChanged();
                    changed = true;
                    break;
                }
                case XCB_REPARENT_NOTIFY:
                    watchProperties(connection, reinterpret_cast<xcb_reparent_notify_event_t*>(event)->window);
                    composer_->windowsChanged();
                    changed = true;
                    break;
                case XCB_PROPERTY_NOTIFY: {
                    const xcb_atom_t atom = reinterpret_cast<xcb_property_notify_event_t*>(event)->atom;
                    if (std::find(ownershipAtoms_.begin(), ownershipAtoms_.end(), atom) != ownershipAtoms_.end()) {
                        composer_->windowsChanged();
                        changed = true;
                    }
                    break;
                }
                case XCB_DESTROY_NOTIFY:
                case XCB_MAP_NOTIFY:
                case XCB_UNMAP_NOTIFY:
                case XCB_CONFIGURE_NOTIFY:
                case XCB_CIRCULATE_NOTIFY:
                case XCB_GRAVITY_NOTIFY:
                    composer_->windowsChanged();
                    changed = true;
                    break;
                default: break;
            }
        }
        std::free(event);
    }
    return changed;
}

// A client that draws in many small pieces must not make the list grow without bound: past a
// point, one rectangle around all of them stands for them.
void X11FrameStream::noteDrawn(const PixelRect& area) {
    constexpr std::size_t maxDrawnAreas = 1024;
    if (drawn_.size() < maxDrawnAreas) {
        drawn_.push_back(area);
        return;
    }
    PixelRect around = area;
    for (const PixelRect& r : drawn_) around = unite(around, r);
    drawn_.assign(1, around);
}

// Re-arms every damage object that reported, before the frame is read: what changes while it
// is read reports again and makes the next frame. Returns where the server drew on the screen
// since the last frame, in root coordinates; absent when the server cannot say.
std::optional<std::vector<PixelRect>> X11FrameStream::takeDamage(xcb_connection_t* connection) {
    if (!damage_) return std::nullopt;
    std::sort(damaged_.begin(), damaged_.end());
    damaged_.erase(std::unique(damaged_.begin(), damaged_.end()), damaged_.end());
    damaged_.push_back(rootDamage_);
    for (const std::uint32_t damage : damaged_) xcb_damage_subtract(connection, damage, XCB_NONE, XCB_NONE);
    damaged_.clear();
    return std::exchange(drawn_, {});
}

// Looks where the stream's display lies now (the main display when it is gone) and, when that
// moved or changed its size, composes the next frames there, starting with a whole one. When it
// cannot be captured there, the stream stops.
X11FrameStream::Followed X11FrameStream::followDisplay(xcb_connection_t* connection) {
    displayMoved_ = false;
    const std::vector<Monitor> all = monitors(connection, connection_.screen());
    const auto same = std::find_if(all.begin(), all.end(), [this](const Monitor& m) { return m.id == displayID_; });
    const Rect bounds = same != all.end() ? same->bounds : mainMonitor(all).bounds;
    const PixelRect now{std::llround(bounds.x), std::llround(bounds.y), std::llround(bounds.width),
                        std::llround(bounds.height)};
    if (now == display_ || now.empty()) return Followed::same;
    display_ = now;
    composer_ = std::make_unique<FrameComposer>(connection, connection_.screen(), now);
    if (const auto error = composer_->prepare()) {
        output_->didStopWithError(*error);
        return Followed::refused;
    }
    return Followed::moved;
}

bool X11FrameStream::pointerMoved(xcb_connection_t* connection) {
    const auto last = composer_->lastPointer();
    if (!last) return false;
    const XcbReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, connection_.root()), nullptr));
    return pointer && (pointer->root_x != last->first || pointer->root_y != last->second);
}

}  // namespace brisko::platform::x11
