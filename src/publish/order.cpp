#include "publish/order.h"

#include "install/version_marker.h"
#include "publish/channel_folder.h"
#include "publish/name_rules.h"
#include "update/version.h"

#include <algorithm>
#include <sys/stat.h>

namespace ca::publish {

namespace fs = std::filesystem;

namespace {

// bytes; the launcher shows the installation's own notes instead
constexpr std::size_t shortestShownNotes = 80;

bool isWithin(const fs::path& inner, const fs::path& outer) {
    const fs::path relative =
        fs::weakly_canonical(inner).lexically_relative(fs::weakly_canonical(outer));
    return !relative.empty() && *relative.begin() != "..";
}

} // namespace

std::string versionRefusal(std::string_view version) {
    const std::string quoted = "\"" + shown(version) + "\"";
    const std::size_t end = std::min(version.find_first_not_of("0123456789."), version.size());
    const std::string_view numbers = version.substr(0, end);
    const std::string_view suffix = version.substr(end);
    if (numbers.empty() || numbers.front() == '.' || numbers.back() == '.' ||
        numbers.find("..") != numbers.npos) {
        return quoted + " isn't made of numbers with dots between them, such as 1.4.2";
    }
    if (!suffix.empty() && (suffix.size() == 1 || (suffix[0] != '-' && suffix[0] != '+'))) {
        return quoted + " has something behind its numbers that doesn't begin with '-' or '+'";
    }
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '.' || c == '-' || c == '+';
    };
    if (version.size() > 64 || !std::all_of(suffix.begin(), suffix.end(), isPlain)) {
        return quoted + " is longer than 64 characters or holds others than letters, digits, '.', "
                        "'-' and '+'";
    }
    for (std::string_view rest = numbers; !rest.empty();) {
        const std::string_view number = rest.substr(0, rest.find('.'));
        if (number.size() > 9) {
            return quoted + " has a number of more than nine digits, which launchers can't compare";
        }
        rest.remove_prefix(std::min(number.size() + 1, rest.size()));
    }
    return {};
}

std::vector<std::string> refusalsOf(const ReleaseOrder& order) {
    std::vector<std::string> problems;
    if (!isChannelName(order.channel)) {
        problems.push_back("the channel \"" + shown(order.channel) +
                           "\" has no usable name: take letters, digits, '-', '_' and '.'");
    }
    if (const std::string refusal = versionRefusal(order.version); !refusal.empty()) {
        problems.push_back("--version " + refusal);
    }
    const std::string& minimum = order.minimumOnlineVersion;
    if (const std::string refusal = versionRefusal(minimum); !minimum.empty() && !refusal.empty()) {
        problems.push_back("--minimum-online-version " + refusal);
    } else if (update::compareVersions(minimum, order.version) > 0) {
        problems.push_back("--minimum-online-version " + minimum +
                           " is newer than the release itself");
    }
    if (!isUtf8(order.notes)) {
        problems.push_back("the notes aren't UTF-8: save them as that");
    }
    if (fs::is_directory(order.tree) && isWithin(order.root, order.tree)) {
        problems.push_back(
            "the channel root " + order.root.string() +
            " lies in the tree, and would be released with it: choose another place");
    }
    for (const fs::path& place : {order.tree, order.root}) {
        if (fs::is_directory(place) && isWithin(order.privateKey, place)) {
            problems.push_back("the private key " + order.privateKey.string() + " lies in " +
                               place.string() + ", which everybody gets to see: move it elsewhere");
        }
    }
    return problems;
}

std::vector<std::string> warningsAbout(const ReleaseOrder& order) {
    std::vector<std::string> warnings;
    struct stat status {};
    if (::stat(order.privateKey.c_str(), &status) == 0 && (status.st_mode & 077) != 0) {
        warnings.push_back(order.privateKey.string() + " can be read by other users: chmod 600 it");
    }
    if (update::compareVersions(order.version, install::builtInVersion) < 0) {
        warnings.push_back("version " + order.version + " is older than " +
                           std::string(install::builtInVersion) +
                           ", which launchers assume where an installation has no "
                           "data/game_version: those won't update");
    }
    if (!order.notes.empty() && order.notes.size() < shortestShownNotes) {
        warnings.push_back(
            "the notes have fewer than 80 bytes: launchers show their own notes file instead");
    }
    const auto isHidden = [](unsigned char c) {
        return c >= 0x7F || (c < 0x20 && (c < 9 || c > 13));
    };
    if (std::any_of(order.notes.begin(), order.notes.end(), isHidden)) {
        warnings.push_back(
            "the notes hold characters beyond ASCII's printable ones: launchers leave them out");
    }
    return warnings;
}

} // namespace ca::publish
