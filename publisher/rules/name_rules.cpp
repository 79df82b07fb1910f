#include "publisher/rules/name_rules.h"

#include "install/paths.h"
#include "publisher/text/failure.h"
#include "system/text.h"
#include "update/manifest_path.h"

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <locale.h>

namespace ca::publisher {

namespace {

std::string_view firstOf(std::string_view text, char separator) {
    return text.substr(0, text.find(separator));
}

// Windows gives these names to devices in every folder, whatever follows a dot.
bool isDeviceName(std::string_view component) {
    std::string name(firstOf(component, '.'));
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

// Files and folders of an installation that belong to the player or to the launcher.
std::string ownershipRefusal(std::string_view path) {
    const std::wstring folded = foldedPath(path);
    const std::wstring top = folded.substr(0, folded.find(L'/'));
    if (top == L"SAVE" || top == L"USERDATA") {
        return "lies where the player's own files do: take it out of the tree, or name the folder "
               "otherwise";
    }
    if (top == L".COLDANCHOR-UPDATE" || top.starts_with(L".COLDANCHOR-WRITE-TEST-")) {
        return "lies where the launcher works: take it out of the tree";
    }
    if (folded == L"DATA") {
        return "stands where the folder data must be: rename it";
    }
    if (isSameOrBelow(folded, L"DATA/UPDATE_PUBLIC_KEY.PEM")) {
        return "is the key that launchers trust, which no release replaces: take it out of the "
               "tree";
    }
    if (isSameOrBelow(folded, L"DATA/GAME_VERSION")) {
        return "is the version marker, which the launcher writes itself: take it out of the tree";
    }
    for (const wchar_t* file : {L"DATA/UPDATE_SERVER.TXT", L"COLDANCHOR.EXE",
                                L"COLDANCHORLAUNCHER.EXE", L"COLDANCHORUPDATEHELPER.EXE"}) {
        if (folded != file && isSameOrBelow(folded, file)) {
            return "lies below the name of a file that installations have: rename the folder";
        }
    }
    if (folded.substr(folded.rfind(L'/') + 1) == L"UPDATE_PRIVATE_KEY.PEM") {
        return "has the name of a private key, which nobody else may have: take it out of the tree";
    }
    const std::wstring launcher = foldedPath(install::launcherFileName);
    if (path != install::launcherFileName && folded.substr(folded.rfind(L'/') + 1) == launcher) {
        return "has the launcher's name, which only the launcher at the top of the tree may have, "
               "in this spelling: "
               "rename it";
    }
    return {};
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
    if (refusal.empty()) {
        refusal = ownershipRefusal(path);
    }
    if (refusal.empty() && path.size() > 240) {
        refusal = "has a path of " + std::to_string(path.size()) +
                  " bytes, and launchers take 240: shorten its names";
    }
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
    // The file's place in the stage folder is its longest.
    std::size_t length =
        std::size(R"(C:\Program Files\Cold Anchor\.coldanchor-update\backup-1700000000000\)") - 1;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        length += (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return length;
}

} // namespace ca::publisher
