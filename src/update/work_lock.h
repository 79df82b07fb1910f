// One installation, one update at a time, of however many launchers.
#pragma once

#include "system/files.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ca::update {

// Which update of an installation was the last to begin, as a check has seen it: the stamp of the
// newest backup folder, 0 before the first. While another launcher is at work nothing that a check
// sees is certain, so the value then equals no other.
using LastAttempt = std::uint64_t;

// Takes the lock for a moment, if it has ever been taken, and waits up to half a second for it.
// Any thread.
LastAttempt findLastAttempt(const std::filesystem::path& installDir);

// The same for the process that holds the lock.
LastAttempt newestAttempt(const std::filesystem::path& installDir);

// Takes an installation's work folder for this process alone, from the object's making to its end:
// the file "lock" in it, held open without sharing, which is free again when the process is gone.
// Belongs to one thread.
class WorkLock {
public:
    // Makes the work folder if it is missing. Tries for half a second, because a check looks at
    // the lock too, for a moment.
    explicit WorkLock(const std::filesystem::path& installDir);

    // False while another has it, and when the folder or the file can't be made.
    explicit operator bool() const { return static_cast<bool>(file_); }

    // Makes the stage and the backup folder of a new attempt, both new, which nobody has used
    // before. False if either can't be made; what has been made stays.
    bool makeFolders(std::filesystem::path& stage, std::filesystem::path& backup) const;

private:
    std::filesystem::path work_;
    system::FileHandle file_;
};

} // namespace ca::update
