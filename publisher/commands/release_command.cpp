#include "publisher/commands/commands.h"
#include "publisher/files/descriptor.h"
#include "publisher/keys/passphrase.h"
#include "publisher/release/release.h"
#include "publisher/text/amounts.h"
#include "publisher/text/shown.h"

#include <iostream>
#include <memory>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

// Files are read once the command line is understood.
struct CommandOptions : ReleaseOptions {
    fs::path notesFile;
    fs::path passphraseFile;
};

void print(const ReleaseResult& result) {
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

void run(CommandOptions& options) {
    if (!options.notesFile.empty()) {
        options.notes = readWhole(options.notesFile);
    }
    const auto passphrase = [&](const fs::path& key) {
        return findPassphrase(options.passphraseFile, key);
    };
    const auto warn = [](const std::string& text) {
        std::cerr << "warning: " << shown(text) << '\n';
    };
    print(makeRelease(options, passphrase, warn));
}

// What the release is.
void addContent(CLI::App& command, CommandOptions& options) {
    command
        .add_option("tree", options.tree,
                    "The folder with the game, exactly as players should get it")
        ->required()
        ->check(CLI::ExistingDirectory);
    command.add_option("--version", options.version, "The release's version, such as 1.4.2")
        ->required();
    command.add_option("--key", options.privateKey, "The private key file")->required();
    command.add_option("--to", options.root, "The channel root that a web server serves")
        ->required();
    command.add_option("--channel", options.channel, "The channel's name")->capture_default_str();
    command.add_option("--notes", options.notesFile, "File with the release notes (UTF-8)");
    command.add_flag("--mandatory", options.mandatory,
                     "Players must install this release before playing");
    command.add_option("--minimum-online-version", options.minimumOnlineVersion,
                       "Players below this version must update before playing");
    command.add_option("--protocol-version", options.protocolVersion, "For the game's own use")
        ->capture_default_str();
}

// How it is made.
void addManner(CLI::App& command, CommandOptions& options) {
    command.add_option("--public-key", options.publicKey,
                       "The file that players have (else the one beside the private key)");
    command.add_option("--passphrase-file", options.passphraseFile, passphraseHelp);
    command.add_option("--keep", options.keep, "Number of older releases to keep on the disk")
        ->capture_default_str();
    addJobs(command, options.threads, "Threads that read files");
    command.add_flag("--allow-older", options.allowOlder,
                     "Release even if the live version isn't older");
    command.add_flag("--new-key", options.allowNewKey,
                     "Release even if the live release was signed with another key");
    command.add_flag("--link", options.linked,
                     "Hard links instead of copies; never change the tree's files in place then");
}

} // namespace

void addRelease(CLI::App& program) {
    const auto options = std::make_shared<CommandOptions>();
    CLI::App* command = program.add_subcommand(
        "release", "Turns a folder with the game into the channel's live release");
    addContent(*command, *options);
    addManner(*command, *options);
    command->callback([options] { run(*options); });
}

} // namespace ca::publisher
