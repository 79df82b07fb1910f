#include "job/self_update.h"

#include "install/handover.h"
#include "system/path.h"
#include "system/start_program.h"
#include "system/this_process.h"

#include <windows.h>

namespace ca::job {

bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target) {
    const std::wstring place = system::wideFromPath(target);
    const install::Handover handover{::GetCurrentProcessId(), system::wideFromPath(stagedLauncher),
                                     place, place};
    return system::startProgram(helper, install::handoverArguments(handover), CREATE_NO_WINDOW);
}

bool takeHandoverFailed() {
    const std::wstring value = system::environmentValue(install::handoverFailedVariable);
    ::SetEnvironmentVariableW(install::handoverFailedVariable, nullptr);
    // Any other value is somebody else's, such as one that a player has set for good.
    return value == install::handoverFailedValue;
}

} // namespace ca::job
