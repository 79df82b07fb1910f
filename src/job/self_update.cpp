#include "job/self_update.h"

#include "install/paths.h"
#include "install/start_process.h"

#include <windows.h>

namespace ca::job {

bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target) {
    if (::GetEnvironmentVariableW(install::selfUpdateFailedVariable, nullptr, 0) != 0) {
        return false;
    }
    const std::wstring arguments = L" --wait-pid " + std::to_wstring(::GetCurrentProcessId()) +
                                   L" --replace \"" + install::wideFromPath(stagedLauncher) +
                                   L"\" --target \"" + install::wideFromPath(target) +
                                   L"\" --relaunch \"" + install::wideFromPath(target) + L"\"";
    return install::startProcess(helper, arguments, CREATE_NO_WINDOW);
}

} // namespace ca::job
