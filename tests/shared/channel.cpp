#include "shared/channel.h"

#include "publisher/release/release.h"

#include <stdexcept>
#include <thread>

namespace fs = std::filesystem;

namespace ca::kit {
namespace {

constexpr int keyBits = 3072;

std::string refusePassphrase(const fs::path& keyFile) {
    throw std::runtime_error(keyFile.string() +
                             " is encrypted, and nobody is asked for a passphrase here");
}

} // namespace

std::string signText(std::string_view text, const fs::path& privateKeyPem) {
    return publisher::PrivateKey(privateKeyPem, refusePassphrase).sign(text);
}

void makeLive(const fs::path& tree, const fs::path& channelRoot, const Release& release,
              const fs::path& privateKeyPem) {
    publisher::ReleaseOptions options;
    options.tree = tree;
    options.root = channelRoot;
    options.privateKey = privateKeyPem;
    options.channel = release.channel;
    options.version = release.version;
    options.minimumOnlineVersion = release.minimumOnlineVersion;
    options.notes = release.notes;
    options.mandatory = release.mandatory;
    options.allowOlder = options.allowNewKey = options.linked = true;
    options.keep = 0;
    options.threads = std::thread::hardware_concurrency();
    // what it warns of is meant here
    publisher::makeRelease(options, refusePassphrase, [](const std::string&) {});
}

void makeKeyPair(const fs::path& folder) {
    for (const char* name : {publisher::privateKeyName, publisher::publicKeyName}) {
        fs::remove(folder / name);
    }
    publisher::makeKeyPair(folder, keyBits, std::nullopt);
}

} // namespace ca::kit
