#include "job/elevation.h"

#include "system/files.h"
#include "system/path.h"
#include "system/text.h"
#include "system/this_process.h"

#include <cstdint>
#include <string>
#include <windows.h>

#include <shellapi.h>

namespace ca::job {

bool isFolderWritable(const std::filesystem::path& folder) {
    const std::string number = std::to_string(::GetCurrentProcessId());
    return system::canMakeFile(folder / (".coldanchor-write-test-" + number + ".tmp"));
}

bool relaunchElevated() {
    const std::filesystem::path executable = system::executableFile();
    if (executable.empty()) {
        return false;
    }
    const std::wstring file = system::wideFromPath(executable);
    const std::wstring parameters = system::wideFromUtf8(elevatedOption);
    const HINSTANCE result = ::ShellExecuteW(nullptr, L"runas", file.c_str(), parameters.c_str(),
                                             nullptr, SW_SHOWNORMAL);
    // The documented line between a start and an error number.
    return reinterpret_cast<std::intptr_t>(result) > 32;
}

} // namespace ca::job
