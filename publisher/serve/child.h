// Starting a program beside this one.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ca::publisher {

struct ChildOptions {
    std::filesystem::path workingFolder; // empty: the caller's
    // file that both output streams are appended to; empty: the caller's streams
    std::filesystem::path output;
    std::vector<std::string> environment; // "NAME=value", set on top of the caller's environment
    int inheritedFile = -1; // arrives in the program under the same number; all others close
    // A terminal then sends its signals to caller and program alike. Otherwise the program leads a
    // process group of its own, which can be ended as a whole.
    bool inCallersGroup = false;
};

// Starts a program and returns its process id; the caller waits for it. The kernel sends it SIGTERM
// when the thread that started it ends, so that a crash leaves nothing behind. It begins with no
// signal blocked. The first argument is the program, found by findProgram. Throws Failure if it
// can't be started, a program that isn't there included. Any thread.
pid_t startChild(const std::vector<std::string>& arguments, const ChildOptions& options);

// The program in PATH or in the folders for system services; a name with a slash is returned as it
// is. Empty if there is none.
std::filesystem::path findProgram(const std::string& name);

} // namespace ca::publisher
