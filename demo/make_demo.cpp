// Lays out the demo in a folder and serves its update channel:
//
//   make_demo FOLDER PROGRAMS KEYS
//
// FOLDER gets release/, next_release/, channel/, installation/ and server/, in place of earlier
// ones. PROGRAMS is where the launcher, the helper and the game were built, KEYS holds the key pair
// of the channel. When all is in place the server's address is printed in a line. A line on
// standard input then puts the next release into the channel, and its version is printed. The
// server runs until standard input ends, so that it can't outlive the one who started it.
#include "release.h"
#include "shared/channel.h"
#include "shared/nginx.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;

namespace {

// Slow enough for the progress to be seen: the manifest takes a second, the files some seconds.
constexpr std::uint64_t bytesPerSecond = 10'000'000;
constexpr const char* slowManifest = "location ~ manifest[.]json$ { limit_rate 25000; }";

void serveDemo(const fs::path& folder, const fs::path& programs, const fs::path& keys) {
    for (const char* name : {"release", "next_release", "channel", "installation", "server"}) {
        fs::remove_all(folder / name);
    }
    ca::demo::writeRelease(folder / "release", programs);
    ca::demo::writeNextRelease(folder / "next_release", folder / "release", programs);
    ca::demo::writeInstallation(folder / "installation", folder / "release",
                                keys / "update_public_key.pem");
    ca::kit::Release release;
    release.version = ca::demo::demoVersion;
    release.minimumOnlineVersion = "1.4.0";
    release.notes = ca::demo::releaseNotes();
    ca::kit::makeLive(folder / "release", folder / "channel", release,
                      keys / "update_private_key.pem");

    ca::kit::NginxOptions options;
    options.root = folder / "channel";
    options.bytesPerSecond = bytesPerSecond;
    options.serverDirectives = slowManifest;
    const ca::kit::Nginx server(folder / "server", options);
    std::ofstream address(folder / "installation/data/update_server.txt");
    address << server.url() << "\n";
    if (!address.flush()) {
        throw std::runtime_error("can't write the server's address");
    }
    std::cout << server.url() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        release.version = ca::demo::nextVersion;
        release.notes = ca::demo::nextReleaseNotes();
        ca::kit::makeLive(folder / "next_release", folder / "channel", release,
                          keys / "update_private_key.pem");
        std::cout << release.version << std::endl;
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: make_demo FOLDER PROGRAMS KEYS\n";
        return 2;
    }
    try {
        serveDemo(arguments[1], arguments[2], arguments[3]);
    } catch (const std::exception& failure) {
        std::cerr << "make_demo: " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
