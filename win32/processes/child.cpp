#include "processes/child.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace ca::win32 {

namespace {

constexpr int firstOwnDescriptor = 3;

// What posix_spawn is told, freed at the end.
template <class Value, auto start, auto end>
class SpawnSettings {
public:
    SpawnSettings() { start(&value_); }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() { end(&value_); }

    Value* get() { return &value_; }

private:
    Value value_{};
};
using FileActions = SpawnSettings<posix_spawn_file_actions_t, ::posix_spawn_file_actions_init,
                                  ::posix_spawn_file_actions_destroy>;
using Attributes =
    SpawnSettings<posix_spawnattr_t, ::posix_spawnattr_init, ::posix_spawnattr_destroy>;

// The folder to start in and the open files. 0 or an errno value.
int setFiles(FileActions& actions, const std::string& folder, int standardOutput) {
    int failed = 0;
    if (!folder.empty()) {
        failed = ::posix_spawn_file_actions_addchdir_np(actions.get(), folder.c_str());
    }
    if (failed == 0 && standardOutput != -1) {
        failed = ::posix_spawn_file_actions_adddup2(actions.get(), standardOutput, STDOUT_FILENO);
    }
    if (failed == 0) {
        failed = ::posix_spawn_file_actions_addclosefrom_np(actions.get(), firstOwnDescriptor);
    }
    return failed;
}

// A session of its own keeps the program running when the caller's terminal or session ends.
// Ignored and blocked signals would be inherited, and a program expects neither.
void setSessionAndSignals(Attributes& attributes) {
    sigset_t none{};
    sigset_t all{};
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(attributes.get(), &none);
    ::posix_spawnattr_setsigdefault(attributes.get(), &all);
    ::posix_spawnattr_setflags(attributes.get(),
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

} // namespace

int startChild(const std::string& program, const std::vector<std::string>& arguments,
               const std::string& folder, int standardOutput, pid_t& child) {
    FileActions actions;
    const int failed = setFiles(actions, folder, standardOutput);
    if (failed != 0) {
        return failed;
    }
    Attributes attributes;
    setSessionAndSignals(attributes);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        // exec takes them without const and changes nothing.
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return ::posix_spawn(&child, program.c_str(), actions.get(), attributes.get(), pointers.data(),
                         environ);
}

void forgetChild(pid_t child) {
    try {
        std::thread([child] {
            pid_t waited = 0;
            do {
                waited = ::waitpid(child, nullptr, 0);
            } while (waited < 0 && errno == EINTR);
        }).detach();
    } catch (const std::system_error&) {
        // Without a thread the child's entry stays until this process ends. It does no harm.
    }
}

} // namespace ca::win32
