// The folders in which an installation's files are brought up to date:
//
//   <installation>/.coldanchor-update/                   the work folder
//   <installation>/.coldanchor-update/stage-<stamp>/     what was downloaded, under its own path
//   <installation>/.coldanchor-update/backup-<stamp>/    what was replaced, under its own path
//
// All of it is on the installation's volume, so that every move is a rename. The stamp is the time
// of one attempt, in milliseconds since 1970, so nothing of an earlier attempt is ever used again.
// Pure; any thread.
#pragma once

#include <string>
#include <string_view>

namespace ca::install {

inline constexpr const char* workFolderName = ".coldanchor-update";

// `stamp` is a number in decimal digits. Wide, as the update helper reads the names.
std::wstring stageFolderName(std::wstring_view stamp);
std::wstring backupFolderName(std::wstring_view stamp);

// The stamp in such a folder's name; empty for a name that the function above doesn't return.
std::wstring stampOfStage(std::wstring_view folderName);
std::wstring stampOfBackup(std::wstring_view folderName);

} // namespace ca::install
