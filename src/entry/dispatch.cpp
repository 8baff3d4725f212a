#include "entry/dispatch.h"

#include "cli/diagnostics.h"
#include "cli/input_command_error.h"
#include "entry/command_table.h"

namespace brisko {

void runCommandLine(const std::vector<std::string>& args) {
    if (args.empty()) die(usageText);
    const std::string& word = args.front();
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    const CommandRow* row = findCommand(commandTable(), word);
    if (!row) die("unknown command '" + word + "'");
    // A wrong count is the row's usage line, before anything of the row runs.
    if (!row->acceptsCount(rest.size())) die(row->usage);
    try {
        row->action(rest);
    } catch (const InputCommandError& error) {
        die(error.message());
    } catch (const std::exception& error) {
        die(error.what());
    }
    exitProcess(0);
}

}  // namespace brisko
