#include "host.h"
#include "processes/argument_rules.h"
#include "processes/child.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <sys/stat.h>

namespace {

using namespace ca::win32;

// Both handles of a started program: nothing can be asked of them but their end.
class StartedProgram : public Object {};

bool isZeroed(const STARTUPINFOW& startup) {
    STARTUPINFOW zeroed{};
    zeroed.cb = sizeof(zeroed);
    return startup.cb == zeroed.cb && startup.lpReserved == nullptr &&
           startup.lpDesktop == nullptr && startup.lpTitle == nullptr && startup.dwFlags == 0 &&
           startup.cbReserved2 == 0 && startup.lpReserved2 == nullptr;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

BOOL CreateProcessW(LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES processSecurity,
                    LPSECURITY_ATTRIBUTES threadSecurity, BOOL inherit, DWORD flags,
                    LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                    LPPROCESS_INFORMATION process) {
    if (application == nullptr || processSecurity != nullptr || threadSecurity != nullptr ||
        inherit != FALSE || (flags & ~CREATE_NO_WINDOW) != 0 || environment != nullptr ||
        startup == nullptr || !isZeroed(*startup) || process == nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    std::optional<std::string> program = toPath(application);
    const std::optional<std::string> line = toUtf8(commandLine == nullptr ? L"" : commandLine);
    const std::optional<std::string> start = toUtf8(folder == nullptr ? L"" : folder);
    if (!program || !line || !start) {
        return FALSE;
    }
    if (!start->empty() && !isFolder(*start)) {
        return fail(ERROR_DIRECTORY);
    }
    // A relative path counts from the caller's folder, but the program's is
    // entered before it is run.
    std::error_code ignored; // an absolute path, the only kind that the launcher passes, can't fail
    const std::filesystem::path absolute = std::filesystem::absolute(*program, ignored);
    const std::vector<std::string> arguments =
        line->empty() ? std::vector<std::string>{*program} : splitCommandLine(*line, true);
    auto programHandle = std::make_unique<StartedProgram>();
    auto threadHandle = std::make_unique<StartedProgram>();
    pid_t child = 0;
    const int failed = startChild(absolute.native(), arguments, *start, -1, child);
    if (failed != 0) {
        return failOnPath(failed, absolute.native());
    }
    forgetChild(child);
    *process = {static_cast<Object*>(programHandle.release()),
                static_cast<Object*>(threadHandle.release()), static_cast<DWORD>(child),
                static_cast<DWORD>(child)};
    return TRUE;
}
