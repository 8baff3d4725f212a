#pragma once

#include <string>
#include <string_view>

namespace brisko {

inline constexpr std::string_view programPrefix = "brisko-mac-input: ";

// "brisko-mac-input: {message}" and a line feed.
std::string diagnosticLine(std::string_view message);
// Writes the diagnostic line to standard error in one write.
void warn(std::string_view message);
// Writes the diagnostic line and ends the process with status 2.
[[noreturn]] void die(std::string_view message);
// Ends the process with the status (buffered output flushed). From another thread than the main
// one it ends at once, without running static destructors or exit handlers.
[[noreturn]] void exitProcess(int status);
// Writes text and a line feed to standard output in one write; a failed write is ignored.
void writeStdoutLine(std::string_view text);

}  // namespace brisko
