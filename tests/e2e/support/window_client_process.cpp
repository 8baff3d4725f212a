#include "support/window_client_process.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "cli/unicode_text.h"

namespace brisko::testing {

const std::string& windowClientPath() {
    static const std::string path = BRISKO_WINDOW_CLIENT_PATH;
    return path;
}

const std::string& menubarClientPath() {
    static const std::string path = BRISKO_MENUBAR_CLIENT_PATH;
    return path;
}

WindowClientProcess::WindowClientProcess(const std::string& program, const std::string& display)
    : process_(program, {}, display.empty() ? Environment{} : Environment{{"DISPLAY", display}}, Streams::pipedOwnErr) {}

std::string WindowClientProcess::ask(const std::string& command, const std::string& answerWord) {
    if (!process_.write(command + "\n")) throw std::runtime_error("the window client is gone");
    for (;;) {
        auto line = process_.readLine();
        if (!line) throw std::runtime_error("the window client did not answer " + command);
        if (line->starts_with("error ")) throw std::runtime_error("window client: " + *line);
        if (*line == answerWord || line->starts_with(answerWord + " ")) return *line;
        received_.push_back(std::move(*line));
    }
}

std::uint32_t WindowClientProcess::map(const std::string& name, const std::string& spec) {
    const std::string answer = ask("map " + name + " " + spec, "mapped " + name);
    return static_cast<std::uint32_t>(std::stoul(answer.substr(answer.rfind(' ') + 1)));
}

void WindowClientProcess::unmap(const std::string& name) { ask("unmap " + name, "unmapped " + name); }

void WindowClientProcess::paint(const std::string& name, std::uint32_t color) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "%06x", color);
    ask("paint " + name + " " + hex, "painted " + name);
}

std::vector<std::string> WindowClientProcess::events() {
    ask("sync", "synced");
    return std::exchange(received_, {});
}

std::string WindowClientProcess::held() {
    const std::vector<std::string> w = words(ask("state", "state"));
    if (w.size() != 5) throw std::runtime_error("unexpected state line");
    return w[1] + " " + w[2];
}

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
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

void expectOutput(const std::vector<std::string>& args, const std::string& out, const Environment& env,
                  std::string_view input) {
    const ProgramResult r = runBrisko(args, input, env);
    EXPECT_EQ(std::tuple(r.status, r.out, r.err), std::tuple(0, out, std::string())) << args[0];
}

}  // namespace brisko::testing
