#include "publisher/rules/name_rules.h"

#include "install/paths.h"
#include "install/work_folders.h"
#include "publisher/text/failure.h"
#include "system/text.h"
#include "update/channel.h"
#include "update/manifest_path.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <locale.h>
#include <vector>

namespace ca::publisher {

namespace {

std::string_view firstOf(std::string_view text, char separator) {
    return text.substr(0, text.find(separator));
}

// Windows gives these names to devices in every folder, whatever follows a dot.
bool isDeviceName(std::string_view component) {
    std::string name(firstOf(component, '.'));
    // Windows drops spaces between the name and the dot.
    name.erase(name.find_last_not_of(' ') + 1);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    for (const char* device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"}) {
        if (name == device) {
            return true;
        }
    }
    if (!name.starts_with("COM") && !name.starts_with("LPT")) {
        return false;
    }
    const std::string_view number = std::string_view(name).substr(3);
    const bool isDigit = number.size() == 1 && number[0] >= '0' && number[0] <= '9';
    // raised digits count too
    return isDigit || number == "\u00B9" || number == "\u00B2" || number == "\u00B3";
}

// Windows may give a longer name such a second one, and then both mean one file: SAVEGA~1.
bool looksLikeShortName(std::string_view component) {
    const std::size_t tilde = component.find('~');
    const std::string_view name = firstOf(component, '.');
    return tilde != std::string_view::npos && tilde > 0 && tilde + 1 < name.size() &&
           name.size() <= 8 &&
           name.substr(tilde + 1).find_first_not_of("0123456789") == std::string_view::npos;
}

std::string characterRefusal(std::string_view path) {
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20) {
            return "has a control character in its name: rename it";
        }
        if (std::string_view("\"<>:|*\\").find(c) != std::string_view::npos) {
            return std::string("has '") + c + "' in its name, which Windows forbids: rename it";
        }
        if (std::string_view("?#%").find(c) != std::string_view::npos) {
            return std::string("has '") + c +
                   "' in its name, which a download address would swallow: rename it";
        }
    }
    return {};
}

std::string componentRefusal(std::string_view component) {
    if (component.ends_with('.') || component.ends_with(' ')) {
        return "has a name that ends in a dot or a blank, which Windows would cut off: rename it";
    }
    if (isDeviceName(component)) {
        return "has a name that Windows keeps for a device: rename it";
    }
    if (looksLikeShortName(component)) {
        return "has a name that Windows may take for the short form of another one: rename it";
    }
    return {};
}

bool isSameOrBelow(const std::wstring& path, const std::wstring& place) {
    return path == place || path.starts_with(place + L'/');
}

bool contains(const std::vector<std::wstring>& places, const std::wstring& place) {
    return std::find(places.begin(), places.end(), place) != places.end();
}

// Each caller keeps the result, since a tree may have a hundred thousand files.
std::vector<std::wstring> foldedPlaces(const std::vector<std::filesystem::path>& places) {
    std::vector<std::wstring> result;
    result.reserve(places.size());
    for (const std::filesystem::path& place : places) {
        result.push_back(foldedPath(place.generic_string()));
    }
    return result;
}

// Folders of the player and of the launcher. Launchers compare their names exactly, but Windows
// finds the same folder under any spelling.
std::string folderRefusal(const std::wstring& folded) {
    static const std::wstring work = foldedPath(install::workFolderName);
    static const std::vector<std::wstring> kept =
        foldedPlaces({update::protectedFolders.begin(), update::protectedFolders.end()});
    const std::wstring top = folded.substr(0, folded.find(L'/'));
    if (top == work || top.starts_with(L".COLDANCHOR-WRITE-TEST-")) {
        return "lies where the launcher works: take it out of the tree";
    }
    if (contains(kept, top)) {
        return "lies where the player's own files do: take it out of the tree, or name the folder "
               "otherwise";
    }
    if (folded == L"DATA") {
        return "stands where the folder data must be: rename it";
    }
    return {};
}

