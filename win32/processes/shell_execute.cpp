#include "host.h"
#include "processes/argument_rules.h"
#include "processes/child.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <fcntl.h>
#include <filesystem>
#include <shellapi.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace ca::win32;

constexpr int startedResult = 42; // any number above 32 tells of success
constexpr const char* shell = "/bin/sh";

// pkexec asks to be killed with its parent and passes that on to the program, but the launcher ends
// while the program goes on. So a shell that waits for it stands between the two.
constexpr const char* waitingShell = R"(pkexec "$@"; exit $?)";

// Run with the higher rights, once the prompt has been answered: says so on its standard output,
// which leads to the launcher, gives that away for the standard error and becomes the program.
constexpr const char* startingShell =
    R"(cd "$1" && shift && [ -x "$1" ] && echo started && exec "$@" >&2)";

// What leads a program to the caller's screen; pkexec clears the environment.
constexpr std::array screenVariables = {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY",
                                        "XDG_RUNTIME_DIR", "XDG_SESSION_TYPE"};

bool hasPkexec() {
    const char* path = std::getenv("PATH");
    std::string_view rest = path == nullptr ? "" : path;
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (!folder.empty() && ::access((std::string(folder) + "/pkexec").c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> commandFor(const std::string& program, const std::string& parameters) {
    std::vector<std::string> command = {shell, "-c", waitingShell, shell, "env"};
    for (const char* variable : screenVariables) {
        if (const char* value = std::getenv(variable)) {
            command.push_back(std::string(variable) + "=" + value);
        }
    }
    const std::string folder = std::filesystem::path(program).parent_path().native();
    for (const std::string& word :
         {std::string(shell), std::string("-c"), std::string(startingShell), std::string(shell),
          folder, program}) {
        command.push_back(word);
    }
    for (std::string& argument : splitCommandLine(parameters, false)) {
        command.push_back(std::move(argument));
    }
    return command;
}

// Waits until the program has been started or everybody who could start it is gone.
bool wasStarted(int pipe) {
    char byte = 0;
    ssize_t count = 0;
    do {
        count = ::read(pipe, &byte, 1);
    } while (count < 0 && errno == EINTR);
    return count == 1;
}

INT runElevated(const std::string& program, const std::string& parameters) {
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail(errorFromErrno(errno));
        return SE_ERR_OOM;
    }
    pid_t child = 0;
    const int failed = startChild(shell, commandFor(program, parameters), "", ends[1], child);
    ::close(ends[1]);
    const bool started = failed == 0 && wasStarted(ends[0]);
    ::close(ends[0]);
    if (failed != 0) {
        fail(errorFromErrno(failed));
        return SE_ERR_OOM;
    }
    forgetChild(child);
    if (!started) {
        fail(ERROR_ACCESS_DENIED);
        return SE_ERR_ACCESSDENIED;
    }
    return startedResult;
}

INT execute(LPCWSTR verb, LPCWSTR file, LPCWSTR parameters) {
    if (std::wcscmp(verb, L"runas") != 0) {
        fail(ERROR_NOT_SUPPORTED);
        return SE_ERR_NOASSOC;
    }
    const std::optional<std::string> program = toPath(file);
    const std::optional<std::string> line = toUtf8(parameters == nullptr ? L"" : parameters);
    if (!program || !line) {
        return SE_ERR_FNF;
    }
    std::error_code failed;
    const std::filesystem::path absolute = std::filesystem::absolute(*program, failed);
    if (!std::filesystem::is_regular_file(absolute, failed) || !hasPkexec()) {
        fail(ERROR_FILE_NOT_FOUND);
        return SE_ERR_FNF;
    }
    return runElevated(absolute.native(), *line);
}

} // namespace

HINSTANCE ShellExecuteW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                        INT show) {
    if (window != nullptr || verb == nullptr || folder != nullptr || show != SW_SHOWNORMAL) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return std::bit_cast<HINSTANCE>(std::intptr_t{execute(verb, file, parameters)});
}
