#include "files/path.h"
#include "files/status.h"
#include "handle.h"
#include "processes/argument_rules.h"
#include "processes/child.h"
#include "text/utf8.h"

#include <filesystem>

namespace {

using namespace ca::win32;

// What both handles of a started program point at. The launcher only closes them.
class StartedProgram : public Object {};

bool isZeroed(const STARTUPINFOW& startup) {
    return startup.cb == sizeof(startup) && startup.lpReserved == nullptr &&
           startup.lpDesktop == nullptr && startup.lpTitle == nullptr && startup.dwFlags == 0 &&
           startup.cbReserved2 == 0 && startup.lpReserved2 == nullptr;
}

// A relative path counts from the caller's folder, but the program's own is entered before the
// program is run.
std::string absolutePath(const std::string& path) {
    std::error_code ignored; // an absolute path, the only kind that the launcher passes, can't fail
    return std::filesystem::absolute(path, ignored).native();
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
    const std::optional<std::string> program = toPath(application);
    const std::optional<std::string> line = toUtf8(commandLine == nullptr ? L"" : commandLine);
    const std::optional<std::string> start = toUtf8(folder == nullptr ? L"" : folder);
    if (!program || !line || !start) {
        return FALSE;
    }
    if (!start->empty() && !isFolder(*start)) {
        return fail(ERROR_DIRECTORY);
    }
    const std::vector<std::string> arguments =
        line->empty() ? std::vector<std::string>{*program} : splitCommandLine(*line, true);
    // Made first: once the program runs, nothing may fail any more.
    auto programHandle = std::make_unique<StartedProgram>();
    auto threadHandle = std::make_unique<StartedProgram>();
    const std::string path = absolutePath(*program);
    pid_t child = 0;
    const int failed = startChild(path, arguments, *start, -1, child);
    if (failed != 0) {
        return failOnPath(failed, path);
    }
    forgetChild(child);
    // The host numbers a process's first thread like the process.
    const auto id = static_cast<DWORD>(child);
    *process = {handleOf(std::move(programHandle)), handleOf(std::move(threadHandle)), id, id};
    return TRUE;
}
