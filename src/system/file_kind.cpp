#include "system/file_kind.h"

#include "system/system_path.h"

#include <windows.h>

namespace ca::system {

namespace fs = std::filesystem;

namespace {

// Where the attributes of a path without a link on its end have none of `unwanted`, `path` is of
// the wanted kind. Of a link `judge` gets the status of what it leads to.
template <typename Judge>
bool hasKind(const fs::path& path, DWORD unwanted, Judge judge) {
    const DWORD attributes = ::GetFileAttributesW(SystemPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return (attributes & unwanted) == 0;
    }
    std::error_code ignored; // a link that leads nowhere has the status of what isn't there
    return judge(fs::status(path, ignored));
}

} // namespace

bool pathExists(const fs::path& path) {
    return hasKind(path, 0, [](const fs::file_status& status) { return fs::exists(status); });
}

bool isFile(const fs::path& path) {
    constexpr DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
    return hasKind(path, others,
                   [](const fs::file_status& status) { return fs::is_regular_file(status); });
}

} // namespace ca::system
