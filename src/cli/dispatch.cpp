#include "cli/dispatch.h"

#include <algorithm>

#include "cli/command_table.h"
#include "cli/diagnostics.h"
#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "input/input_commands.h"

namespace brisko {
namespace {

[[noreturn]] void usageFailure(std::string_view usage) {
    std::string line(usage);
    line.push_back('\n');
    processState().services.streams.writeErr(line);
    exitProcess(2);
}

// Runs the command; true when the word named one.
bool runSelected(const std::string& word, const std::vector<std::string>& rest) {
    const auto& rows = commandTable();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const CommandRow& r) { return r.word == word; });
    if (row == rows.end()) return runRawInputCommand(word, rest);
    if (!row->acceptsCount(rest.size())) usageFailure(row->usage);
    row->action(rest);
    return true;
}

}  // namespace

void runCommandLine(const std::vector<std::string>& args) {
    if (args.empty()) usageFailure(usageText);
    const std::string& word = args.front();
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    bool known = false;
    try {
        known = runSelected(word, rest);
    } catch (const InputCommandError& error) {
        die(error.message());
    } catch (const std::exception& error) {
        die(error.what());
    }
    if (!known) die("unknown command '" + word + "'");
    exitProcess(0);
}

}  // namespace brisko
