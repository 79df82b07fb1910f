// Where a check reads a channel from: a web server or a folder.
#pragma once

#include "publisher/check/finding.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ca::publisher {

// What came for one name.
struct Arrival {
    bool good = false;          // there was something, to its end
    std::uint64_t size = 0;     // bytes as a launcher counts them
    std::string sha256;         // lower-case
    std::vector<Finding> notes; // about how it came, or why it didn't
};

// A channel as launchers find it. Any thread may ask; each call blocks for the whole transfer.
class Origin {
public:
    virtual ~Origin() = default;
    // Both also return the bytes.
    virtual Arrival manifest(std::string& text) const = 0;
    virtual Arrival signature(std::string& text) const = 0;
    // The file that the manifest calls so.
    virtual Arrival file(const std::string& path) const = 0;
    // The paths of files that are there although the manifest, whose sorted paths are given,
    // doesn't name them.
    virtual std::vector<std::string> strangers(const std::vector<std::string>& known) const = 0;
};

std::unique_ptr<Origin> webOrigin(const std::string& address, const std::string& channel);
std::unique_ptr<Origin> folderOrigin(const std::string& root, const std::string& channel);

// Whether launchers would take the text for a server's address.
bool isAddress(std::string_view text);

} // namespace ca::publisher
