// The system's nginx over a channel root, for trying a channel out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace ca::publisher {

// The lines of docs/coldanchor-channel.conf, which real servers include too.
extern const std::string_view channelConfiguration;

struct ServeOptions {
    std::filesystem::path root;        // of the channels
    std::string address = "127.0.0.1"; // IPv4, of this machine
    std::uint16_t port = 8080;         // 0: any that is free
    std::uint64_t bytesPerSecond = 0;  // of each connection; 0 doesn't hold back
};

// Serves until the process is told to end (SIGINT, SIGTERM, SIGHUP), which is a good end, or nginx
// ends by itself. Prints the address in a line once requests are accepted. Needs no rights; the
// server's files are in a temporary folder. Blocks those signals in the calling thread: call from a
// single-threaded process. Throws Failure if nginx can't run or the port is taken.
void serve(const ServeOptions& options);

} // namespace ca::publisher
