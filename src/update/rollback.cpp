#include "update/rollback.h"

#include "system/file_kind.h"
#include "system/files.h"
#include "system/folders.h"

namespace ca::update {

namespace {

void undo(const RollbackEntry& entry) {
    // No step is checked: a backup that can't go back stays in the backup folder.
    system::removeFile(entry.target);
    if (entry.backup.empty() || !system::pathExists(entry.backup)) {
        return;
    }
    system::makeFolders(entry.target.parent_path());
    system::replaceFile(entry.backup, entry.target);
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
