#include "update/rollback.h"

#include "system/files.h"
#include "system/folders.h"
#include "system/retry.h"

namespace ca::update {

namespace {

// A scanner that has just opened a file lets go of it within moments, and a mixture of two versions
// is worse than a short wait.
constexpr system::RetryTimes times{.limit = 2000, .firstPause = 10, .longestPause = 200};

void undo(const RollbackEntry& entry, const system::Patience& patience) {
    // No step is checked: a backup that can't go back stays in the backup folder.
    patience.retry([&] { return system::removeFile(entry.target); });
    if (entry.backup.text().empty()) {
        return;
    }
    system::makeFolders(entry.folder);
    patience.retry([&] { return system::replaceFile(entry.backup, entry.target); });
}

} // namespace

RollbackEntry::RollbackEntry(const std::filesystem::path& place, const std::filesystem::path& old)
    : target(place), folder(place.parent_path()), backup(old) {}

Rollback::~Rollback() {
    std::vector<char>().swap(spareMemory_);
    const system::Patience patience(times);
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        try {
            undo(*entry, patience);
        } catch (...) { // out of memory: the entries before it still get their turn
        }
    }
}

} // namespace ca::update
