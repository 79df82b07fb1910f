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
    if (!fs::is_directory(fs::symlink_status(link_.parent_path()))) {
        throw Failure(link_.parent_path().string() +
                      " is no folder but a link or a file, and the live release couldn't be "
                      "reached through it: put a folder in its place");
    }
    lock_ = Descriptor(::open(releases_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock_) {
        failWithReason("can't open " + releases_.string());
    }
    if (::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0) {
        failWithReason(errno == EWOULDBLOCK ? "another release is being made in " + root.string() +
                                                  ", wait for its end"
                                            : "can't lock " + releases_.string());
    }
    for (const char* name : {newName, oldName}) {
        removeAll(releases_ / name);
    }
}

ChannelFolder::~ChannelFolder() {
    std::error_code ignored; // the next run tries again
    fs::remove_all(releases_ / newName, ignored);
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
    const fs::path target = link_.parent_path() / fs::read_symlink(link_);
    if (target.lexically_normal().parent_path() != releases_.lexically_normal()) {
        throw Failure(link_.string() + " leads out of " + releases_.string() + ": move it away");
    }
    return target.lexically_normal();
}

fs::path ChannelFolder::newRelease() const {
    makeReadableFolder(releases_ / newName);
    return releases_ / newName;
}

fs::path ChannelFolder::makeLive(const std::string& version) const {
    fs::path place = releases_ / version;
    for (int number = 2; fs::exists(fs::symlink_status(place)); ++number) {
        // no version has that character
        place = releases_ / (version + "_" + std::to_string(number));
    }
    flushDisk(releases_);
    move(releases_ / newName, place);
    const fs::path fresh = link_.parent_path() / ".windows.new";
    const fs::path target = fs::path("..") / releasesName / releases_.filename() / place.filename();
    removeAll(fresh);
    if (::symlink(target.c_str(), fresh.c_str()) != 0) {
        failWithReason("can't make the link " + fresh.string());
    }
    move(fresh, link_);
    flushDisk(link_.parent_path());
    return place;
}

std::vector<std::string> ChannelFolder::keepOnly(std::size_t count) const {
    const fs::path current = live().filename();
    // the time at which each was signed
    std::multimap<fs::file_time_type, fs::path, std::greater<>> others;
    for (const fs::directory_entry& entry : fs::directory_iterator(releases_)) {
        std::error_code none;
        if (const auto time = fs::last_write_time(entry.path() / update::signatureName, none);
            entry.path().filename() != current) {
            others.emplace(none ? fs::file_time_type::min() : time, entry.path());
        }
    }
    std::vector<std::string> removed;
    for (const auto& [time, path] : others) {
        if (count != 0) {
            --count;
            continue;
        }
        move(path, releases_ / oldName); // a half of it never stands under its name
        removeAll(releases_ / oldName);
        removed.push_back(path.filename().string());
    }
    return removed;
}

} // namespace ca::publisher
