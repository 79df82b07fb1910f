#include "update/rollback.h"

#include "install/folders.h"
#include "install/paths.h"

#include <windows.h>

namespace ca::update {

namespace {

void undo(const RollbackEntry& entry) {
    // No step is checked: a backup that can't go back stays in the backup folder.
    ::DeleteFileW(install::systemPath(entry.target).c_str());
    if (entry.backup.empty() || !install::pathExists(entry.backup)) {
        return;
    }
    install::makeFolders(install::systemPath(entry.target.parent_path()));
    ::MoveFileExW(install::systemPath(entry.backup).c_str(),
                  install::systemPath(entry.target).c_str(), MOVEFILE_REPLACE_EXISTING);
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