// Files that make an installation what it is.
std::string fileRefusal(const std::wstring& folded) {
    const std::filesystem::path here;
    static const std::wstring key = foldedPath(update::protectedFile);
    static const std::wstring marker =
        foldedPath(install::versionMarkerFile(here).generic_string());
    static const std::vector<std::wstring> installed =
        foldedPlaces({install::updateServerFile(here), install::gameFileName,
                      install::launcherFileName, install::helperFileName});
    if (isSameOrBelow(folded, key)) {
        return "is the key that launchers trust, which no release replaces: take it out of the "
               "tree";
    }
    if (isSameOrBelow(folded, marker)) {
        return "is the version marker, which the launcher writes itself: take it out of the tree";
    }
    const auto isBelow = [&](const std::wstring& file) { return folded.starts_with(file + L'/'); };
    if (std::any_of(installed.begin(), installed.end(), isBelow)) {
        return "lies below the name of a file that installations have: rename the folder";
    }
    return {};
}

// Names that mean something wherever they are.
std::string lastNameRefusal(std::string_view path, const std::wstring& folded) {
    const std::wstring last = folded.substr(folded.rfind(L'/') + 1);
    if (last == L"UPDATE_PRIVATE_KEY.PEM") {
        return "has the name of a private key, which nobody else may have: take it out of the tree";
    }
    // Launchers take every file of this name for the next launcher.
    static const std::wstring launcher = foldedPath(install::launcherFileName);
    if (last == launcher && path != install::launcherFileName) {
        return "has the launcher's name, which only the launcher at the top of the tree may have, "
               "in this spelling: "
               "rename it";
    }
    return {};
}

std::string lengthRefusal(std::string_view path) {
    if (path.size() <= update::longestManifestPath) {
        return {};
    }
    return "has a path of " + std::to_string(path.size()) + " bytes, and launchers take " +
           std::to_string(update::longestManifestPath) + ": shorten its names";
}

} // namespace

std::string refusalOf(std::string_view path) {
    if (!system::isUtf8(path)) {
        return "has a name that isn't UTF-8: rename it";
    }
    std::string refusal = characterRefusal(path);
    for (std::string_view rest = path; refusal.empty() && !rest.empty();) {
        const std::string_view component = firstOf(rest, '/');
        refusal = componentRefusal(component);
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
    }
    const std::wstring folded = foldedPath(path);
    if (refusal.empty()) {
        refusal = folderRefusal(folded);
    }
    if (refusal.empty()) {
        refusal = fileRefusal(folded);
    }
    if (refusal.empty()) {
        refusal = lastNameRefusal(path, folded);
    }
    if (refusal.empty()) {
        refusal = lengthRefusal(path);
    }
    // The launcher's own rule is the last word, whatever the texts above leave out.
    if (refusal.empty() && !update::isSafeManifestPath(path)) {
        refusal = "has a path that launchers refuse: rename it";
    }
    return refusal;
}

std::wstring foldedPath(std::string_view path) {
    // The locale that has every letter and is part of the C library itself.
    static const locale_t letters = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (letters == nullptr) {
        throw Failure("this system lacks the locale C.UTF-8: install the package libc-bin");
    }
    std::wstring wide = system::wideFromUtf8(path);
    std::transform(wide.begin(), wide.end(), wide.begin(), [](wchar_t c) {
        return static_cast<wchar_t>(::towupper_l(static_cast<wint_t>(c), letters));
    });
    return wide;
}

std::size_t longestInstalledPath(std::string_view path) {
    // Nowhere is its path longer than where it is kept while it is replaced.
    static const std::size_t kept = std::string_view(R"(C:\Program Files\Cold Anchor\)").size() +
                                    std::string_view(install::workFolderName).size() + 1 +
                                    install::backupFolderName(L"1700000000000").size() + 1;
    std::size_t length = kept;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        length += (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return length;
}

} // namespace ca::publisher
