#include "shared/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ca::kit {
namespace {

[[noreturn]] void fail(const std::string& what, int number) {
    throw std::runtime_error(what + ": " + std::strerror(number));
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const ProcessOptions& options)
    : Process(publisher::startChild(arguments, options)) {}

Process::Process(pid_t child)
    : pid_(child), pidfd_(static_cast<int>(::syscall(SYS_pidfd_open, child, 0U))) {
    if (pidfd_ < 0) {
        const int number = errno;
        ::kill(-pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        fail("pidfd_open", number);
    }
}

Process::~Process() {
    stop();
    ::close(pidfd_);
}

std::optional<int> Process::wait(std::chrono::milliseconds limit) {
    if (status_) {
        return status_;
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd ended{pidfd_, POLLIN, 0};
        const int ready =
            ::poll(&ended, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready > 0) {
            break;
        }
        if (ready == 0) {
            return std::nullopt;
        }
        if (errno != EINTR) {
            fail("poll", errno);
        }
    }
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

int Process::stop() {
    if (!status_) {
        ::kill(-pid_, SIGTERM);
        if (!wait(std::chrono::seconds(5))) {
            ::kill(-pid_, SIGKILL);
            wait(std::chrono::hours(1));
        }
    }
    return *status_;
}

} // namespace ca::kit
