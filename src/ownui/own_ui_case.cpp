#include "ownui/own_ui_case.h"

#include <cmath>
#include <concepts>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ownui/case_line_json.h"
#include "ownui/guard_rules.h"
#include "ownui/owner_identity.h"
#include "ownui/truncation.h"

namespace brisko {
namespace {

using Json = nlohmann::json;

// Thrown while the fields of a case are read: a number is not finite, or leaves its integer type.
struct NumberOutOfRange {};

// Fields that are missing or of another JSON type take their defaults; true and false count as
// the numbers 1 and 0.

std::optional<double> asNumber(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? 1.0 : 0.0;
    if (!value.is_number()) return std::nullopt;
    const double number = value.get<double>();
    if (!std::isfinite(number)) throw NumberOutOfRange{};
    return number;
}

const Json* member(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

double realIn(const Json& object, const char* key, double fallback) {
    const Json* value = member(object, key);
    return value ? asNumber(*value).value_or(fallback) : fallback;
}

// Truncated toward zero; a wrapped value is never used.
template <std::integral T>
T integerOf(double number) {
    const std::optional<T> whole = truncatedWithin<T>(number);
    if (!whole) throw NumberOutOfRange{};
    return *whole;
}

template <std::integral T>
T integerIn(const Json& object, const char* key) {
    const Json* value = member(object, key);
    const std::optional<double> number = value ? asNumber(*value) : std::nullopt;
    return number ? integerOf<T>(*number) : T{0};
}

std::optional<std::string> textIn(const Json& object, const char* key) {
    const Json* value = member(object, key);
    if (value == nullptr || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

// The elements of an array member when every one of them is an object; otherwise none.
std::vector<const Json*> objectsIn(const Json& object, const char* key) {
    const Json* value = member(object, key);
    std::vector<const Json*> objects;
    if (value == nullptr || !value->is_array()) return objects;
    for (const Json& element : *value) {
        if (!element.is_object()) return {};
        objects.push_back(&element);
    }
    return objects;
}

std::vector<platform::ScreenWindow> windowsIn(const Json& object) {
    std::vector<platform::ScreenWindow> windows;
    for (const Json* w : objectsIn(object, "windows")) {
        windows.push_back({
            .windowID = integerIn<std::uint32_t>(*w, "id"),
            .ownerPID = integerIn<std::int32_t>(*w, "pid"),
            .bounds = {realIn(*w, "x", 0), realIn(*w, "y", 0), realIn(*w, "w", 0), realIn(*w, "h", 0)},
            .alpha = realIn(*w, "alpha", 1.0),
            .layer = integerIn<std::int64_t>(*w, "layer"),
        });
    }
    return windows;
}

// The case's host test: membership in briskoPids, an array of numbers (else no pid is the host).
HostTest hostTestIn(const Json& object) {
    std::set<std::int32_t> pids;
    const Json* value = member(object, "briskoPids");
    if (value != nullptr && value->is_array()) {
        std::vector<double> numbers;
        for (const Json& element : *value) {
            const std::optional<double> number = asNumber(element);
            if (!number) return [](std::int32_t) { return false; };
            numbers.push_back(*number);
        }
        for (const double number : numbers) pids.insert(integerOf<std::int32_t>(number));
    }
    return [pids = std::move(pids)](std::int32_t pid) { return pids.contains(pid); };
}

std::string ownerAnswer(const Json& c) {
    return isBriskoOwner(textIn(c, "bundle"), textIn(c, "exec")) ? "brisko=1" : "brisko=0";
}

std::string excludeAnswer(const Json& c) {
    std::vector<OwnerIdentity> candidates;
    for (const Json* app : objectsIn(c, "apps")) {
        candidates.push_back({integerIn<std::int32_t>(*app, "pid"), textIn(*app, "bundle"), textIn(*app, "exec")});
    }
    const std::vector<std::int32_t> pids = briskoExcludedPids(candidates);
    if (pids.empty()) return "exclude=-";
    std::string answer = "exclude=";
    for (std::size_t i = 0; i < pids.size(); ++i) {
        if (i > 0) answer += ',';
        answer += std::to_string(pids[i]);
    }
    return answer;
}

std::string hitAnswer(const Json& c) {
    const platform::Point point{realIn(c, "x", 0), realIn(c, "y", 0)};
    const std::vector<platform::ScreenWindow> windows = windowsIn(c);
    const auto window = briskoWindowAt(point, windows, hostTestIn(c));
    return window ? "refuse=" + std::to_string(window->windowID) : "refuse=-";
}

std::string frontAnswer(const Json& c) {
    const std::vector<platform::ScreenWindow> windows = windowsIn(c);
    return "front=" + std::string(rawValue(briskoKeyboardHold(windows, hostTestIn(c))));
}

using Evaluate = std::string (*)(const Json&);

std::optional<Evaluate> evaluatorFor(const Json& c) {
    const std::optional<std::string> kind = textIn(c, "kind");
    if (kind == "owner") return ownerAnswer;
    if (kind == "exclude") return excludeAnswer;
    if (kind == "hit") return hitAnswer;
    if (kind == "front") return frontAnswer;
    return std::nullopt;
}

}  // namespace

CaseOutcome evaluateOwnUiCase(std::string_view line) {
    const Json parsed = parseCaseLine(line);
    if (!parsed.is_object()) return CaseFailure{"own-ui-check: not a JSON object: " + std::string(line)};
    const std::optional<Evaluate> evaluate = evaluatorFor(parsed);
    if (!evaluate) return CaseFailure{"own-ui-check: unknown kind in " + std::string(line)};
    try {
        return CaseAnswer{(*evaluate)(parsed)};
    } catch (const NumberOutOfRange&) {
        return CaseFailure{"own-ui-check: number out of range in " + std::string(line)};
    }
}

}  // namespace brisko
