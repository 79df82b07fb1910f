// A program started beside this one, and its end.
#pragma once

#include "publisher/serve/child.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace ca::kit {

using ProcessOptions = publisher::ChildOptions;

// A child process in a process group of its own. It ends when this object does, and the kernel ends
// it when the thread that started it ends without that, so that a crashed test leaves nothing
// behind. One thread at a time.
class Process {
public:
    // Starts it: see startChild, which throws std::runtime_error if that fails.
    explicit Process(const std::vector<std::string>& arguments, const ProcessOptions& options = {});
    // Takes over a child that startChild has started in a group of its own.
    explicit Process(pid_t child);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return pid_; }

    // The exit status, or 128 and the signal's number, once the program has ended; nothing if it
    // still runs after `limit`. Blocks.
    std::optional<int> wait(std::chrono::milliseconds limit);

    // Asks the whole group to end, and insists after five seconds. Returns the exit status. Blocks.
    int stop();

private:
    pid_t pid_ = -1;
    int pidfd_ = -1;
    std::optional<int> status_;
};

} // namespace ca::kit
