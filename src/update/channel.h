// What an update channel is: the names, addresses and limits on which launchers and their publisher
// agree. Whoever changes one of them changes it for launchers that are with players already.
//
//   <server>/<channel>/<platform>/manifest.json     what the release is made of
//   <server>/<channel>/<platform>/manifest.sig      the signature over the manifest's bytes
//   <server>/<channel>/<platform>/files/<path>      each file of the manifest
//
// Pure; any thread.
#pragma once

#include "install/paths.h"
#include "install/work_folders.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace ca::update {

// What a manifest must name as its format and product, and the platform that launchers ask for.
inline constexpr int manifestFormat = 1;
inline constexpr const char* productName = "cold-anchor";
inline constexpr const char* platformName = "windows";

// The one channel that launchers ask for.
inline constexpr const char* launcherChannel = "stable";

inline constexpr const char* manifestName = "manifest.json";
inline constexpr const char* signatureName = "manifest.sig";
inline constexpr const char* filesName = "files";

// Bytes of a manifest's path. A path in an installation and its work folder then stays far below
// what file systems take.
inline constexpr std::size_t longestManifestPath = 240;

// Folders of an installation that no manifest may reach into: the player's files and the
// launcher's own work. Files of these names are allowed.
inline constexpr std::array protectedFolders{install::saveFolderName, install::userDataFolderName,
                                             install::workFolderName};

// The file of an installation that no manifest may replace: the key that manifests are judged by.
inline constexpr const char* protectedFile = install::publicKeyPath;

// Bytes of release notes. Shorter ones are a placeholder, and launchers show their local notes.
inline constexpr std::size_t shortestShownNotes = 80;

// The address of a channel's platform below `server`, and of what is there. Nothing is escaped.
std::string channelUrl(std::string_view server, std::string_view channel,
                       std::string_view platform = platformName);
std::string manifestUrl(std::string_view channelUrl);
std::string signatureUrl(std::string_view channelUrl);
std::string fileUrl(std::string_view channelUrl, std::string_view manifestPath);

// The signature's text without the spaces, tabs and line ends behind it, which a mirror or an
// editor may leave there. In front of it they are an error. The result points into `text`.
std::string_view trimSignature(std::string_view text);

} // namespace ca::update
