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

// Links are followed, as far as the paths are there.
bool isWithin(const fs::path& inner, const fs::path& outer) {
    const fs::path relative =
        fs::weakly_canonical(inner).lexically_relative(fs::weakly_canonical(outer));
    return !relative.empty() && *relative.begin() != "..";
}

void judgeVersions(const ReleaseOptions& options, std::vector<std::string>& problems) {
    const std::string refusal = versionRefusal(options.version);
    if (!refusal.empty()) {
        problems.push_back("--version " + refusal);
    }
    const std::string& minimum = options.minimumOnlineVersion;
    const std::string minimumRefusal = minimum.empty() ? "" : versionRefusal(minimum);
    if (!minimumRefusal.empty()) {
        problems.push_back("--minimum-online-version " + minimumRefusal);
    } else if (update::compareVersions(minimum, options.version) > 0) {
        problems.push_back("--minimum-online-version " + minimum +
                           " is newer than the release itself");
    }
}

void judgePlaces(const ReleaseOptions& options, std::vector<std::string>& problems) {
    if (fs::is_directory(options.tree) && isWithin(options.root, options.tree)) {
        problems.push_back(
            "the channel root " + options.root.string() +
            " lies in the tree, and would be released with it: choose another place");
    }
    for (const fs::path& place : {options.tree, options.root}) {
        if (fs::is_directory(place) && isWithin(options.privateKey, place)) {
            problems.push_back("the private key " + options.privateKey.string() + " lies in " +
                               place.string() + ", which everybody gets to see: move it elsewhere");
        }
    }
}

} // namespace

std::vector<std::string> refusalsOf(const ReleaseOptions& options) {
    std::vector<std::string> problems;
    if (!isChannelName(options.channel)) {
        problems.push_back("the channel \"" + shown(options.channel) +
                           "\" has no usable name: take letters, digits, '-', '_' and '.'");
    }
    judgeVersions(options, problems);
    if (!system::isUtf8(options.notes)) {
        problems.push_back("the notes aren't UTF-8: save them as that");
    }
    judgePlaces(options, problems);
    return problems;
}

std::vector<std::string> warningsAbout(const ReleaseOptions& options) {
    std::vector<std::string> warnings;
    struct stat status {};
    if (::stat(options.privateKey.c_str(), &status) == 0 && (status.st_mode & 077) != 0) {
        warnings.push_back(options.privateKey.string() +
                           " can be read by other users: chmod 600 it");
    }
    if (update::compareVersions(options.version, install::builtInVersion) < 0) {
        warnings.push_back("version " + options.version + " is older than " +
                           std::string(install::builtInVersion) +
                           ", which launchers assume where an installation has no "
                           "data/game_version: those won't update");
    }
    if (!options.notes.empty() && options.notes.size() < update::shortestShownNotes) {
        warnings.push_back(
            "the notes have fewer than 80 bytes: launchers show their own notes file instead");
    }
    // Launchers draw printable ASCII and lay out line ends and tabs.
    const auto isHidden = [](unsigned char c) {
        return c >= 0x7F || (c < 0x20 && (c < 9 || c > 13));
    };
    if (std::any_of(options.notes.begin(), options.notes.end(), isHidden)) {
        warnings.push_back(
            "the notes hold characters beyond ASCII's printable ones: launchers leave them out");
    }
    return warnings;
}

} // namespace ca::publisher
