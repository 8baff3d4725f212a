// Feeds arbitrary lines to the own-ui-check case evaluator: every line must give an answer of one
// of the documented forms or one of the three failure messages, without crashing or undefined
// behaviour (numbers are converted from arbitrary doubles).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fake/fake_platform.h"
#include "ownui/own_ui_case.h"

namespace {

using namespace brisko;

// Decimal integers separated by commas, at least one; signed when negative is allowed.
bool isIntegerList(std::string_view text, bool negative) {
    for (std::size_t start = 0;;) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        std::string_view number = text.substr(start, end - start);
        if (negative && number.starts_with('-')) number.remove_prefix(1);
        if (number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos) return false;
        if (end == text.size()) return true;
        start = end + 1;
    }
}

bool isAnswer(std::string_view line) {
    if (line == "brisko=0" || line == "brisko=1" || line == "exclude=-" || line == "refuse=-") return true;
    if (line == "front=menu" || line == "front=brisko" || line == "front=other") return true;
    if (line.starts_with("exclude=")) return isIntegerList(line.substr(8), true);
    if (line.starts_with("refuse=")) return isIntegerList(line.substr(7), false) && line.find(',') == line.npos;
    return false;
}

bool isFailureFor(const std::string& message, std::string_view line) {
    for (const std::string_view form : {"not a JSON object: ", "unknown kind in ", "number out of range in "}) {
        if (message == "own-ui-check: " + std::string(form) + std::string(line)) return true;
    }
    return false;
}

void checkLine(std::string_view line) {
    const CaseOutcome outcome = evaluateOwnUiCase(line);
    const bool valid = std::visit(
        [&](const auto& result) {
            if constexpr (std::is_same_v<std::decay_t<decltype(result)>, CaseAnswer>) {
                return isAnswer(result.line);
            } else {
                return isFailureFor(result.message, line);
            }
        },
        outcome);
    if (!valid) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fake::FakePlatform platform;  // the process state the rules read their constants from
    std::string_view input(reinterpret_cast<const char*>(data), size);
    while (!input.empty()) {
        const std::size_t end = input.find('\n');
        checkLine(input.substr(0, end));
        if (end == std::string_view::npos) break;
        input.remove_prefix(end + 1);
    }
    return 0;
}
