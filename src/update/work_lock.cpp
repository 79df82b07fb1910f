#include "update/work_lock.h"

#include "install/work_folders.h"
#include "system/file_kind.h"
#include "system/folders.h"
#include "system/path.h"
#include "system/retry.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace ca::update {

namespace fs = std::filesystem;

namespace {

constexpr const char* lockName = "lock";

constexpr LastAttempt neverCertain = std::numeric_limits<LastAttempt>::max();

constexpr system::RetryTimes lockTimes{.limit = 500, .firstPause = 5, .longestPause = 50};

fs::path workFolder(const fs::path& installDir) {
    return installDir / install::workFolderName;
}

LastAttempt newestBackup(const fs::path& work) {
    constexpr std::size_t mostDigits = 15; // of a time; a longer number is nobody's
    LastAttempt newest = 0;
    system::listFolder(work, [&](const std::wstring& name) {
        const std::wstring stamp = install::stampOfBackup(name);
        if (!stamp.empty() && stamp.size() <= mostDigits) {
            newest = std::max<LastAttempt>(newest, std::stoull(stamp));
        }
    });
    return newest;
}

// Later than every attempt before, whatever has become of the clock since.
LastAttempt nextStamp(const fs::path& work) {
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    const LastAttempt time = now > 0 ? static_cast<LastAttempt>(now) : 0;
    return std::max(time, newestBackup(work) + 1);
}

// Another check may have it open for a moment, and so may a scanner.
system::FileHandle openPatiently(const fs::path& lock) {
    const system::Patience patience(lockTimes);
    system::FileHandle file = system::FileHandle::openAlone(lock);
    patience.retry([&] {
        if (!file) {
            file = system::FileHandle::openAlone(lock);
        }
        return static_cast<bool>(file);
    });
    return file;
}

system::FileHandle openLock(const fs::path& work) {
    system::makeFolders(work); // a failure shows when the file is opened
    return openPatiently(work / lockName);
}

} // namespace

LastAttempt findLastAttempt(const fs::path& installDir) {
    const fs::path work = workFolder(installDir);
    const fs::path lock = work / lockName;
    // Opened for the time of this question alone, so that checks don't keep each other out.
    if (system::pathExists(lock) && !openPatiently(lock)) {
        return neverCertain;
    }
    return newestBackup(work);
}

LastAttempt newestAttempt(const fs::path& installDir) {
    return newestBackup(workFolder(installDir));
}

WorkLock::WorkLock(const fs::path& installDir)
    : work_(workFolder(installDir)), file_(openLock(work_)) {}

bool WorkLock::makeFolders(fs::path& stage, fs::path& backup) const {
    constexpr int tries = 100; // of stamps that something else has taken
    const LastAttempt first = nextStamp(work_);
    for (LastAttempt number = first; number < first + tries; ++number) {
        const std::wstring stamp = std::to_wstring(number);
        stage = work_ / system::pathFromWide(install::stageFolderName(stamp));
        backup = work_ / system::pathFromWide(install::backupFolderName(stamp));
        if (system::makeNewFolder(stage)) {
            return system::makeNewFolder(backup);
        }
        if (::GetLastError() != ERROR_ALREADY_EXISTS) {
            return false;
        }
    }
    return false;
}

} // namespace ca::update
