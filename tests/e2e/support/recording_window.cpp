#include "e2e/support/recording_window.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "input/unicode_text.h"

namespace brisko::e2e {
namespace {

std::vector<std::string> geometryArgs(const std::vector<Geometry>& windows) {
    std::vector<std::string> args;
    for (const Geometry& g : windows) {
        args.push_back(std::to_string(g.x) + "," + std::to_string(g.y) + "," + std::to_string(g.width) + "," +
                       std::to_string(g.height));
    }
    return args;
}

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

}  // namespace

RecordingWindow::RecordingWindow(const std::string& display, const std::vector<Geometry>& windows)
    : process_(RECORDING_WINDOW_PATH, geometryArgs(windows), {{"DISPLAY", display}}) {
    if (!process_.readUntil("ready")) throw std::runtime_error("the recording window did not start");
}

std::vector<std::string> RecordingWindow::events() {
    ask("sync", "synced");
    return std::exchange(received_, {});
}

std::string RecordingWindow::ask(const std::string& command, const std::string& answerWord) {
    process_.write(command + "\n");
    for (;;) {
        auto line = process_.readLine();
        if (!line) throw std::runtime_error("the recording window did not answer " + command);
        if (*line == answerWord || line->starts_with(answerWord + " ")) return *line;
        received_.push_back(std::move(*line));
    }
}

std::string RecordingWindow::waitFor(const std::string& prefix, std::chrono::milliseconds timeout) {
    for (const std::string& line : received_) {
        if (line.starts_with(prefix)) return line;
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        auto line = process_.readLine(std::max(left, std::chrono::milliseconds(0)));
        if (!line) throw std::runtime_error("the recording window received no '" + prefix + "'");
        received_.push_back(*line);
        if (line->starts_with(prefix)) return *line;
    }
}

HeldState RecordingWindow::held() {
    const std::vector<std::string> w = words(ask("state", "state"));
    if (w.size() != 5 || w[0] != "state") throw std::runtime_error("unexpected state line");
    return {w[1], w[2], std::stoi(w[3]), std::stoi(w[4])};
}

std::vector<std::string> linesOf(const std::vector<std::string>& lines, const std::string& word) {
    std::vector<std::string> out;
    for (const std::string& line : lines) {
        if (line.starts_with(word + " ")) out.push_back(line);
    }
    return out;
}

std::string typedText(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : linesOf(lines, "keypress")) {
        const std::string last = words(line).back();
        if (last.starts_with("U+")) text += utf8FromScalar(static_cast<char32_t>(std::stoul(last.substr(2), nullptr, 16)));
    }
    return text;
}

}  // namespace brisko::e2e
