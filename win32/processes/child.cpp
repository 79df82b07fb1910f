#include "processes/child.h"

#include <cerrno>
#include <csignal>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace ca::win32 {

namespace {

constexpr int firstOwnDescriptor = 3;

struct FileActions {
    FileActions() { ::posix_spawn_file_actions_init(&value); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&value); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    posix_spawn_file_actions_t value{};
};

struct Attributes {
    Attributes() { ::posix_spawnattr_init(&value); }
    ~Attributes() { ::posix_spawnattr_destroy(&value); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    posix_spawnattr_t value{};
};

} // namespace

int startChild(const std::string& program, const std::vector<std::string>& arguments,
               const std::string& folder, int standardOutput, pid_t& child) {
    FileActions actions;
    int failed =
        folder.empty() ? 0 : ::posix_spawn_file_actions_addchdir_np(&actions.value, folder.c_str());
    if (failed == 0 && standardOutput != -1) {
        failed = ::posix_spawn_file_actions_adddup2(&actions.value, standardOutput, STDOUT_FILENO);
    }
    if (failed == 0) {
        failed = ::posix_spawn_file_actions_addclosefrom_np(&actions.value, firstOwnDescriptor);
    }
    if (failed != 0) {
        return failed;
    }
    Attributes attributes;
    sigset_t none{};
    sigset_t all{};
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes.value, &none);
    ::posix_spawnattr_setsigdefault(&attributes.value, &all);
    ::posix_spawnattr_setflags(&attributes.value,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        // exec takes them so and changes nothing
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return ::posix_spawn(&child, program.c_str(), &actions.value, &attributes.value,
                         pointers.data(), environ);
}

void forgetChild(pid_t child) {
    try {
        std::thread([child] {
            while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    } catch (const std::system_error&) {
        // No thread to be had: the child's entry stays until this process ends,
        // which does nobody harm.
    }
}

} // namespace ca::win32
