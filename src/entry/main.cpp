#include <string>
#include <vector>

#include "backends/backend.h"
#include "cli/process_state.h"
#include "entry/dispatch.h"

int main(int argc, char** argv) {
    brisko::platform::runBackendProcessIfStartedAsOne(argc, argv);
    const auto backend = brisko::platform::makeBackend();
    brisko::startProcess(backend->services());
    brisko::runCommandLine(std::vector<std::string>(argv + 1, argv + argc));
}
