#include "job/self_update.h"

#include "install/handover.h"
#include "system/path.h"
#include "system/start_program.h"

#include <windows.h>

namespace ca::job {

bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target) {
    if (::GetEnvironmentVariableW(install::handoverFailedVariable, nullptr, 0) != 0) {
        return false;
    }
    const std::wstring place = system::wideFromPath(target);
    const install::Handover handover{::GetCurrentProcessId(), system::wideFromPath(stagedLauncher),
                                     place, place};
    return system::startProgram(helper, install::handoverArguments(handover), CREATE_NO_WINDOW);
}

} // namespace ca::job
