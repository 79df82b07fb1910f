#include "publisher/serve/nginx.h"

#include "publisher/text/failure.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr int waitingConnections = 511; // as nginx has it

// Opens and binds; false with errno set.
bool listen(const Descriptor& socket, sockaddr_in& address) {
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    // A port that was asked for may still wait for connections of the server before. Of a free one
    // this would make two programs believe that it is theirs.
    const int reuse = address.sin_port == 0 ? 0 : 1;
    return socket &&
           ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) == 0 &&
           ::bind(socket.get(), generic, length) == 0 &&
           ::listen(socket.get(), waitingConnections) == 0 &&
           ::getsockname(socket.get(), generic, &length) == 0;
}

} // namespace

Listener listenOn(const std::string& address, std::uint16_t port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    if (::inet_pton(AF_INET, address.c_str(), &place.sin_addr) != 1) {
        throw Failure(
            address +
            " is no IPv4 address: give one of this machine, such as 127.0.0.1 or 0.0.0.0");
    }
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!listen(socket, place)) {
        failWithReason("can't listen on " + address + ":" + std::to_string(port) +
                       ", choose another --port or --address");
    }
    return {std::move(socket), ntohs(place.sin_port)};
}

std::string quotedPath(const fs::path& path) {
    const std::string text = fs::absolute(path).string();
    if (text.find_first_of("\"\\$\n") != std::string::npos) {
        throw Failure("nginx can't be given the folder " + text +
                      ": move it to one without '\"', '\\' and '$'");
    }
    return "\"" + text + "\"";
}

std::string configurationText(const NginxConfiguration& configuration) {
    // Workers of another user can't read root's own folders.
    std::string text = ::geteuid() == 0 ? "user root root;\n" : "";
    text += "daemon off;\n";
    text += "worker_processes " + configuration.workers + ";\n";
    text += "pid nginx.pid;\n";
    text += "error_log error.log;\n";
    text += "events { }\n";
    text += "http {\n";
    text += configuration.httpLines;
    // Each has a place of the system's own otherwise, which takes rights.
    for (const char* module : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
        text += "    " + std::string(module) + "_temp_path temporary;\n";
    }
    text += "    server {\n";
    text += "        listen " + configuration.listen + ";\n";
    text += "        root " + quotedPath(configuration.root) + ";\n";
    if (configuration.bytesPerSecond != 0) {
        text += "        limit_rate " + std::to_string(configuration.bytesPerSecond) + ";\n";
    }
    text += configuration.serverLines;
    text += "    }\n}\n";
    return text;
}

pid_t startNginx(const fs::path& folder, const Listener& listener, ChildOptions options) {
    if (findProgram("nginx").empty()) {
        throw Failure("nginx isn't installed: install the package nginx-light");
    }
    options.inheritedFile = listener.socket.get();
    // nginx adopts the sockets that NGINX names.
    options.environment.push_back("NGINX=" + std::to_string(listener.socket.get()) + ";");
    const std::string prefix = folder.string() + "/";
    return startChild({"nginx", "-p", prefix, "-c", "nginx.conf", "-e", "error.log"}, options);
}

} // namespace ca::publisher
