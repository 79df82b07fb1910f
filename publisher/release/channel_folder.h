// A channel's folder as a web server serves it, and the step by which it changes from release to
// release:
//
//   <root>/<channel>/windows                a link to the live release; only it is switched
//   <root>/.releases/<channel>/<version>/   a release: manifest.json, manifest.sig, files/...
//   <root>/.releases/<channel>/.new/        a release in the making
//   <root>/.releases/<channel>/.old/        a release on its way out
#pragma once

#include "publisher/files/descriptor.h"

#include <filesystem>
#include <string>
#include <vector>

namespace ca::publisher {

// One channel of one root while a release is made for it. Throws Failure. One thread.
class ChannelFolder {
public:
    // Makes what is missing, locks the channel for this process until the object ends, and removes
    // what an interrupted run has left. Fails if another process has the lock.
    ChannelFolder(const std::filesystem::path& root, const std::string& channel);
    // Removes a new release that wasn't made live.
    ~ChannelFolder();
    ChannelFolder(const ChannelFolder&) = delete;
    ChannelFolder& operator=(const ChannelFolder&) = delete;

    // Where the live release is; empty before the first. Fails if there is something else than a
    // link of ours.
    std::filesystem::path live() const;

    // An empty folder for the next release; one at a time.
    std::filesystem::path newRelease() const;

    // Makes that folder the live release of `version`, in one step, after all of it has reached the
    // disk: a request to the web server gets all of the old release before and all of the new one
    // after. Returns the folder's new place.
    std::filesystem::path makeLive(const std::string& version) const;

    // Removes all but the live release and the `count` others made last. Returns the names of those
    // removed.
    std::vector<std::string> keepOnly(std::size_t count) const;

private:
    void lock();
    std::filesystem::path freePlace(const std::string& version) const;
    void switchLink(const std::filesystem::path& place) const;
    std::vector<std::filesystem::path>
    othersByAge() const; // the newest first, without the live one

    std::filesystem::path root_;
    std::filesystem::path link_;     // <root>/<channel>/windows
    std::filesystem::path releases_; // <root>/.releases/<channel>
    Descriptor lock_;
};

} // namespace ca::publisher
