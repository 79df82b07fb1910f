#include "install/work_folders.h"

#include "install/paths.h"
#include "system/path.h"

#include <iterator>
#include <string_view>

namespace ca::install {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view stagePrefix = "stage-";
constexpr std::string_view backupPrefix = "backup-";

// The stamp in a stage folder's name; empty for any other name.
std::string stampOf(const fs::path& stageName) {
    const std::string name = system::utf8FromPath(stageName);
    if (!name.starts_with(stagePrefix)) {
        return {};
    }
    const std::string stamp = name.substr(stagePrefix.size());
    const bool isNumber = stamp.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? stamp : std::string();
}

} // namespace

WorkFolders workFolders(const fs::path& installDir, const std::string& stamp) {
    WorkFolders folders;
    folders.work = installDir / workFolderName;
    folders.stage = folders.work / (std::string(stagePrefix) + stamp);
    folders.backup = folders.work / (std::string(backupPrefix) + stamp);
    return folders;
}

bool findWorkFolders(const fs::path& installDir, const fs::path& staged, WorkFolders& folders) {
    const fs::path inside = staged.lexically_relative(installDir / workFolderName);
    const bool namesFile = std::distance(inside.begin(), inside.end()) > 1 && inside.has_filename();
    const std::string stamp = namesFile ? stampOf(*inside.begin()) : std::string();
    if (stamp.empty()) {
        return false;
    }
    folders = workFolders(installDir, stamp);
    return true;
}

} // namespace ca::install
