#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "clipboard/base64.h"
#include "clipboard/clipboard_commands.h"

// get-clipboard. A type the clipboard lists may still fail to deliver (lazily provided data whose
// owner is slow or gone), so the read is tried three times, 50 ms apart, before giving up.

namespace brisko {
namespace {

constexpr std::string_view concealedType = "org.nspasteboard.ConcealedType";
constexpr int clipboardReads = 3;
constexpr unsigned long long retryPauseMicroseconds = 50000;

// One read of the clipboard's count and types.
struct Snapshot {
    std::int64_t changeCount;
    std::size_t itemCount;
    std::set<std::string> types;  // byte order of UTF-8 is code point order
};

Snapshot readSnapshot(platform::Pasteboard& pasteboard) {
    Snapshot snapshot{pasteboard.changeCount(), 0, {}};
    const auto items = pasteboard.itemTypes();
    snapshot.itemCount = items.size();
    for (const auto& itemTypes : items) snapshot.types.insert(itemTypes.begin(), itemTypes.end());
    return snapshot;
}

std::string typesList(const std::set<std::string>& types) {
    std::string list;
    for (const std::string& type : types) {
        if (!list.empty()) list += ',';
        list += '"' + jsonEscapeMinimal(type) + '"';
    }
    return list;
}

std::string head(const Snapshot& snapshot) { return "{\"changeCount\":" + std::to_string(snapshot.changeCount); }

void printConcealed(const Snapshot& snapshot) {
    writeStdoutLine(head(snapshot) + ",\"concealed\":true,\"types\":[" + typesList(snapshot.types) + "],\"items\":[]}");
}

void printEmpty(const Snapshot& snapshot) {
    writeStdoutLine(head(snapshot) + ",\"types\":[" + typesList(snapshot.types) + "],\"items\":[]}");
}

void printFound(const Snapshot& snapshot, const std::string& type, const platform::Bytes& data) {
    writeStdoutLine(head(snapshot) + ",\"types\":[" + typesList(snapshot.types) + "],\"items\":[{\"type\":\"" +
                    jsonEscapeMinimal(type) + "\",\"base64\":\"" + base64Encode(data) + "\"}]}");
}

const std::string* firstListed(const std::vector<std::string>& requested, const std::set<std::string>& listed) {
    for (const std::string& type : requested) {
        if (listed.contains(type)) return &type;
    }
    return nullptr;
}

}  // namespace

void printClipboard(const std::vector<std::string>& requestedTypes) {
    platform::Pasteboard& pasteboard = processState().services.pasteboard;
    for (int read = 0;; ++read) {
        const Snapshot snapshot = readSnapshot(pasteboard);
        if (snapshot.types.contains(std::string(concealedType))) return printConcealed(snapshot);
        const std::string* chosen = firstListed(requestedTypes, snapshot.types);
        if (chosen == nullptr) return printEmpty(snapshot);
        for (std::size_t item = 0; item < snapshot.itemCount; ++item) {
            if (const auto data = pasteboard.data(item, *chosen)) return printFound(snapshot, *chosen, *data);
        }
        if (read == clipboardReads - 1) return printEmpty(snapshot);
        processState().services.clock.sleepMicroseconds(retryPauseMicroseconds);
    }
}

}  // namespace brisko
