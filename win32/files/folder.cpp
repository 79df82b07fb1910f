#include "host.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <dirent.h>
#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace ca::win32;

BOOL answer(int result, const std::string& path) {
    return result == 0 ? TRUE : failOnPath(errno, path);
}

bool isLink(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Of what lstat told about a path.
DWORD attributesOf(const struct stat& status, const std::string& path) {
    if (S_ISLNK(status.st_mode)) {
        return FILE_ATTRIBUTE_REPARSE_POINT | (isFolder(path) ? FILE_ATTRIBUTE_DIRECTORY : 0);
    }
    if (S_ISDIR(status.st_mode)) {
        return FILE_ATTRIBUTE_DIRECTORY;
    }
    return S_ISREG(status.st_mode) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_DEVICE;
}

class Search : public Object {
public:
    Search(DIR* opened, std::string path) : folder(opened), prefix(std::move(path)) {}
    ~Search() override { ::closedir(folder); }

    bool next(WIN32_FIND_DATAW& entry) {
        while (const dirent* found = ::readdir(folder)) {
            const std::string name = found->d_name;
            const std::optional<std::wstring> wide = toWide(name);
            if (name == "." || name == ".." || !wide || wide->size() >= MAX_PATH) {
                continue;
            }
            struct stat status {};
            if (::lstat((prefix + name).c_str(), &status) != 0) {
                continue; // gone meanwhile
            }
            entry.dwFileAttributes = attributesOf(status, prefix + name);
            std::wmemcpy(entry.cFileName, wide->c_str(), wide->size() + 1);
            return true;
        }
        return false;
    }

private:
    DIR* folder;
    std::string prefix;
};

bool copyBytes(int from, int to) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count <= 0) {
            return count == 0;
        }
        for (ssize_t done = 0; done < count;) {
            const ssize_t written =
                ::write(to, buffer.data() + done, static_cast<std::size_t>(count - done));
            if (written < 0) {
                return false;
            }
            done += written;
        }
    }
}

} // namespace

DWORD GetFileAttributesW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    struct stat status {};
    if (!name || ::lstat(name->c_str(), &status) != 0) {
        if (name) {
            failOnPath(errno, *name);
        }
        return INVALID_FILE_ATTRIBUTES;
    }
    return attributesOf(status, *name);
}

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    if (security != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string> name = toPath(path);
    return name ? answer(::mkdir(name->c_str(), 0777), *name) : FALSE;
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    if (isLink(*name)) {
        return isFolder(*name) ? answer(::unlink(name->c_str()), *name) : fail(ERROR_DIRECTORY);
    }
    return ::rmdir(name->c_str()) == 0 ? TRUE
           : errno == ENOTDIR          ? fail(ERROR_DIRECTORY)
                                       : failOnPath(errno, *name);
}

BOOL DeleteFileW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    return isFolder(*name) ? fail(ERROR_ACCESS_DENIED) : answer(::unlink(name->c_str()), *name);
}

BOOL CreateHardLinkW(LPCWSTR link, LPCWSTR existing, LPSECURITY_ATTRIBUTES security) {
    if (security != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string> name = toPath(link);
    const std::optional<std::string> file = toPath(existing);
    return name && file ? answer(::link(file->c_str(), name->c_str()), *file) : FALSE;
}

BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
    const std::optional<std::string> source = toPath(from);
    const std::optional<std::string> target = toPath(to);
    if (!source || !target) {
        return FALSE;
    }
    const int in = ::open(source->c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (in < 0 || ::fstat(in, &status) != 0) {
        return failOnPath(errno, *source);
    }
    const int out =
        ::open(target->c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (failIfExists ? O_EXCL : 0),
               status.st_mode);
    if (out < 0) {
        const int number = errno;
        ::close(in);
        return number == EEXIST ? fail(ERROR_FILE_EXISTS) : failOnPath(number, *target);
    }
    struct stat existing {};
    if (::fstat(out, &existing) == 0 && existing.st_dev == status.st_dev &&
        existing.st_ino == status.st_ino) {
        ::close(in);
        ::close(out);
        return fail(ERROR_SHARING_VIOLATION);
    }
    const bool copied = ::ftruncate(out, 0) == 0 && copyBytes(in, out);
    const int number = errno;
    ::close(in);
    ::close(out);
    if (!copied) {
        ::unlink(target->c_str());
        return fail(errorFromErrno(number));
    }
    return TRUE;
}

DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* fileName) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return 0;
    }
    std::error_code failed;
    const std::filesystem::path full = std::filesystem::absolute(*name, failed).lexically_normal();
    const std::optional<std::wstring> wide = failed ? std::nullopt : toWide(full.native());
    if (!wide || fileName != nullptr) {
        return static_cast<DWORD>(fail(ERROR_INVALID_PARAMETER));
    }
    if (wide->size() >= size) {
        return static_cast<DWORD>(wide->size() + 1);
    }
    std::wmemcpy(buffer, wide->c_str(), wide->size() + 1);
    return static_cast<DWORD>(wide->size());
}

BOOL GetBinaryTypeW(LPCWSTR path, LPDWORD kind) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    const int file = ::open(name->c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return failOnPath(errno, *name);
    }
    Elf64_Ehdr header{};
    const ssize_t count = ::read(file, &header, sizeof header);
    ::close(file);
    if (count != static_cast<ssize_t>(sizeof header) ||
        std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 ||
        (header.e_type != ET_EXEC && header.e_type != ET_DYN)) {
        return fail(ERROR_BAD_EXE_FORMAT);
    }
    *kind = SCS_64BIT_BINARY;
    return TRUE;
}

HANDLE FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW entry) {
    const std::optional<std::string> name = toPath(pattern);
    if (!name || !name->ends_with("/*")) {
        fail(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const std::string prefix = name->substr(0, name->size() - 1);
    DIR* folder = ::opendir(prefix.c_str());
    if (folder == nullptr) {
        failOnPath(errno, prefix);
        return INVALID_HANDLE_VALUE;
    }
    auto search = std::make_unique<Search>(folder, prefix);
    if (!search->next(*entry)) {
        fail(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return static_cast<Object*>(search.release());
}

BOOL FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW entry) {
    auto* opened = dynamic_cast<Search*>(static_cast<Object*>(search));
    if (opened == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    return opened->next(*entry) ? TRUE : fail(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE search) {
    if (dynamic_cast<Search*>(static_cast<Object*>(search)) == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    delete static_cast<Object*>(search);
    return TRUE;
}
