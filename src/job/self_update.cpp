#include "job/self_update.h"

#include "install/handover.h"
#include "system/process.h"

#include <windows.h>

namespace ca::job {

bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target) {
    if (::GetEnvironmentVariableW(install::handoverFailedVariable, nullptr, 0) != 0) {
        return false;
    }
    const install::Handover handover{::GetCurrentProcessId(), stagedLauncher, target, target};
    return system::startProgram(helper, install::handoverArguments(handover), CREATE_NO_WINDOW);
}

} // namespace ca::job
