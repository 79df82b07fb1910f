#include "shared/nginx.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace ca::kit {
namespace {

// A listening socket on a free loopback port. It is handed to nginx open, so that no other program
// can take the port in between and nobody has to wait until the server is up: early requests stand
// in the socket's queue.
class Listener {
public:
    Listener() : file_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (file_ < 0 || ::bind(file_, generic, length) != 0 || ::listen(file_, 511) != 0 ||
            ::getsockname(file_, generic, &length) != 0) {
            const std::string reason = std::strerror(errno);
            ::close(file_);
            throw std::runtime_error("no loopback port: " + reason);
        }
        port_ = ntohs(address.sin_port);
    }
    ~Listener() { ::close(file_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    int file() const { return file_; }
    std::uint16_t port() const { return port_; }

private:
    int file_;
    std::uint16_t port_ = 0;
};

// A configuration value: quoted, so that folders with blanks work.
std::string quoted(const std::filesystem::path& path) {
    std::string result = "\"";
    for (const char character : path.string()) {
        if (character == '"' || character == '\\' || character == '$') {
            throw std::runtime_error("nginx can't be given the path " + path.string());
        }
        result += character;
    }
    return result + "\"";
}

std::string configuration(std::uint16_t port, const NginxOptions& options) {
    // else workers can't read root's own folders
    std::string text = ::geteuid() == 0 ? "user root root;\n" : "";
    text += "daemon off;\nworker_processes 1;\npid nginx.pid;\nerror_log error.log;\nevents { "
            "worker_connections 512; }\n"
            "http {\n"
            "    log_format requests '$request_method $request_uri $status $body_bytes_sent "
            "$http_user_agent';\n"
            "    access_log access.log requests;\n"
            "    default_type application/octet-stream;\n    types { }\n    sendfile on;\n    "
            "tcp_nopush on;\n";
    for (const char* module : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
        text += "    " + std::string(module) + "_temp_path temporary;\n";
    }
    const bool secure = !options.certificate.empty();
    text += "    server {\n        listen 127.0.0.1:" + std::to_string(port) +
            (secure ? " ssl" : "") + ";\n        root " +
            quoted(std::filesystem::absolute(options.root)) + ";\n";
    for (const char* directive : {"ssl_certificate", "ssl_certificate_key"}) {
        if (secure) {
            text += "        " + std::string(directive) + " " +
                    quoted(std::filesystem::absolute(options.certificate)) + ";\n";
        }
    }
    if (options.bytesPerSecond != 0) {
        text += "        limit_rate " + std::to_string(options.bytesPerSecond) + ";\n";
    }
    return text + options.serverDirectives + "\n    }\n}\n";
}

} // namespace

Nginx::Nginx(const std::filesystem::path& folder, const NginxOptions& options)
    : folder_(std::filesystem::absolute(folder)),
      origin_(options.certificate.empty() ? "http://127.0.0.1:" : "https://localhost:") {
    std::filesystem::create_directories(folder_);
    const Listener listener;
    port_ = listener.port();
    std::ofstream file(folder_ / "nginx.conf", std::ios::binary);
    file << configuration(port_, options);
    file.close();
    if (!file) {
        throw std::runtime_error("can't write " + (folder_ / "nginx.conf").string());
    }

    ProcessOptions process;
    process.output = folder_ / "error.log";
    process.inheritedFile = listener.file();
    // nginx adopts the sockets named here
    process.environment = {"NGINX=" + std::to_string(listener.file()) + ";"};
    server_ =
        std::make_unique<Process>(std::vector<std::string>{"nginx", "-p", folder_.string() + "/",
                                                           "-c", "nginx.conf", "-e", "error.log"},
                                  process);
}

} // namespace ca::kit
