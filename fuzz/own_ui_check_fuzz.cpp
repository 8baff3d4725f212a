// Feeds arbitrary lines to the own-ui-check case evaluator: every line must give an answer of one
// of the documented forms or one of the three failure messages, without crashing or undefined
// behaviour (numbers are converted from arbitrary doubles).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>
#include <string_view>

#include "fake/fake_platform.h"
#include "ownui/own_ui_case.h"

namespace {

using namespace brisko;

bool isAnswer(const std::string& line) {
    static const std::regex answer(
        "brisko=[01]|front=(menu|brisko|other)|refuse=(-|[0-9]+)|exclude=(-|-?[0-9]+(,-?[0-9]+)*)");
    return std::regex_match(line, answer);
}

bool isFailureFor(const std::string& message, std::string_view line) {
    for (const std::string_view form : {"not a JSON object: ", "unknown kind in ", "number out of range in "}) {
        if (message == "own-ui-check: " + std::string(form) + std::string(line)) return true;
    }
    return false;
}

void checkLine(std::string_view line) {
    const CaseOutcome outcome = evaluateOwnUiCase(line);
    const auto* answer = std::get_if<CaseAnswer>(&outcome);
    const bool valid = answer ? isAnswer(answer->line) : isFailureFor(std::get<CaseFailure>(outcome).message, line);
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
