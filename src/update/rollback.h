// What the installation of a plan has done so far, undone unless it is told that all went well.
#pragma once

#include "system/system_path.h"

#include <filesystem>
#include <vector>

namespace ca::update {

// One file that was touched, as the system takes its paths: undoing makes none.
struct RollbackEntry {
    // Its old version lies at `backup` now; an empty path when there was none.
    RollbackEntry(const std::filesystem::path& target, const std::filesystem::path& backup);

    system::SystemPath target; // its place in the installation
    system::SystemPath folder; // the folder of that place
    system::SystemPath backup;
};

// Belongs to one thread. Undoing walks from the last entry to the first: it deletes the new file
// and renames the old one back. Failures that pass are tried again, for two seconds in all, and
// all others are ignored, since the next check finds whatever couldn't be restored. Folders that
// were made stay.
class Rollback {
public:
    // Room for `count` entries, so that recording a rename that has happened can't fail.
    explicit Rollback(std::size_t count) { entries_.reserve(count); }
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;
    ~Rollback();

    void add(RollbackEntry&& entry) noexcept { entries_.push_back(std::move(entry)); }
    void commit() { entries_.clear(); }

private:
    // Given back to the heap before anything is undone, for the system's calls: when memory has run
    // out, they would fail too.
    std::vector<char> spareMemory_ = std::vector<char>(32 * 1024);
    std::vector<RollbackEntry> entries_;
};

} // namespace ca::update
