#include "install/user_data.h"

#include "install/paths.h"
#include "system/file_kind.h"
#include "system/files.h"
#include "system/folders.h"
#include "system/path.h"
#include "system/this_process.h"

#include <array>
#include <string>
#include <windows.h>

namespace ca::install {

namespace fs = std::filesystem;

namespace {

bool copyContent(const fs::path& source, const fs::path& copy) {
    const system::FileHandle in = system::FileHandle::openForReading(source);
    const system::FileHandle out = system::FileHandle::createNew(copy);
    if (!in || !out) {
        return false;
    }
    std::array<char, 65536> buffer;
    std::size_t count = 0;
    do {
        if (!in.read(buffer.data(), buffer.size(), count) || !out.write(buffer.data(), count)) {
            return false;
        }
    } while (count != 0);
    return out.flush();
}

// The target gets its name once it is whole and on the disk: half a save would count as the
// player's own from then on. The name before that is this process's, because two launchers may
// start at once.
void copyWhole(const fs::path& source, const fs::path& target) {
    fs::path copy = target;
    copy += "." + std::to_string(::GetCurrentProcessId()) + ".new";
    system::removeFile(copy); // of a launcher that was ended halfway and had this number
    if (!copyContent(source, copy) || !system::moveFile(copy, target)) {
        system::removeFile(copy);
    }
}

} // namespace

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
    system::makeFolders(saves); // the player needn't know of any failure here
    if (!system::pathExists(old)) {
        return;
    }
    for (const char* name : {"profile_v07.sav", "settings_v01.cfg"}) {
        if (system::pathExists(old / name) && !system::pathExists(saves / name)) {
            copyWhole(old / name, saves / name);
        }
    }
}

} // namespace ca::install
