#include "publisher/commands/commands.h"

#include "publisher/check/check.h"
#include "publisher/files/descriptor.h"
#include "publisher/keys/keys.h"
#include "publisher/keys/passphrase.h"
#include "publisher/release/difference.h"
#include "publisher/release/release.h"
#include "publisher/serve/serve.h"
#include "publisher/text/failure.h"
#include "publisher/text/progress.h"
#include "publisher/text/shown.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr const char* passphraseHelp =
    "File whose first line is the passphrase (else COLDANCHOR_PASSPHRASE, else a prompt)";

unsigned cores() {
    return std::max(std::thread::hardware_concurrency(), 1U);
}

std::string countText(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void addKeys(CLI::App& program) {
    CLI::App* keys = program.add_subcommand("keys", "The key pair of the channel");
    keys->require_subcommand(1);
    struct Options {
        fs::path folder = ".", passphraseFile;
        int bits = 3072;
        bool noPassphrase = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* fresh = keys->add_subcommand(
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
    fresh->callback([options] {
        const fs::path key = options->folder / privateKeyName;
        std::optional<std::string> passphrase;
        if (!options->noPassphrase && !fs::exists(key)) {
            passphrase = choosePassphrase(options->passphraseFile, key);
        }
        makeKeyPair(options->folder, options->bits, passphrase);
        std::cout << fingerprintOf(options->folder / publicKeyName) << '\n';
    });

    const auto publicKey = std::make_shared<fs::path>();
    CLI::App* fingerprint =
        keys->add_subcommand("fingerprint", "Prints the fingerprint of a public key file");
    fingerprint->add_option("file", *publicKey, "The public key file")->required();
    fingerprint->callback([publicKey] { std::cout << fingerprintOf(*publicKey) << '\n'; });
}

void printRelease(const ReleaseResult& result) {
    std::uint64_t bytes = 0;
    for (const update::ManifestFile& file : result.manifest.files) {
        bytes += file.size;
    }
    std::cout << "released " << result.manifest.version << " to " << result.manifest.channel << ": "
              << countText(result.manifest.files.size(), "file") << ", " << bytesText(bytes) << ", "
              << result.shared << " as in the release before\n"
              << "key " << result.fingerprint << '\n';
    for (const std::string& name : result.removed) {
        std::cout << "removed the old release " << shown(name) << '\n';
    }
}

void addRelease(CLI::App& program) {
    struct Options : ReleaseOptions {
        fs::path notesFile, passphraseFile;
    };
    const auto options = std::make_shared<Options>();
    options->threads = cores();
    CLI::App* release = program.add_subcommand(
        "release", "Makes a folder with the game the channel's live release");
    release->add_option("tree", options->tree, "The folder, as players shall have it")
        ->required()
        ->check(CLI::ExistingDirectory);
    release->add_option("--version", options->version, "The release's version, such as 1.4.2")
        ->required();
    release->add_option("--key", options->privateKey, "The private key file")->required();
    release->add_option("--to", options->root, "The channel root, which a web server serves")
        ->required();
    release->add_option("--channel", options->channel, "The channel's name")->capture_default_str();
    release->add_option("--notes", options->notesFile, "File with the release notes (UTF-8)");
    release->add_flag("--mandatory", options->mandatory, "Nobody plays on without this release");
    release->add_option("--minimum-online-version", options->minimumOnlineVersion,
                        "Nobody plays on with an older one");
    release->add_option("--protocol-version", options->protocolVersion, "For the game's own use")
        ->capture_default_str();
    release->add_option("--public-key", options->publicKey,
                        "The file that players have (else the one beside the private key)");
    release->add_option("--passphrase-file", options->passphraseFile, passphraseHelp);
    release->add_option("--keep", options->keep, "How many older releases stay on the disk")
        ->capture_default_str();
    release->add_option("--jobs", options->threads, "Threads that read files")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    release->add_flag("--allow-older", options->allowOlder, "Even if the live version isn't older");
    release->add_flag("--new-key", options->allowNewKey,
                      "Even if the live release was signed with another key");
    release->add_flag("--link", options->linked,
                      "Hard links instead of copies; never change the tree's files in place then");
    release->callback([options] {
        if (!options->notesFile.empty()) {
            options->notes = readWhole(options->notesFile);
        }
        const auto passphrase = [&](const fs::path& key) {
            return findPassphrase(options->passphraseFile, key);
        };
        const auto warn = [](const std::string& text) {
            std::cerr << "warning: " << shown(text) << '\n';
        };
        printRelease(makeRelease(*options, passphrase, warn));
    });
}

void addDiff(CLI::App& program) {
    struct Options {
        fs::path older, newer;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* diff =
        program.add_subcommand("diff", "What a player of one release downloads for another");
    diff->add_option("older", options->older, "A release's folder, or a manifest")->required();
    diff->add_option("newer", options->newer, "Likewise")->required();
    diff->callback([options] {
        const update::UpdateManifest older = loadManifest(options->older);
        const update::UpdateManifest newer = loadManifest(options->newer);
        const Difference difference = compareReleases(older, newer);
        const auto print = [](const char* mark, const std::vector<update::ManifestFile>& files) {
            for (const update::ManifestFile& file : files) {
                std::cout << mark << ' ' << shown(file.path) << ' ' << file.size << '\n';
            }
        };
        print("added", difference.added);
        print("changed", difference.changed);
        print("removed", difference.removed);
        std::cout << "a player of " << shown(older.version) << " downloads "
                  << difference.downloadBytes << " bytes in "
                  << countText(difference.added.size() + difference.changed.size(), "file")
                  << " for " << shown(newer.version) << "; "
                  << countText(difference.removed.size(), "removed file")
                  << " stay with the player\n";
    });
}

nlohmann::ordered_json jsonOf(const CheckResult& result) {
    nlohmann::ordered_json problems = nlohmann::ordered_json::array();
    nlohmann::ordered_json advice = problems;
    for (const Finding& finding : result.findings) {
        (finding.isProblem ? problems : advice)
            .push_back({{"where", finding.where}, {"what", finding.what}});
    }
    return {{"good", result.good()},
            {"version", result.manifest.version},
            {"files", result.manifest.files.size()},
            {"bytes", result.bytes},
            {"problems", problems},
            {"advice", advice}};
}

void addCheck(CLI::App& program, int& status) {
    struct Options : CheckOptions {
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    options->threads = cores();
    CLI::App* check =
        program.add_subcommand("check", "Plays a client: everything that a launcher would fetch");
    check
        ->add_option("channel-root", options->address,
                     "The server's address as launchers have it, or a channel root")
        ->required();
    check->add_option("--channel", options->channel, "The channel's name")->capture_default_str();
    check->add_option("--key", options->publicKey, "The public key file that players have")
        ->check(CLI::ExistingFile);
    check->add_option("--jobs", options->threads, "Files fetched at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    check->add_flag("--json", options->json, "The result as one JSON object");
    check->callback([options, &status] {
        const CheckResult result = checkChannel(*options);
        status = result.good() ? 0 : 1;
        if (options->json) {
            std::cout << jsonOf(result).dump(1, ' ', true, nlohmann::json::error_handler_t::replace)
                      << '\n';
            return;
        }
        for (const Finding& finding : result.findings) {
            std::cout << (finding.isProblem ? "problem: " : "advice: ")
                      << shown(finding.where + " " + finding.what) << '\n';
        }
        std::cout << (result.good() ? "good" : "not good") << ": version "
                  << shown(result.manifest.version) << ", "
                  << countText(result.manifest.files.size(), "file") << ", "
                  << bytesText(result.bytes) << '\n';
    });
}

void addServe(CLI::App& program) {
    const auto options = std::make_shared<ServeOptions>();
    CLI::App* command = program.add_subcommand(
        "serve", "Serves a channel root with the system's nginx, to try it out");
    command->add_option("root", options->root, "The channel root")->required();
    command->add_option("--port", options->port, "TCP port; 0 takes a free one")
        ->capture_default_str();
    command->add_option("--address", options->address, "Address of this machine; 0.0.0.0 for all")
        ->capture_default_str();
    command->add_option("--limit-rate", options->bytesPerSecond,
                        "Bytes a second for each connection; 0: no limit");
    command->callback([options] { serve(*options); });
}

} // namespace

void addCommands(CLI::App& program, int& status) {
    program.require_subcommand(1);
    addKeys(program);
    addRelease(program);
    addDiff(program);
    addCheck(program, status);
    addServe(program);
}

} // namespace ca::publisher
