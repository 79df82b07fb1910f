#include "install/user_data.h"

#include "install/paths.h"

#include <string>
#include <windows.h>

namespace ca::install {

namespace fs = std::filesystem;

namespace {

// Read as wide text, so that any user name makes the right folder. Empty when
// the variable isn't set.
std::wstring environmentValue(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    if (!value.empty()) { // a size counts the terminating zero, a length doesn't
        value.resize(
            ::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    }
    return value;
}

} // namespace

fs::path userDataDir() {
    for (const wchar_t* variable : {L"LOCALAPPDATA", L"APPDATA"}) {
        if (const std::wstring value = environmentValue(variable); !value.empty()) {
            return pathFromWide(value) / "ColdAnchor";
        }
    }
    return executableDir() / userDataFolderName;
}

fs::path savesDir() {
    return userDataDir() / "saves";
}

void migrateUserData() {
    const fs::path saves = savesDir();
    const fs::path old = executableDir() / saveFolderName;
    std::error_code ignored; // the player needn't know of any failure here
    fs::create_directories(saves, ignored);
    if (!pathExists(old)) {
        return;
    }
    for (const char* name : {"profile_v07.sav", "settings_v01.cfg"}) {
        if (pathExists(old / name) && !pathExists(saves / name)) {
            fs::copy_file(old / name, saves / name, ignored);
        }
    }
}

} // namespace ca::install
