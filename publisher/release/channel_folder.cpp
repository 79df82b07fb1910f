#include "publisher/release/channel_folder.h"

#include "publisher/rules/channel_name.h"
#include "publisher/text/failure.h"
#include "update/channel.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <sys/file.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr const char* releasesName = ".releases"; // no channel's name
constexpr const char* newName = ".new";           // no version
constexpr const char* oldName = ".old";

void removeAll(const fs::path& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) {
        throw Failure("can't remove " + path.string() + ": " + error.message());
    }
}

void move(const fs::path& from, const fs::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) {
        failWithReason("can't move " + from.string() + " to " + to.string());
    }
}

} // namespace

ChannelFolder::ChannelFolder(const fs::path& root, const std::string& channel)
    : root_(root), link_(livePath(root, channel)), releases_(root / releasesName / channel) {
    for (const fs::path& folder : {releases_, link_.parent_path()}) {
        makeReadableFolder(folder);
    }
    // The link leads up from its folder's own place, not from where another link leads.
    if (!fs::is_directory(fs::symlink_status(link_.parent_path()))) {
        throw Failure(link_.parent_path().string() +
                      " is no folder but a link or a file, and the live release couldn't be "
                      "reached through it: put a folder in its place");
    }
    lock();
    for (const char* name : {newName, oldName}) {
        removeAll(releases_ / name);
    }
}

ChannelFolder::~ChannelFolder() {
    std::error_code ignored; // the next run tries again
    fs::remove_all(releases_ / newName, ignored);
}

void ChannelFolder::lock() {
    lock_ = Descriptor(::open(releases_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock_) {
        failWithReason("can't open " + releases_.string());
    }
    if (::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) {
        return;
    }
    failWithReason(errno == EWOULDBLOCK
                       ? "another release is being made in " + root_.string() + ", wait for its end"
                       : "can't lock " + releases_.string());
}

fs::path ChannelFolder::live() const {
    const fs::file_status status = fs::symlink_status(link_);
    if (!fs::exists(status)) {
        return {};
    }
    if (!fs::is_symlink(status)) {
        throw Failure(link_.string() +
                      " isn't a link to a release: move it away, or name another channel root");
    }
    fs::path target = (link_.parent_path() / fs::read_symlink(link_)).lexically_normal();
    if (target.parent_path() != releases_.lexically_normal()) {
        throw Failure(link_.string() + " leads out of " + releases_.string() + ": move it away");
    }
    return target;
}

fs::path ChannelFolder::newRelease() const {
    makeReadableFolder(releases_ / newName);
    return releases_ / newName;
}

fs::path ChannelFolder::freePlace(const std::string& version) const {
    fs::path place = releases_ / version;
    for (int number = 2; fs::exists(fs::symlink_status(place)); ++number) {
        // no version has that character
        place = releases_ / (version + "_" + std::to_string(number));
    }
    return place;
}

fs::path ChannelFolder::makeLive(const std::string& version) const {
    fs::path place = freePlace(version);
    // The link must never be on the disk before what it leads to.
    flushDisk(releases_);
    move(releases_ / newName, place);
    switchLink(place);
    flushDisk(link_.parent_path());
    return place;
}

// A rename replaces a link in one step; making a link over another one isn't possible.
void ChannelFolder::switchLink(const fs::path& place) const {
    const fs::path fresh = link_.parent_path() / ".windows.new";
    removeAll(fresh);
    // Relative, so that the root can be moved and mounted elsewhere.
    const fs::path target = fs::path("..") / releasesName / releases_.filename() / place.filename();
    if (::symlink(target.c_str(), fresh.c_str()) != 0) {
        failWithReason("can't make the link " + fresh.string());
    }
    move(fresh, link_);
}

std::vector<fs::path> ChannelFolder::othersByAge() const {
    const fs::path current = live().filename();
    std::multimap<fs::file_time_type, fs::path, std::greater<>> others;
    for (const fs::directory_entry& entry : fs::directory_iterator(releases_)) {
        if (entry.path().filename() == current) {
            continue;
        }
        // The signature is written last. A release without one is the oldest.
        std::error_code none;
        const auto time = fs::last_write_time(entry.path() / update::signatureName, none);
        others.emplace(none ? fs::file_time_type::min() : time, entry.path());
    }
    std::vector<fs::path> paths;
    for (const auto& [time, path] : others) {
        paths.push_back(path);
    }
    return paths;
}

std::vector<std::string> ChannelFolder::keepOnly(std::size_t count) const {
    std::vector<fs::path> others = othersByAge();
    others.erase(others.begin(),
                 others.begin() + static_cast<std::ptrdiff_t>(std::min(count, others.size())));
    std::vector<std::string> removed;
    for (const fs::path& path : others) {
        move(path, releases_ / oldName); // so that half of it is never found under its name
        removeAll(releases_ / oldName);
        removed.push_back(path.filename().string());
    }
    return removed;
}

} // namespace ca::publisher
