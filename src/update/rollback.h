// What the installation of a plan has done so far, undone unless it is told that all went well.
#pragma once

#include <filesystem>
#include <vector>

namespace ca::update {

// One file that was touched.
struct RollbackEntry {
    std::filesystem::path target; // its place in the installation
    std::filesystem::path backup; // where its old version lies now; empty when there was none
};

// Belongs to one thread. Undoing walks from the last entry to the first: it deletes the new file
// and renames the old one back, ignoring every failure, since the next check finds whatever
// couldn't be restored. Folders that were made stay.
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
    std::vector<RollbackEntry> entries_;
};

} // namespace ca::update
