#include "shared/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ca::kit {
namespace {

[[noreturn]] void fail(const std::string& what, int number) {
    throw std::runtime_error(what + ": " + std::strerror(number));
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& additions) {
    std::vector<std::string> result = additions;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('=') + 1);
        bool replaced = false;
        for (const std::string& addition : additions) {
            replaced = replaced || addition.starts_with(name);
        }
        if (!replaced) {
            result.push_back(text);
        }
    }
    return result;
}

// Service programs lie where only root's PATH leads.
std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char* path = std::getenv("PATH");
    const std::string folders =
        std::string(path != nullptr ? path : "/usr/bin:/bin") + ":/usr/sbin:/sbin";
    for (std::size_t start = 0; start < folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::string candidate = folders.substr(start, end - start) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        start = end + 1;
    }
    throw std::runtime_error(name + " isn't installed");
}

// What the child does between fork and exec; only calls that are safe there. Gives the error
// number of what failed.
int becomeProgram(const char* program, char** arguments, char** environment,
                  const ProcessOptions& options, pid_t parent) {
    if (::setpgid(0, 0) != 0 || ::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0) {
        return errno;
    }
    if (::getppid() != parent) {
        return ESRCH; // the parent ended before the line above could count
    }
    if (!options.workingFolder.empty() && ::chdir(options.workingFolder.c_str()) != 0) {
        return errno;
    }
    if (!options.output.empty()) {
        const int file =
            ::open(options.output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (file < 0 || ::dup2(file, STDOUT_FILENO) < 0 || ::dup2(file, STDERR_FILENO) < 0) {
            return errno;
        }
    }
    if (::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0) {
        return errno;
    }
    if (options.inheritedFile >= 0 && ::fcntl(options.inheritedFile, F_SETFD, 0) != 0) {
        return errno;
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(program, arguments, environment);
    return errno;
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const ProcessOptions& options) {
    std::vector<std::string> texts = arguments;
    std::vector<std::string> variables = environmentWith(options.environment);
    const std::vector<char*> argumentPointers = pointers(texts);
    const std::vector<char*> variablePointers = pointers(variables);
    const std::string program = findProgram(texts.front());

    int report[2]; // closed by a successful exec, and carries the error number of anything else
    if (::pipe2(report, O_CLOEXEC) != 0) {
        fail("pipe", errno);
    }
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) {
        const int number =
            becomeProgram(program.c_str(), const_cast<char**>(argumentPointers.data()),
                          const_cast<char**>(variablePointers.data()), options, parent);
        const ssize_t ignored = ::write(report[1], &number, sizeof number);
        ::_exit(ignored > 0 ? 127 : 126);
    }
    const int forkError = errno;
    ::close(report[1]);
    int number = pid_ < 0 ? forkError : 0;
    const ssize_t length = pid_ < 0 ? 1 : ::read(report[0], &number, sizeof number);
    ::close(report[0]);
    if (length == 0) {
        pidfd_ = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0U));
    }
    if (pidfd_ >= 0) {
        return;
    }
    if (length == 0) {
        number = errno;
        ::kill(-pid_, SIGKILL);
    }
    if (pid_ > 0) {
        ::waitpid(pid_, nullptr, 0);
    }
    fail(program, number);
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
