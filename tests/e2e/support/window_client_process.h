#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// The built window client (tools/window-client), and the same client named like the host's
// menu-bar process.
const std::string& windowClientPath();
const std::string& menubarClientPath();

// A running window client on the test's display (or on the one given): it maps windows on
// request and reports the input they receive.
class WindowClientProcess {
public:
    explicit WindowClientProcess(const std::string& program = windowClientPath(), const std::string& display = {});

    pid_t pid() const { return process_.pid(); }
    // Sends a command line; its answer line, which starts with answerWord. Event lines that come
    // before it are kept for events(); an "error" answer throws.
    std::string ask(const std::string& command, const std::string& answerWord);
    // Maps a window ("X Y W H [options]") and returns its id once the server has mapped it.
    std::uint32_t map(const std::string& name, const std::string& spec);
    void unmap(const std::string& name);
    // Repaints the window in another colour (0xRRGGBB); returns once the server has done it.
    void paint(const std::string& name, std::uint32_t color);
    // The event lines received since the last call, after a round trip through the server: call
    // it once the program that posted the input has ended.
    std::vector<std::string> events();
    // What the server holds down right now, as the client sees it: "KEYS STATE", the keycodes
    // joined by ',' and the modifier and button names joined by '+', each "none" when empty.
    std::string held();

private:
    Process process_;
    std::vector<std::string> received_;
};

std::vector<std::string> words(const std::string& line);
// The lines among lines that start with the word.
std::vector<std::string> linesOf(const std::vector<std::string>& lines, const std::string& word);
// The text that the key presses among the lines typed, as UTF-8.
std::string typedText(const std::vector<std::string>& lines);

// Runs the built program to its end and expects it to succeed with this output and no errors.
void expectOutput(const std::vector<std::string>& args, const std::string& out = "", const Environment& env = {},
                  std::string_view input = "");

}  // namespace brisko::testing
