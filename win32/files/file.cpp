#include "files/file.h"

#include "files/status.h"

#include <cerrno>

namespace ca::win32 {

File::File(Descriptor descriptor, std::string removedPath)
    : descriptor_(std::move(descriptor)), removedPath_(std::move(removedPath)) {}

// The name is removed while the file is open. Until then its number can't go to another file, so a
// name that leads to the same number is this file's.
File::~File() {
    if (removedPath_.empty()) {
        return;
    }
    struct stat mine {};
    struct stat named {};
    if (::fstat(descriptor(), &mine) == 0 && ::lstat(removedPath_.c_str(), &named) == 0 &&
        isSameFile(mine, named)) {
        ::unlink(removedPath_.c_str());
    }
}

DWORD errorOfTransfer(int number) {
    // The host calls a descriptor without the right to read or write bad; Windows calls it denied.
    return number == EBADF ? ERROR_ACCESS_DENIED : errorFromErrno(number);
}

} // namespace ca::win32
