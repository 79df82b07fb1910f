#include "update/rollback.h"

#include "install/paths.h"

#include <windows.h>

namespace ca::update {

namespace fs = std::filesystem;

namespace {

void undo(const RollbackEntry& entry) {
    std::error_code ignored; // every step: a backup that can't go back stays in the backup folder
    fs::remove(entry.target, ignored);
    if (entry.backup.empty() || !install::pathExists(entry.backup))
        return;
    fs::create_directories(entry.target.parent_path(), ignored);
    ::MoveFileExW(install::wideFromPath(entry.backup).c_str(), install::wideFromPath(entry.target).c_str(),
                  MOVEFILE_REPLACE_EXISTING);
}

} // namespace

Rollback::~Rollback() {
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        try {
            undo(*entry);
        } catch (...) { // out of memory for a path: the entries before it still get their turn
        }
    }
}

} // namespace ca::update
