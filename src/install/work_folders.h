// The folders in which an installation's files are brought up to date:
//
//   <installation>/.coldanchor-update/                   the work folder
//   <installation>/.coldanchor-update/stage-<stamp>/     what was downloaded, under its own path
//   <installation>/.coldanchor-update/backup-<stamp>/    what was replaced, under its own path
//
// All of it is on the installation's volume, so that every move is a rename. The stamp is the time
// of one attempt, so nothing of an earlier attempt is ever used again. Touches no disk; any thread.
#pragma once

#include <filesystem>
#include <string>

namespace ca::install {

struct WorkFolders {
    std::filesystem::path work;
    std::filesystem::path stage;
    std::filesystem::path backup;
};

// The folders of the attempt that began at `stamp`: milliseconds since 1970, in decimal digits.
WorkFolders workFolders(const std::filesystem::path& installDir, const std::string& stamp);

// The folders of the attempt that staged the file `staged`. False unless it is below a stage folder
// of this installation, by its name: both paths are full ones without "." and "..".
bool findWorkFolders(const std::filesystem::path& installDir, const std::filesystem::path& staged,
                     WorkFolders& folders);

} // namespace ca::install
