#include "files/path.h"

#include "last_error.h"
#include "text/utf8.h"

#include <cerrno>
#include <sys/stat.h>

namespace ca::win32 {

std::optional<std::string> toPath(LPCWSTR wide) {
    if (wide == nullptr || *wide == L'\0') {
        fail(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    return toUtf8(wide);
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

BOOL failOnPath(int number, const std::string& path) {
    if (number != ENOENT) {
        return fail(errorFromErrno(number));
    }
    // The host says ENOENT for both. Windows' callers learn from the number what they have to make.
    struct stat folder {};
    const bool folderExists = ::stat(folderOf(path).c_str(), &folder) == 0;
    return fail(folderExists ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
}

BOOL resultOnPath(int result, const std::string& path) {
    return result == 0 ? TRUE : failOnPath(errno, path);
}

} // namespace ca::win32
