#include "files/path.h"
#include "last_error.h"
#include "text/text_result.h"
#include "text/utf8.h"

#include <filesystem>

using namespace ca::win32;

DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* fileName) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return 0;
    }
    // By the text alone: a path made canonical by the host would have to exist.
    std::error_code failed;
    const std::filesystem::path full = std::filesystem::absolute(*name, failed).lexically_normal();
    const std::optional<std::wstring> wide = failed ? std::nullopt : toWide(full.native());
    if (!wide || fileName != nullptr) {
        return static_cast<DWORD>(fail(ERROR_INVALID_PARAMETER));
    }
    return returnText(*wide, buffer, size);
}
