// A path on its way to the system.
#pragma once

#include "system/path.h"

#include <filesystem>
#include <string>

namespace ca::system {

// A path as the system's calls take it, whatever its length and form. The functions of this folder
// take one as an argument, and any path becomes one by itself, so that no caller chooses a form or
// forgets to. The update helper, which has its paths from a command line, gives wide texts: the
// standard library's paths would make it three times as large. Pure; any thread.
class SystemPath {
public:
    SystemPath(const std::filesystem::path& path) : SystemPath(wideFromPath(path)) {}
    SystemPath(const std::wstring& path);

    const std::wstring& text() const { return text_; }
    const wchar_t* c_str() const { return text_.c_str(); }

private:
    std::wstring text_;
};

} // namespace ca::system
