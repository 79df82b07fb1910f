#include "publisher/serve/child.h"

#include "publisher/files/descriptor.h"
#include "publisher/text/failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ca::publisher {

namespace {

// What exec takes; points into `texts`.
std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
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
        const auto replacesIt = [&](const std::string& addition) {
            return addition.starts_with(name);
        };
        if (std::none_of(additions.begin(), additions.end(), replacesIt)) {
            result.push_back(text);
        }
    }
    return result;
}

bool redirect(const std::filesystem::path& output) {
    const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    return file >= 0 && ::dup2(file, STDOUT_FILENO) >= 0 && ::dup2(file, STDERR_FILENO) >= 0;
}

// All that is prepared before the fork: the child may call neither the allocator nor anything else
// that another thread could have locked.
struct Program {
    std::string file;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    const ChildOptions& options;
    pid_t parent = ::getpid();
};

// What the child does between fork and exec. Returns the error number of what failed.
int become(const Program& program) {
    const ChildOptions& options = program.options;
    if (!options.inCallersGroup && ::setpgid(0, 0) != 0) {
        return errno;
    }
    if (::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0) {
        return errno;
    }
    if (::getppid() != program.parent) {
        return ESRCH; // the parent ended before the line above could count
    }
    if (!options.workingFolder.empty() && ::chdir(options.workingFolder.c_str()) != 0) {
        return errno;
    }
    if (!options.output.empty() && !redirect(options.output)) {
        return errno;
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
    ::execve(program.file.c_str(), program.arguments.data(), program.environment.data());
    return errno;
}

// A successful exec closes the pipe, so what arrives is the error number of anything else; 0 if
// nothing does.
int reportedError(const Descriptor& report) {
    int number = 0;
    ssize_t length = 0;
    do {
        length = ::read(report.get(), &number, sizeof number);
    } while (length < 0 && errno == EINTR);
    return length < 0 ? errno : number;
}

} // namespace

std::filesystem::path findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char* path = std::getenv("PATH");
    // Service programs are in folders that only root's PATH names.
    std::string folders = path != nullptr ? path : "/usr/bin:/bin";
    folders += ":/usr/sbin:/sbin:/usr/local/sbin";
    for (std::size_t start = 0; start < folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        std::string candidate = folders.substr(start, end - start) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        start = end + 1;
    }
    return {};
}

pid_t startChild(const std::vector<std::string>& arguments, const ChildOptions& options) {
    const std::filesystem::path file = findProgram(arguments.front());
    if (file.empty()) {
        throw Failure(arguments.front() + " isn't installed");
    }
    std::vector<std::string> words = arguments;
    std::vector<std::string> variables = environmentWith(options.environment);
    const Program program{file.string(), pointers(words), pointers(variables), options};

    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        failWithReason("can't start " + program.file);
    }
    const Descriptor report(ends[0]);
    Descriptor reporter(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) {
        failWithReason("can't start " + program.file);
    }
    if (child == 0) {
        const int number = become(program);
        const bool isReported = ::write(reporter.get(), &number, sizeof number) > 0;
        ::_exit(isReported ? 127 : 126);
    }
    reporter = Descriptor();
    const int number = reportedError(report);
    if (number != 0) {
        ::waitpid(child, nullptr, 0);
        errno = number;
        failWithReason("can't start " + program.file);
    }
    return child;
}

} // namespace ca::publisher
