#include "publisher/serve/serve.h"

#include "publisher/files/descriptor.h"
#include "publisher/serve/nginx.h"
#include "publisher/text/failure.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sys/wait.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

// A temporary folder, which is removed with the object.
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

std::string configurationFor(const ServeOptions& options, std::uint16_t port) {
    NginxConfiguration configuration;
    configuration.httpLines = "    access_log off;\n";
    configuration.listen = options.address + ":" + std::to_string(port);
    configuration.root = options.root;
    configuration.bytesPerSecond = options.bytesPerSecond;
    configuration.serverLines = channelConfiguration;
    return configurationText(configuration);
}

// The signals that end the service, blocked in this thread, so that they wait until they are asked
// for. A handler couldn't clean up, and the default would leave the folder behind.
sigset_t blockEnds() {
    sigset_t ends;
    ::sigemptyset(&ends);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        ::sigaddset(&ends, number);
    }
    ::sigprocmask(SIG_BLOCK, &ends, nullptr);
    return ends;
}

// Returns when one of the signals comes; throws if nginx ends first.
void waitForEnd(const sigset_t& ends, pid_t nginx, const fs::path& log) {
    int received = 0;
    while (::sigwait(&ends, &received) == 0 && received == SIGCHLD) {
        const bool hasEnded = ::waitpid(nginx, nullptr, WNOHANG) == nginx;
        if (hasEnded) {
            throw Failure("nginx has ended: " + readWhole(log));
        }
    }
}

void stop(pid_t nginx) {
    ::kill(nginx, SIGTERM);
    while (::waitpid(nginx, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace

void serve(const ServeOptions& options) {
    if (!fs::is_directory(options.root)) {
        throw Failure(options.root.string() +
                      " is no folder: name the channel root that \"release --to\" was given");
    }
    const sigset_t ends = blockEnds();
    const Listener listener = listenOn(options.address, options.port);
    const WorkFolder folder;
    writeNewFile(folder.path / "nginx.conf", configurationFor(options, listener.port), 0600);
    // In the caller's group, so that Ctrl-Z stops both and Ctrl-C ends both.
    ChildOptions child;
    child.inCallersGroup = true;
    const pid_t nginx = startNginx(folder.path, listener, child);
    std::cout << "serving " << options.root.string() << " at http://" << options.address << ":"
              << listener.port << "/ until Ctrl-C\n"
              << std::flush;
    waitForEnd(ends, nginx, folder.path / "error.log");
    stop(nginx);
}

} // namespace ca::publisher
