#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brisko {

// get-clipboard: the data of the first requested type the clipboard lists, as one JSON line.
void printClipboard(const std::vector<std::string>& requestedTypes);
// clear-clipboard: empties the clipboard and marks the change transient.
void clearClipboardTransient();
// clipboard-access: whether the system lets this process read the clipboard, as one JSON line.
void printClipboardAccess();
// Replaces the clipboard's contents with the text as plain text (the raw set-clipboard).
void setClipboard(const std::string& text);

// The escaping of free text inside the JSON this program writes by hand: backslashes doubled, then
// double quotes escaped. Nothing else is touched.
std::string jsonEscapeMinimal(std::string_view text);

}  // namespace brisko
