// A program started beside this one, and its end.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ca::kit {

struct ProcessOptions {
    std::filesystem::path workingFolder; // empty: the caller's
    // file that takes both output streams; empty: the caller's streams
    std::filesystem::path output;
    std::vector<std::string> environment; // "NAME=value", set on top of the caller's environment
    int inheritedFile = -1; // arrives in the program under the same number; all others close
};

// A child process in a process group of its own. It ends when this object does, and the kernel ends
// it when the thread that started it ends without that, so that a crashed test leaves nothing
// behind. One thread at a time.
class Process {
public:
    // The first argument is the program, found in PATH or in the folders for system services
    // unless it holds a slash. Throws std::runtime_error if it can't be started, a program
    // that isn't there included.
    explicit Process(const std::vector<std::string>& arguments, const ProcessOptions& options = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return pid_; }

    // The exit status, or 128 and the signal's number, once the program has ended; nothing if it
    // still runs after `limit`. Blocks.
    std::optional<int> wait(std::chrono::milliseconds limit);

    // Asks the whole group to end, and insists after five seconds. Gives the exit status. Blocks.
    int stop();

private:
    pid_t pid_ = -1;
    int pidfd_ = -1;
    std::optional<int> status_;
};

} // namespace ca::kit
