#include "install/user_data.h"

#include "install/paths.h"
#include "system/file_kind.h"
#include "system/path.h"
#include "system/this_process.h"

#include <string>

namespace ca::install {

namespace fs = std::filesystem;

fs::path userDataDir() {
    // Asked for as wide texts, so that any user name makes the right folder. Windows sets both; a
    // player who starts the launcher by a script of their own may have unset one.
    for (const wchar_t* variable : {L"LOCALAPPDATA", L"APPDATA"}) {
        const std::wstring value = system::environmentValue(variable);
        if (!value.empty()) {
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
