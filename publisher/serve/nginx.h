// The system's nginx, in the foreground and in a folder of its own, so that nothing of the system's
// own server is touched and no rights are needed.
#pragma once

#include "publisher/files/descriptor.h"
#include "publisher/serve/child.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ca::publisher {

// A socket that listens before nginx starts and is handed to it open: no other program can take the
// port in between, and requests wait in the socket's queue until nginx takes them.
struct Listener {
    Descriptor socket;
    std::uint16_t port = 0;
};

// `address` is an IPv4 address of this machine; port 0 takes a free one. Throws Failure.
Listener listenOn(const std::string& address, std::uint16_t port);

struct NginxConfiguration {
    std::string workers = "auto";     // processes
    std::string httpLines;            // further lines of the http block
    std::string listen;               // the value of this directive
    std::filesystem::path root;       // the folder that is served
    std::uint64_t bytesPerSecond = 0; // of each connection; 0 doesn't hold back
    std::string serverLines;          // further lines of the server block
};

// The text of nginx.conf. Throws Failure if the root's name can't be written in it.
std::string configurationText(const NginxConfiguration& configuration);

// A path as a directive's value. Throws Failure if it can't be written in one.
std::string quotedPath(const std::filesystem::path& path);

// Starts nginx on `folder`/nginx.conf; its log and its temporary files are in `folder` too. Returns
// the process id; see startChild. Throws Failure, which says what to install if there is no nginx.
pid_t startNginx(const std::filesystem::path& folder, const Listener& listener,
                 ChildOptions options);

} // namespace ca::publisher
