#include "publisher/commands/commands.h"
#include "publisher/release/difference.h"
#include "publisher/text/amounts.h"
#include "publisher/text/shown.h"

#include <iostream>
#include <memory>

namespace ca::publisher {

namespace {

struct DiffOptions {
    std::filesystem::path older;
    std::filesystem::path newer;
};

void print(const char* mark, const std::vector<update::ManifestFile>& files) {
    for (const update::ManifestFile& file : files) {
        std::cout << mark << ' ' << shown(file.path) << ' ' << file.size << '\n';
    }
}

void run(const DiffOptions& options) {
    const update::UpdateManifest older = loadManifest(options.older);
    const update::UpdateManifest newer = loadManifest(options.newer);
    const Difference difference = compareReleases(older, newer);
    print("added", difference.added);
    print("changed", difference.changed);
    print("removed", difference.removed);
    const std::size_t downloads = difference.added.size() + difference.changed.size();
    std::cout << "a player of " << shown(older.version) << " downloads " << difference.downloadBytes
              << " bytes in " << countText(downloads, "file") << " for " << shown(newer.version)
              << "; " << countText(difference.removed.size(), "removed file")
              << " stay with the player\n";
}

} // namespace

void addDiff(CLI::App& program) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* command = program.add_subcommand(
        "diff", "Lists the files that a player of one release downloads for another");
    command->add_option("older", options->older, "A release's folder, or a manifest")->required();
    command->add_option("newer", options->newer, "The newer release's folder, or its manifest")
        ->required();
    command->callback([options] { run(*options); });
}

} // namespace ca::publisher
