#include "files/descriptor.h"
#include "files/path.h"
#include "last_error.h"
#include "processes/argument_rules.h"
#include "processes/child.h"
#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <fcntl.h>
#include <filesystem>
#include <shellapi.h>

namespace {

using namespace ca::win32;

// Any number above 32 tells of success.
constexpr int startedResult = 42;
constexpr const char* shell = "/bin/sh";

// pkexec asks to be killed with its parent and passes that on to the program, but the launcher ends
// while the program goes on. So a shell is between the two, and waits for pkexec.
constexpr const char* waitingShell = R"(pkexec "$@"; exit $?)";

// Run with the higher rights, once the prompt has been answered. It says so on its standard output,
// which leads to the launcher, replaces that by the standard error and becomes the program.
constexpr const char* startingShell =
    R"(cd "$1" && shift && [ -x "$1" ] && echo started && exec "$@" >&2)";

// The variables that lead a program to the caller's screen. pkexec clears the environment.
constexpr std::array screenVariables = {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY",
                                        "XDG_RUNTIME_DIR", "XDG_SESSION_TYPE"};

// Asked beforehand, because a shell that doesn't find it ends like a refused prompt.
bool hasPkexec() {
    const char* path = std::getenv("PATH");
    std::string_view rest = path == nullptr ? "" : path;
    while (!rest.empty()) {
        const std::string folder(rest.substr(0, rest.find(':')));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (!folder.empty() && ::access((folder + "/pkexec").c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> commandFor(const std::string& program, const std::string& parameters) {
    std::vector<std::string> command = {shell, "-c", waitingShell, shell, "env"};
    for (const char* variable : screenVariables) {
        const char* value = std::getenv(variable);
        if (value != nullptr) {
            command.push_back(std::string(variable) + "=" + value);
        }
    }
    const std::string folder = std::filesystem::path(program).parent_path().native();
    command.insert(command.end(), {shell, "-c", startingShell, shell, folder, program});
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
    const Descriptor readingEnd(ends[0]);
    Descriptor writingEnd(ends[1]);
    pid_t child = 0;
    const int failed =
        startChild(shell, commandFor(program, parameters), "", writingEnd.get(), child);
    if (failed != 0) {
        fail(errorFromErrno(failed));
        return SE_ERR_OOM;
    }
    // Otherwise the reading would never end when nobody else can write any more.
    writingEnd.close();
    const bool started = wasStarted(readingEnd.get());
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
