#pragma once

#include <string>
#include <vector>

namespace brisko {

void printClipboard(const std::vector<std::string>& requestedTypes);
void clearClipboardTransient();
void printClipboardAccess();
void setClipboard(const std::string& text);

}  // namespace brisko
