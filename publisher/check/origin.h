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

// Any thread may ask. Names are relative to the channel's folder for the platform.
class Origin {
public:
    virtual ~Origin() = default;
    // What a launcher would get for the name; `text`, if not null, gets the bytes too.
    virtual Arrival get(const std::string& name, std::string* text) const = 0;
    // What is there besides: names of files that the manifest, whose sorted paths
    // are given, doesn't know.
    virtual std::vector<std::string> strangers(const std::vector<std::string>& known) const = 0;
};

std::unique_ptr<Origin> webOrigin(const std::string& address, const std::string& channel);
std::unique_ptr<Origin> folderOrigin(const std::string& root, const std::string& channel);

// Whether launchers would take the text for a server's address.
bool isAddress(std::string_view text);

} // namespace ca::publisher
