#include "backends/x11/x11_pasteboard.h"

#include <algorithm>
#include <cstring>

#include "backends/x11/clipboard_change_count.h"
#include "backends/x11/clipboard_targets.h"
#include "backends/x11/clipboard_owner_process.h"
#include "backends/x11/selection_request.h"

namespace brisko::platform::x11 {
namespace {

constexpr std::string_view clipboardSelection = "CLIPBOARD";

// How long an owner may take to answer a request, or to send the next piece of a large one. An
// owner that lets it run out is asked nothing more, so a hung application costs a read of the
// clipboard this long once, whatever it offers.
constexpr std::chrono::milliseconds ownerPatience{400};

// How long the server may take to stamp a change of the clipboard.
constexpr std::chrono::milliseconds serverPatience{2000};

xcb_window_t clipboardOwnerWindow(SelectionConnection& connection) {
    const auto cookie = xcb_get_selection_owner(connection.xcb(), connection.atom(clipboardSelection));
    xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(connection.xcb(), cookie, nullptr);
    const xcb_window_t owner = reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
    std::free(reply);
    return owner;
}

template <typename T>
bool contains(const std::vector<T>& list, const T& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

X11Pasteboard::X11Pasteboard(std::string displayName) : displayName_(std::move(displayName)) {}

X11Pasteboard::~X11Pasteboard() = default;

SelectionConnection* X11Pasteboard::connection() {
    if (!connectionTried_) {
        connectionTried_ = true;
        connection_ = SelectionConnection::open(displayName_);
    }
    return connection_ && !connection_->broken() ? connection_.get() : nullptr;
}

std::optional<PropertyValue> X11Pasteboard::ask(SelectionConnection& c, std::string_view target) {
    const xcb_window_t owner = clipboardOwnerWindow(c);
    if (owner != owner_.window) owner_ = Owner{owner, {}, false};
    if (owner == XCB_WINDOW_NONE || owner_.silent) return std::nullopt;
    SelectionAnswer answer = requestSelection(c, c.atom(clipboardSelection), c.atom(target), ownerPatience);
    owner_.silent = answer.silent;
    return std::move(answer.value);
}

std::vector<std::string> X11Pasteboard::offeredTargets(SelectionConnection& c) {
    const auto list = ask(c, "TARGETS");
    // An owner fallen silent still offers what it listed before it did.
    if (!list || list->format != 32) return owner_.silent ? owner_.targets : std::vector<std::string>{};
    std::vector<xcb_atom_t> atoms(list->bytes.size() / sizeof(xcb_atom_t));
    std::memcpy(atoms.data(), list->bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    owner_.targets = c.atomNames(atoms);
    return owner_.targets;
}

bool X11Pasteboard::concealed(SelectionConnection& c) {
    const auto hint = ask(c, passwordHintTarget);
    return hint && std::string_view(reinterpret_cast<const char*>(hint->bytes.data()), hint->bytes.size()) == secretHint;
}

std::int64_t X11Pasteboard::changeCount() {
    SelectionConnection* const c = connection();
    if (!c) return 0;
    ClipboardOwner owner{clipboardOwnerWindow(*c)};
    // Only an owner that lists TIMESTAMP is asked for it: some owners answer every target with
    // their data.
    if (owner.window != XCB_WINDOW_NONE && contains(offeredTargets(*c), std::string("TIMESTAMP"))) {
        const auto since = ask(*c, "TIMESTAMP");
        if (since && since->format == 32 && since->bytes.size() == sizeof owner.since) {
            std::memcpy(&owner.since, since->bytes.data(), sizeof owner.since);
        }
    }
    return clipboardChangeCount(*c, owner);
}

std::vector<std::vector<std::string>> X11Pasteboard::itemTypes() {
    lastTypes_.clear();
    SelectionConnection* const c = connection();
    if (!c || clipboardOwnerWindow(*c) == XCB_WINDOW_NONE) return {};
    for (const std::string& target : offeredTargets(*c)) {
        auto type = reportedType(target);
        if (!type) continue;
        if (target == passwordHintTarget && concealed(*c)) type = std::string(concealedType);
        const auto known = std::find_if(lastTypes_.begin(), lastTypes_.end(),
                                        [&](const TypeTargets& t) { return t.type == *type; });
        if (known != lastTypes_.end()) {
            known->targets.push_back(target);
        } else {
            lastTypes_.push_back({*type, {target}});
        }
    }
    if (lastTypes_.empty()) return {};
    std::vector<std::string> types;
    for (const TypeTargets& t : lastTypes_) types.push_back(t.type);
    return {types};
}

std::optional<Bytes> X11Pasteboard::data(std::size_t item, const std::string& type) {
    const auto find = [&] {
        return std::find_if(lastTypes_.begin(), lastTypes_.end(), [&](const TypeTargets& t) { return t.type == type; });
    };
    if (item != 0) return std::nullopt;
    if (find() == lastTypes_.end()) itemTypes();
    const auto known = find();
    SelectionConnection* const c = connection();
    if (!c || known == lastTypes_.end()) return std::nullopt;
    for (const std::string& target : known->targets) {
        if (auto value = ask(*c, target)) return std::move(value->bytes);
    }
    return std::nullopt;
}

void X11Pasteboard::clearContents() {
    written_.clear();
    lastTypes_.clear();
    SelectionConnection* const c = connection();
    if (!c) return;
    const auto now = c->serverTime(std::chrono::steady_clock::now() + serverPatience);
    if (!now) return;
    // Any client may leave a selection without an owner; the owner is told it lost it.
    xcb_set_selection_owner(c->xcb(), XCB_WINDOW_NONE, c->atom(clipboardSelection), *now);
    clipboardChangeCount(*c, ClipboardOwner{});
}

void X11Pasteboard::setData(const std::string& type, const Bytes& data) {
    const auto same = std::find_if(written_.begin(), written_.end(), [&](const auto& w) { return w.first == type; });
    if (same != written_.end()) {
        same->second = data;
    } else {
        written_.emplace_back(type, data);
    }
    std::vector<SelectionOffer> offers;
    for (const auto& [t, d] : written_) {
        for (SelectionOffer& offer : offersFor(t, d)) offers.push_back(std::move(offer));
    }
    serveClipboardFromOwnerProcess(displayName_, offers);
}

void X11Pasteboard::setPlainText(const std::string& utf8) { setData(std::string(plainTextType), Bytes(utf8.begin(), utf8.end())); }

}  // namespace brisko::platform::x11
