#include "ownui/case_line_json.h"

#include <optional>
#include <string>

namespace brisko {
namespace {

using Json = nlohmann::json;

// Validates only, and records where the first overflowing number literal ends.
class OverflowFinder final : public nlohmann::json_sax<Json> {
public:
    struct Token {
        std::size_t end;
        std::size_t length;
    };
    std::optional<Token> overflow;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t position, const std::string& lastToken, const Json::exception& error) override {
        constexpr int numberOverflow = 406;
        if (error.id == numberOverflow && lastToken.size() <= position) overflow = Token{position, lastToken.size()};
        return false;
    }
};

}  // namespace

CaseLineJson parseCaseLine(std::string_view line) {
    CaseLineJson parsed{Json::parse(line, nullptr, false)};
    std::string text(parsed.value.is_discarded() ? line : std::string_view());
    // The parser stops at the first overflowing literal, so they are replaced one at a time.
    while (parsed.value.is_discarded()) {
        OverflowFinder finder;
        Json::sax_parse(text, &finder);
        if (!finder.overflow) break;
        text.replace(finder.overflow->end - finder.overflow->length, finder.overflow->length, "0");
        parsed.hasOverflowingNumber = true;
        parsed.value = Json::parse(text, nullptr, false);
    }
    return parsed;
}

}  // namespace brisko
