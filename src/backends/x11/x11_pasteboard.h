#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/pasteboard.h"
#include "backends/x11/selection_connection.h"

namespace brisko::platform::x11 {


// The general clipboard on X: the CLIPBOARD selection, seen as one item whose types are the
// owner's targets. What this process puts on it is served by a detached process of its own
// (see clipboard_owner_process.h), so that it stays after this process exits; that holds in
// the long-running modes too, where contents set by the agent should outlive the session.
class X11Pasteboard final : public Pasteboard {
public:
    // An empty display name means the one DISPLAY names. The connection is made on first use.
    explicit X11Pasteboard(std::string displayName = {});
    ~X11Pasteboard() override;

    std::int64_t changeCount() override;
    std::vector<std::vector<std::string>> itemTypes() override;
    std::optional<Bytes> data(std::size_t item, const std::string& type) override;
    // Leaves the clipboard without an owner, which readers see as empty; the owner is told it
    // lost the clipboard (a serving process of ours exits). Data set afterwards, even the empty
    // transient marker, gets a serving process of its own, so a clipboard manager that restores
    // contents whose owner vanished finds an owner instead.
    void clearContents() override;
    // Each call hands everything set since the last clear to a new serving process.
    void setData(const std::string& type, const Bytes& data) override;
    void setPlainText(const std::string& utf8) override;
    // Every X client may read every selection.
    std::int64_t accessBehavior() override { return 2; }

private:
    struct TypeTargets {
        std::string type;
        std::vector<std::string> targets;  // in the owner's order
    };

    // The clipboard's owner as this process has found it: the targets it listed last, and whether
    // it has fallen silent (let a request go unanswered), after which it is asked nothing more.
    struct Owner {
        xcb_window_t window = XCB_WINDOW_NONE;
        std::vector<std::string> targets;
        bool silent = false;
    };

    SelectionConnection* connection();
    // The owner's answer for the target; absent without an owner, when it refuses, and from an
    // owner that has fallen silent.
    std::optional<PropertyValue> ask(SelectionConnection& connection, std::string_view target);
    std::vector<std::string> offeredTargets(SelectionConnection& connection);
    bool concealed(SelectionConnection& connection);

    std::string displayName_;
    std::unique_ptr<SelectionConnection> connection_;
    bool connectionTried_ = false;
    Owner owner_;
    // The owner's types at the last look, with the targets that carry each.
    std::vector<TypeTargets> lastTypes_;
    // What this process has set since it last cleared the clipboard, in order.
    std::vector<std::pair<std::string, Bytes>> written_;
};

}  // namespace brisko::platform::x11
