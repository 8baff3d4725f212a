#include "ownui/case_line_json.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace brisko {
namespace {

using Json = nlohmann::json;

// Validates only, following where in the value each token lies, and records the place and the
// extent of the first number literal too large for a double.
class OverflowFinder final : public nlohmann::json_sax<Json> {
public:
    struct Overflow {
        std::size_t end;
        std::size_t length;
        Json::json_pointer at;
    };
    std::optional<Overflow> overflow;

    bool null() override { return advance(); }
    bool boolean(bool) override { return advance(); }
    bool number_integer(number_integer_t) override { return advance(); }
    bool number_unsigned(number_unsigned_t) override { return advance(); }
    bool number_float(number_float_t, const string_t&) override { return advance(); }
    bool string(string_t&) override { return advance(); }
    bool binary(binary_t&) override { return advance(); }
    bool start_object(std::size_t) override {
        containers_.push_back({false, 0, {}});
        return true;
    }
    bool key(string_t& name) override {
        containers_.back().key = name;
        return true;
    }
    bool end_object() override {
        containers_.pop_back();
        return advance();
    }
    bool start_array(std::size_t) override {
        containers_.push_back({true, 0, {}});
        return true;
    }
    bool end_array() override {
        containers_.pop_back();
        return advance();
    }
    bool parse_error(std::size_t position, const std::string& lastToken, const Json::exception& error) override {
        constexpr int numberOverflow = 406;
        if (error.id == numberOverflow && lastToken.size() <= position) {
            overflow = Overflow{position, lastToken.size(), place()};
        }
        return false;
    }

private:
    // The member or element being read in each enclosing container.
    struct Container {
        bool array;
        std::size_t index;
        std::string key;
    };

    bool advance() {
        if (!containers_.empty() && containers_.back().array) ++containers_.back().index;
        return true;
    }
    Json::json_pointer place() const {
        Json::json_pointer at;
        for (const Container& c : containers_) {
            if (c.array) at /= c.index;
            else at /= c.key;
        }
        return at;
    }

    std::vector<Container> containers_;
};

}  // namespace

nlohmann::json parseCaseLine(std::string_view line) {
    Json value = Json::parse(line, nullptr, false);
    std::string text(value.is_discarded() ? line : std::string_view());
    std::vector<Json::json_pointer> overflowing;
    // The parser stops at the first overflowing literal, so they are replaced by 0 one at a time
    // and put back as infinities once the whole line has been read.
    while (value.is_discarded()) {
        OverflowFinder finder;
        Json::sax_parse(text, &finder);
        if (!finder.overflow) break;
        text.replace(finder.overflow->end - finder.overflow->length, finder.overflow->length, 1, '0');
        overflowing.push_back(std::move(finder.overflow->at));
        value = Json::parse(text, nullptr, false);
    }
    if (value.is_discarded()) return value;
    for (const Json::json_pointer& at : overflowing) value[at] = std::numeric_limits<double>::infinity();
    return value;
}

}  // namespace brisko
