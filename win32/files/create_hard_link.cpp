#include "files/path.h"
#include "last_error.h"

#include <unistd.h>

using namespace ca::win32;

BOOL CreateHardLinkW(LPCWSTR link, LPCWSTR existing, LPSECURITY_ATTRIBUTES security) {
    if (security != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string> name = toPath(link);
    const std::optional<std::string> file = toPath(existing);
    if (!name || !file) {
        return FALSE;
    }
    // The host has the two names the other way round.
    return resultOnPath(::link(file->c_str(), name->c_str()), *file);
}
