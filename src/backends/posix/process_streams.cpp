#include "backends/posix/posix_services.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

namespace brisko::platform {
namespace {

bool writeWhole(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

class SystemStreams final : public ProcessStreams {
public:
    bool writeOut(std::string_view bytes) override { return writeWhole(STDOUT_FILENO, bytes); }
    bool writeErr(std::string_view bytes) override { return writeWhole(STDERR_FILENO, bytes); }
    std::ostream& bufferedOut() override { return std::cout; }
    std::istream& in() override { return std::cin; }
    [[noreturn]] void exit(int status) override {
        std::cout.flush();
        std::exit(status);
    }
    [[noreturn]] void exitImmediately(int status) override { ::_exit(status); }
};

}  // namespace

ProcessStreams& systemStreams() {
    static SystemStreams streams;
    return streams;
}

}  // namespace brisko::platform
