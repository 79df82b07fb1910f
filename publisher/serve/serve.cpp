#include "publisher/serve/serve.h"

#include "publisher/files/descriptor.h"
#include "publisher/text/failure.h"

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr int waitingConnections = 511; // as nginx has it

// Opened here and handed to nginx, so that the port can't be lost in between and the first
// request needs no wait.
Descriptor listenOn(const ServeOptions& options, std::uint16_t& port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.port);
    if (::inet_pton(AF_INET, options.address.c_str(), &address.sin_addr) != 1) {
        throw Failure(
            options.address +
            " is no IPv4 address: give one of this machine, such as 127.0.0.1 or 0.0.0.0");
    }
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (!socket || ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(socket.get(), generic, length) != 0 ||
        ::listen(socket.get(), waitingConnections) != 0 ||
        ::getsockname(socket.get(), generic, &length) != 0) {
        failWithReason("can't listen on " + options.address + ":" + std::to_string(options.port) +
                       ", choose another --port or --address");
    }
    port = ntohs(address.sin_port);
    return socket;
}

// A folder of its own, which goes with it.
class WorkFolder {
public:
    WorkFolder() {
        std::string name = (fs::temp_directory_path() / "coldanchor-serve-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            failWithReason("can't make a folder in " + fs::temp_directory_path().string());
        }
        path = name;
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    fs::path path;
};

// Service programs lie where only root's PATH leads.
std::string findNginx() {
    const char* path = std::getenv("PATH");
    std::string folders =
        std::string(path != nullptr ? path : "") + ":/usr/sbin:/sbin:/usr/local/sbin:";
    for (std::size_t end = folders.find(':'); end != std::string::npos; end = folders.find(':')) {
        std::string program = folders.substr(0, end) + "/nginx";
        if (::access(program.c_str(), X_OK) == 0) {
            return program;
        }
        folders.erase(0, end + 1);
    }
    throw Failure("nginx isn't installed: install the package nginx-light");
}

pid_t startNginx(const std::string& program, const fs::path& folder, const Descriptor& socket) {
    const std::string prefix = folder.string() + "/";
    // nginx adopts the sockets that NGINX names
    const std::string inherited = std::to_string(socket.get()) + ";";
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        failWithReason("can't start nginx");
    }
    if (child > 0) {
        return child;
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    if (::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || ::getppid() != parent ||
        ::setenv("NGINX", inherited.c_str(), 1) != 0 || ::fcntl(socket.get(), F_SETFD, 0) != 0) {
        ::_exit(126);
    }
    ::execl(program.c_str(), "nginx", "-p", prefix.c_str(), "-c", "nginx.conf", "-e", "error.log",
            nullptr);
    ::_exit(127);
}

} // namespace

std::string serverConfiguration(const ServeOptions& options, std::uint16_t port) {
    const std::string root = fs::absolute(options.root).string();
    if (root.find_first_of("\"\\$\n") != std::string::npos) {
        throw Failure("nginx can't be given the folder " + root +
                      ": move it to one without '\"', '\\' and '$'");
    }
    // else workers can't read root's own folders
    std::string text = ::geteuid() == 0 ? "user root root;\n" : "";
    text += "daemon off;\nworker_processes auto;\npid nginx.pid;\nerror_log error.log;\nevents { "
            "}\nhttp {\n"
            "    access_log off;\n";
    for (const char* module : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
        text += "    " + std::string(module) + "_temp_path temporary;\n";
    }
    text += "    server {\n        listen " + options.address + ":" + std::to_string(port) +
            ";\n        root \"" + root + "\";\n";
    if (options.bytesPerSecond != 0) {
        text += "        limit_rate " + std::to_string(options.bytesPerSecond) + ";\n";
    }
    return text + std::string(channelConfiguration) + "    }\n}\n";
}

void serve(const ServeOptions& options) {
    if (!fs::is_directory(options.root)) {
        throw Failure(options.root.string() +
                      " is no folder: name the channel root that \"release --to\" was given");
    }
    const std::string program = findNginx();
    sigset_t ends;
    ::sigemptyset(&ends);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        ::sigaddset(&ends, number);
    }
    ::sigprocmask(SIG_BLOCK, &ends, nullptr);

    std::uint16_t port = 0;
    const Descriptor socket = listenOn(options, port);
    const WorkFolder folder;
    writeNewFile(folder.path / "nginx.conf", serverConfiguration(options, port), 0600);
    const pid_t child = startNginx(program, folder.path, socket);
    std::cout << "serving " << options.root.string() << " at http://" << options.address << ":"
              << port << "/ until Ctrl-C\n"
              << std::flush;
    int received = 0;
    int status = 0;
    while (::sigwait(&ends, &received) == 0 && received == SIGCHLD) {
        if (::waitpid(child, &status, WNOHANG) == child) {
            throw Failure("nginx has ended: " + readWhole(folder.path / "error.log"));
        }
    }
    ::kill(child, SIGTERM);
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}

} // namespace ca::publisher
