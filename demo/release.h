// The files of the demo: a release of the game, an installation that is one version behind it, and
// a later release that brings a new launcher.
#pragma once

#include <filesystem>

namespace ca::demo {

inline constexpr const char* demoVersion = "1.4.2";
inline constexpr const char* installedVersion = "1.4.1";
inline constexpr const char* nextVersion = "1.4.3";

// Text for the manifest: longer than the 80 bytes from which the launcher shows it, with
// rows of every heading.
const char* releaseNotes();
const char* nextReleaseNotes();

// Writes the release's tree: the programs of `programs` and about 200 MB of made-up data in more
// than 300 files. The content follows from each file's path alone. Throws std::runtime_error or
// std::filesystem::filesystem_error.
void writeRelease(const std::filesystem::path& tree, const std::filesystem::path& programs);

// Writes the tree of the later release beside the first one's `tree`, whose files it shares by hard
// links: the launcher of `programs`/next, other notes and one more map.
void writeNextRelease(const std::filesystem::path& nextTree, const std::filesystem::path& tree,
                      const std::filesystem::path& programs);

// Copies `tree` and then makes it older: some files differ, some are missing, the marker
// says `installedVersion`.
// The launcher stays as it is: the first update doesn't replace the program that carries it out.
void writeInstallation(const std::filesystem::path& installation, const std::filesystem::path& tree,
                       const std::filesystem::path& publicKey);

} // namespace ca::demo
