#include "publisher/commands/commands.h"
#include "publisher/keys/keys.h"
#include "publisher/keys/passphrase.h"

#include <iostream>
#include <memory>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

struct NewOptions {
    fs::path folder = ".";
    fs::path passphraseFile;
    int bits = 3072;
    bool noPassphrase = false;
};

void makeKeys(const NewOptions& options) {
    const fs::path key = options.folder / privateKeyName;
    std::optional<std::string> passphrase;
    // Nobody is asked for the passphrase of a key that won't be made.
    if (!options.noPassphrase && !fs::exists(key)) {
        passphrase = choosePassphrase(options.passphraseFile, key);
    }
    makeKeyPair(options.folder, options.bits, passphrase);
    std::cout << fingerprintOf(options.folder / publicKeyName) << '\n';
}

void addNew(CLI::App& keys) {
    const auto options = std::make_shared<NewOptions>();
    CLI::App* fresh = keys.add_subcommand(
        "new", "Makes a pair and prints the fingerprint that launchers compile in");
    fresh->add_option("folder", options->folder, "Where to put the two files")
        ->capture_default_str();
    fresh->add_option("--bits", options->bits, "Size of the key")
        ->capture_default_str()
        ->check(CLI::IsMember({2048, 3072, 4096}));
    CLI::Option* file =
        fresh->add_option("--passphrase-file", options->passphraseFile, passphraseHelp);
    fresh->add_flag("--no-passphrase", options->noPassphrase, "Leave the private key unencrypted")
        ->excludes(file);
    fresh->callback([options] { makeKeys(*options); });
}

void addFingerprint(CLI::App& keys) {
    const auto publicKey = std::make_shared<fs::path>();
    CLI::App* fingerprint =
        keys.add_subcommand("fingerprint", "Prints the fingerprint of a public key file");
    fingerprint->add_option("file", *publicKey, "The public key file")->required();
    fingerprint->callback([publicKey] { std::cout << fingerprintOf(*publicKey) << '\n'; });
}

} // namespace

void addKeys(CLI::App& program) {
    CLI::App* keys = program.add_subcommand("keys", "The key pair of the channel");
    keys->require_subcommand(1);
    addNew(*keys);
    addFingerprint(*keys);
}

} // namespace ca::publisher
