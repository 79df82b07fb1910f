// A real web server on a loopback port, for the demo, the tests and the benchmarks.
#pragma once

#include "shared/process.h"

#include <cstdint>
#include <memory>

namespace ca::kit {

struct NginxOptions {
    std::filesystem::path root;       // the folder that is served
    std::uint64_t bytesPerSecond = 0; // of each connection; 0 doesn't hold back
    std::string serverDirectives;     // further lines of the server block, ahead of everything else
    // PEM with its private key: serves https alone, under the name "localhost"
    std::filesystem::path certificate{};
};

// One nginx in the foreground, with its configuration, logs and temporary files in `folder`, so
// that nothing of the system's own server is touched and no rights are needed. Requests are
// answered from the moment the object exists: the port is open before nginx starts. Stopped with
// the object. A connection serves one request after the other; files are sent as
// application/octet-stream, and a missing one is a plain 404.
class Nginx {
public:
    // Throws std::runtime_error if nginx isn't installed or can't start.
    Nginx(const std::filesystem::path& folder, const NginxOptions& options);

    std::uint16_t port() const { return port_; }
    std::string url() const { return origin_ + std::to_string(port_); }

    // One line a request: method, target as it was sent, status, bytes of the body, user agent.
    std::filesystem::path accessLog() const { return folder_ / "access.log"; }

private:
    std::filesystem::path folder_;
    std::string origin_;
    std::uint16_t port_ = 0;
    std::unique_ptr<Process> server_;
};

} // namespace ca::kit
