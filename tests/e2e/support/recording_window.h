#pragma once

#include <string>
#include <vector>

#include "e2e/support/child_process.h"

namespace brisko::e2e {

struct Geometry {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

// What the server holds down right now, as the recording window sees it.
struct HeldState {
    std::string keys;   // keycodes joined by ',', or "none"
    std::string state;  // modifier and button names joined by '+', or "none"
    int x = 0;
    int y = 0;
};

// The test client (tests/e2e/client/recording_window.cpp): windows of the given geometry on the
// display, window 0 holding the keyboard focus, recording the input they receive.
class RecordingWindow {
public:
    RecordingWindow(const std::string& display, const std::vector<Geometry>& windows);

    // The event lines received since the previous call, once everything the server has been
    // sent so far has been delivered: call it after the program that posted the input has ended.
    std::vector<std::string> events();
    // Waits until an event line that starts with prefix has arrived since the last events() (the
    // lines stay for events()), and returns it; throws when none comes within the time.
    std::string waitFor(const std::string& prefix, std::chrono::milliseconds timeout = 10s);
    HeldState held();
    // Sends one command line and returns its answer, the next line that starts with answerWord;
    // event lines that come before it are kept for events().
    std::string ask(const std::string& command, const std::string& answerWord);

private:
    ChildProcess process_;
    std::vector<std::string> received_;
};

// The lines among lines that start with the word.
std::vector<std::string> linesOf(const std::vector<std::string>& lines, const std::string& word);
// The text the key presses among the lines typed, as UTF-8.
std::string typedText(const std::vector<std::string>& lines);

}  // namespace brisko::e2e
