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
    struct Order {
        fs::path folder = ".", passphraseFile;
        int bits = 3072;
        bool noPassphrase = false;
    };
    const auto order = std::make_shared<Order>();
    CLI::App* fresh = keys->add_subcommand(
        "new", "Makes a pair and prints the fingerprint that launchers compile in");
    fresh->add_option("folder", order->folder, "Where to put the two files")->capture_default_str();
    fresh->add_option("--bits", order->bits, "Size of the key")
        ->capture_default_str()
        ->check(CLI::IsMember({2048, 3072, 4096}));
    CLI::Option* file =
        fresh->add_option("--passphrase-file", order->passphraseFile, passphraseHelp);
    fresh->add_flag("--no-passphrase", order->noPassphrase, "Leave the private key unencrypted")
        ->excludes(file);
    fresh->callback([order] {
        const fs::path key = order->folder / privateKeyName;
        std::optional<std::string> passphrase;
        if (!order->noPassphrase && !fs::exists(key)) {
            passphrase = choosePassphrase(order->passphraseFile, key);
        }
        makeKeyPair(order->folder, order->bits, passphrase);
        std::cout << fingerprintOf(order->folder / publicKeyName) << '\n';
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
    struct Order : ReleaseOrder {
        fs::path notesFile, passphraseFile;
    };
    const auto order = std::make_shared<Order>();
    order->threads = cores();
    CLI::App* release = program.add_subcommand(
        "release", "Makes a folder with the game the channel's live release");
    release->add_option("tree", order->tree, "The folder, as players shall have it")
        ->required()
        ->check(CLI::ExistingDirectory);
    release->add_option("--version", order->version, "The release's version, such as 1.4.2")
        ->required();
    release->add_option("--key", order->privateKey, "The private key file")->required();
    release->add_option("--to", order->root, "The channel root, which a web server serves")
        ->required();
    release->add_option("--channel", order->channel, "The channel's name")->capture_default_str();
    release->add_option("--notes", order->notesFile, "File with the release notes (UTF-8)");
    release->add_flag("--mandatory", order->mandatory, "Nobody plays on without this release");
    release->add_option("--minimum-online-version", order->minimumOnlineVersion,
                        "Nobody plays on with an older one");
    release->add_option("--protocol-version", order->protocolVersion, "For the game's own use")
        ->capture_default_str();
    release->add_option("--public-key", order->publicKey,
                        "The file that players have (else the one beside the private key)");
    release->add_option("--passphrase-file", order->passphraseFile, passphraseHelp);
    release->add_option("--keep", order->keep, "How many older releases stay on the disk")
        ->capture_default_str();
    release->add_option("--jobs", order->threads, "Threads that read files")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    release->add_flag("--allow-older", order->allowOlder, "Even if the live version isn't older");
    release->add_flag("--new-key", order->allowNewKey,
                      "Even if the live release was signed with another key");
    release->add_flag("--link", order->linked,
                      "Hard links instead of copies; never change the tree's files in place then");
    release->callback([order] {
        if (!order->notesFile.empty()) {
            order->notes = readWhole(order->notesFile);
        }
        const auto passphrase = [&](const fs::path& key) {
            return findPassphrase(order->passphraseFile, key);
        };
        const auto warn = [](const std::string& text) {
            std::cerr << "warning: " << shown(text) << '\n';
        };
        printRelease(makeRelease(*order, passphrase, warn));
    });
}

void addDiff(CLI::App& program) {
    struct Order {
        fs::path older, newer;
    };
    const auto order = std::make_shared<Order>();
    CLI::App* diff =
        program.add_subcommand("diff", "What a player of one release downloads for another");
    diff->add_option("older", order->older, "A release's folder, or a manifest")->required();
    diff->add_option("newer", order->newer, "Likewise")->required();
    diff->callback([order] {
        const update::UpdateManifest older = loadManifest(order->older);
        const update::UpdateManifest newer = loadManifest(order->newer);
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
    struct Order : CheckOrder {
        bool json = false;
    };
    const auto order = std::make_shared<Order>();
    order->threads = cores();
    CLI::App* check =
        program.add_subcommand("check", "Plays a client: everything that a launcher would fetch");
    check
        ->add_option("channel-root", order->address,
                     "The server's address as launchers have it, or a channel root")
        ->required();
    check->add_option("--channel", order->channel, "The channel's name")->capture_default_str();
    check->add_option("--key", order->publicKey, "The public key file that players have")
        ->check(CLI::ExistingFile);
    check->add_option("--jobs", order->threads, "Files fetched at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    check->add_flag("--json", order->json, "The result as one JSON object");
    check->callback([order, &status] {
        const CheckResult result = checkChannel(*order);
        status = result.good() ? 0 : 1;
        if (order->json) {
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
    const auto order = std::make_shared<ServeOrder>();
    CLI::App* command = program.add_subcommand(
        "serve", "Serves a channel root with the system's nginx, to try it out");
    command->add_option("root", order->root, "The channel root")->required();
    command->add_option("--port", order->port, "TCP port; 0 takes a free one")
        ->capture_default_str();
    command->add_option("--address", order->address, "Address of this machine; 0.0.0.0 for all")
        ->capture_default_str();
    command->add_option("--limit-rate", order->bytesPerSecond,
                        "Bytes a second for each connection; 0: no limit");
    command->callback([order] { serve(*order); });
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
