#include "files/file_attributes.h"
#include "files/path.h"
#include "handle.h"
#include "text/utf8.h"

#include <cerrno>
#include <cwchar>
#include <dirent.h>

namespace {

using namespace ca::win32;

// A folder's entries, read one at a time.
class Search : public Object {
public:
    // Takes over `folder`; `prefix` is its path with a "/" behind it.
    Search(DIR* folder, std::string prefix) : folder_(folder), prefix_(std::move(prefix)) {}
    ~Search() override { ::closedir(folder_); }

    // False at the end of the folder.
    bool next(WIN32_FIND_DATAW& entry) {
        while (const dirent* found = ::readdir(folder_)) {
            if (describe(found->d_name, entry)) {
                return true;
            }
        }
        return false;
    }

private:
    // False for an entry that the caller isn't told of: the folder and the one above, a name that
    // no launcher's file has, and a file that has gone since its name was read.
    bool describe(const std::string& name, WIN32_FIND_DATAW& entry) const {
        const std::optional<std::wstring> wide = toWide(name);
        if (name == "." || name == ".." || !wide || wide->size() >= MAX_PATH) {
            return false;
        }
        struct stat status {};
        if (::lstat((prefix_ + name).c_str(), &status) != 0) {
            return false;
        }
        entry.dwFileAttributes = attributesOf(status, prefix_ + name);
        std::wmemcpy(entry.cFileName, wide->c_str(), wide->size() + 1);
        return true;
    }

    DIR* const folder_;
    const std::string prefix_;
};

} // namespace

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
    // Windows lists "." and ".." too, so there a folder is never empty.
    if (!search->next(*entry)) {
        fail(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return handleOf(std::move(search));
}

BOOL FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW entry) {
    auto* opened = objectOf<Search>(search);
    if (opened == nullptr) {
        return FALSE;
    }
    return opened->next(*entry) ? TRUE : fail(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE search) {
    const auto* opened = objectOf<Search>(search);
    if (opened == nullptr) {
        return FALSE;
    }
    delete opened;
    return TRUE;
}
