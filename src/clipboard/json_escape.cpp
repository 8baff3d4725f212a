#include "clipboard/clipboard_commands.h"

namespace brisko {

std::string jsonEscapeMinimal(std::string_view text) {
    // One pass gives the same result as doubling the backslashes first and escaping the quotes
    // second: the backslash put before a quote is never doubled.
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
    return out;
}

}  // namespace brisko
