#include "install/work_folders.h"

namespace ca::install {

namespace {

constexpr std::wstring_view stagePrefix = L"stage-";
constexpr std::wstring_view backupPrefix = L"backup-";

std::wstring stampBehind(std::wstring_view prefix, std::wstring_view name) {
    if (!name.starts_with(prefix)) {
        return {};
    }
    const std::wstring_view stamp = name.substr(prefix.size());
    const bool isNumber = stamp.find_first_not_of(L"0123456789") == std::wstring_view::npos;
    return isNumber ? std::wstring(stamp) : std::wstring();
}

} // namespace

std::wstring stageFolderName(std::wstring_view stamp) {
    return std::wstring(stagePrefix).append(stamp);
}

std::wstring backupFolderName(std::wstring_view stamp) {
    return std::wstring(backupPrefix).append(stamp);
}

std::wstring stampOfStage(std::wstring_view folderName) {
    return stampBehind(stagePrefix, folderName);
}

std::wstring stampOfBackup(std::wstring_view folderName) {
    return stampBehind(backupPrefix, folderName);
}

} // namespace ca::install
