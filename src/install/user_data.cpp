#include "install/user_data.h"

#include "install/paths.h"
#include "system/files.h"
#include "system/path.h"
#include "system/process.h"

#include <string>

namespace ca::install {

namespace fs = std::filesystem;

fs::path userDataDir() {
    for (const wchar_t* variable : {L"LOCALAPPDATA", L"APPDATA"}) {
        if (const std::wstring value = system::environmentValue(variable); !value.empty()) {
            return system::pathFromWide(value) / "ColdAnchor";
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
    if (!system::pathExists(old)) {
        return;
    }
    for (const char* name : {"profile_v07.sav", "settings_v01.cfg"}) {
        if (system::pathExists(old / name) && !system::pathExists(saves / name)) {
            fs::copy_file(old / name, saves / name, ignored);
        }
    }
}

} // namespace ca::install
