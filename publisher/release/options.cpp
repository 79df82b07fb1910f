#include "publisher/release/options.h"

#include "install/version_marker.h"
#include "publisher/rules/channel_name.h"
#include "publisher/rules/version_rules.h"
#include "publisher/text/shown.h"
#include "system/text.h"
#include "update/channel.h"
#include "update/version.h"

#include <algorithm>
#include <sys/stat.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

bool isWithin(const fs::path& inner, const fs::path& outer) {
    const fs::path relative =
        fs::weakly_canonical(inner).lexically_relative(fs::weakly_canonical(outer));
    return !relative.empty() && *relative.begin() != "..";
}

} // namespace

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
    if (!system::isUtf8(order.notes)) {
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
    if (!order.notes.empty() && order.notes.size() < update::shortestShownNotes) {
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

} // namespace ca::publisher
