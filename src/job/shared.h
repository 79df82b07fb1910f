// The one record that the main thread and the update job have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace ca::job {

enum class JobState : std::int32_t {
    Starting = 0,
    Checking = 1,           // the manifest is fetched and the installation compared
    Updating = 2,           // Updater::apply is at work
    Ready = 3,              // the job ended and the game can be played
    ServiceUnavailable = 4, // the check failed; the installed game is left alone
    Failed = 5,             // an update, or the start of the game, failed
    HandingOver = 6,        // another process takes over
};

// Everything that the screen shows and a click depends on. A copy belongs to whoever took it.
struct SharedSnapshot {
    JobState jobState = JobState::Starting;
    std::string statusText = "STARTING..."; // headline of the status panel
    std::string detailText;    // the line below: versions, a file count, a failure token or a path
    std::string latestVersion; // of the last manifest that passed the check; empty until then
    // The release notes of that manifest; null until then. The text never changes once it is
    // published, and copies share it, so that a frame costs the same however long the notes are.
    std::shared_ptr<const std::string> patchNotes;
    std::uint64_t progressDone = 0;  // bytes
    std::uint64_t progressTotal = 0; // bytes; 0 shows no progress bar
    bool updateAvailable = false;    // the last check found something to install
    bool updateRequired = false;     // the channel demands an update before play
    bool busy = false;               // a job is running; the guard against a second one
    bool exitRequested = false;      // another process takes over; never cleared
};

// Every access to `state` holds the mutex, and holds it for copying and assigning alone: never
// across a network request, a file access, the start of a process or a call into the update engine.
struct Shared {
    std::mutex mutex;
    SharedSnapshot state;
};

// A copy of the whole record. Any thread.
SharedSnapshot snapshotShared(Shared& shared);

// Calls `change` with the record's state, under its lock: all that one call changes is one step for
// whoever takes a snapshot. Any thread.
template <typename Change>
void changeShared(Shared& shared, Change change) {
    const std::lock_guard lock(shared.mutex);
    change(shared.state);
}

// The state's phase and both lines of text, for use within a change.
void setTexts(SharedSnapshot& state, JobState jobState, std::string_view status,
              std::string_view detail);

} // namespace ca::job
