#include "install/paths.h"

#include "install/folders.h"

#include <type_traits>
#include <vector>
#include <windows.h>

namespace ca::install {

namespace fs = std::filesystem;

namespace {

template <typename Native>
std::wstring wideFromNative(const Native& native) {
    if constexpr (std::is_same_v<Native, std::wstring>) {
        return native;
    } else {
        return wideFromUtf8(native);
    }
}

std::string utf8FromWide(const std::wstring& wide) {
    const int length = static_cast<int>(wide.size());
    const auto convert = [&](char* text, int size) {
        return ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text, size, nullptr, nullptr);
    };
    std::string text(static_cast<std::size_t>(wide.empty() ? 0 : convert(nullptr, 0)), '\0');
    if (!text.empty()) {
        convert(text.data(), static_cast<int>(text.size()));
    }
    return text;
}

template <typename Native>
std::string utf8FromNative(const Native& native) {
    if constexpr (std::is_same_v<Native, std::wstring>) {
        return utf8FromWide(native);
    } else {
        return native;
    }
}

template <typename Native>
Native nativeFromWide(const std::wstring& wide) {
    if constexpr (std::is_same_v<Native, std::wstring>) {
        return wide;
    } else {
        return utf8FromWide(wide);
    }
}

// Whether the path has none of these attributes; `judge` tells of a link by the
// status of where it leads.
template <typename Judge>
bool hasKind(const fs::path& path, DWORD unwanted, Judge judge) {
    const DWORD attributes = ::GetFileAttributesW(systemPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & unwanted) == 0;
    }
    std::error_code ignored;
    return judge(fs::status(path, ignored));
}

} // namespace

fs::path executableDir() {
    // The longest path that Windows knows has 32,767 characters; a result of the buffer's size
    // means that it was cut.
    std::vector<wchar_t> buffer(32768);
    const DWORD length =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 || length >= buffer.size()) {
        std::error_code ignored;
        return fs::current_path(ignored);
    }
    return pathFromWide(std::wstring(buffer.data(), length)).parent_path();
}

fs::path pathFromUtf8(std::string_view text) {
    return fs::path(std::u8string(text.begin(), text.end()));
}

std::string utf8FromPath(const fs::path& path) {
    return utf8FromNative(path.native());
}

std::wstring wideFromPath(const fs::path& path) {
    return wideFromNative(path.native());
}

std::wstring systemPath(const fs::path& path) {
    constexpr std::size_t longest = 239; // Windows wants room for a short name below a folder
    std::wstring wide = wideFromPath(path);
    return wide.size() <= longest ? wide
                                  : withoutLimit(wideFromPath(fs::path(path).make_preferred()));
}

fs::path pathFromWide(const std::wstring& wide) {
    return nativeFromWide<fs::path::string_type>(wide);
}

std::wstring wideFromUtf8(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0'); // no character takes more units than bytes
    wide.resize(static_cast<std::size_t>(::MultiByteToWideChar(
        CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

bool pathExists(const fs::path& path) {
    return hasKind(path, 0, [](const fs::file_status& status) { return fs::exists(status); });
}

bool isFile(const fs::path& path) {
    return hasKind(path, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE,
                   [](const fs::file_status& status) { return fs::is_regular_file(status); });
}

fs::path iconFile(const fs::path& installDir) {
    return installDir / "assets" / "launcher" / "cold_anchor_launcher.png";
}

fs::path versionMarkerFile(const fs::path& installDir) {
    return installDir / "data" / "game_version";
}

fs::path updateServerFile(const fs::path& installDir) {
    return installDir / "data" / "update_server.txt";
}

fs::path publicKeyFile(const fs::path& installDir) {
    return installDir / fs::path(publicKeyPath).make_preferred();
}

} // namespace ca::install
