#include "launcher/notes.h"

#include "install/text_file.h"
#include "install/version_marker.h"
#include "system/path.h"
#include "update/channel.h"

#include <algorithm>
#include <array>

namespace ca::launcher {

std::string loadLocalPatchNotes(const std::filesystem::path& installDir) {
    const std::string version = install::readInstalledVersion(installDir);
    // The marker's bytes may be anything, and no name may stop the launcher.
    const std::filesystem::path versioned =
        system::pathFromUtf8("PATCH_NOTES_v" + version + ".txt");
    const std::array candidates{installDir / "data" / "patch_notes.txt", installDir / versioned,
                                installDir / "PATCH_NOTES.txt"};
    for (const std::filesystem::path& candidate : candidates) {
        const std::string file = install::readTextFile(candidate);
        const std::string_view text = install::trimText(file);
        if (!text.empty()) {
            return std::string(text);
        }
    }
    return "Cold Anchor " + version +
           "\n- Current build ready.\n- No local patch notes file was found.";
}

const std::string& chooseNotesText(const job::SharedSnapshot& snapshot,
                                   const std::string& localPatchNotes) {
    return snapshot.patchNotes && snapshot.patchNotes->size() >= update::shortestShownNotes
               ? *snapshot.patchNotes
               : localPatchNotes;
}

namespace {

// Builds rows out of words. The row in the making and the word in the making are kept apart,
// because only the word's end tells on which row it goes.
class Wrapper {
public:
    Wrapper(std::size_t width, std::size_t maxLines) : width_(width), maxLines_(maxLines) {}

    bool isFull() const { return rows_.size() >= maxLines_; }

    void addCharacter(char c) { word_ += c; }

    void endWord() {
        if (word_.empty()) {
            return;
        }
        if (!line_.empty() && line_.size() + word_.size() + 1 > width_) {
            endRow();
        }
        if (!line_.empty()) {
            line_ += ' ';
        }
        line_ += word_;
        word_.clear();
    }

    void endParagraph() {
        endWord();
        if (!line_.empty()) {
            endRow();
        }
    }

    std::vector<std::string> takeRows() {
        rows_.resize(std::min(rows_.size(), maxLines_));
        return std::move(rows_);
    }

private:
    void endRow() {
        rows_.push_back(std::move(line_));
        line_.clear();
    }

    std::size_t width_;
    std::size_t maxLines_;
    std::vector<std::string> rows_;
    std::string line_;
    std::string word_;
};

} // namespace

std::vector<std::string> wrapText(std::string_view text, std::size_t width, std::size_t maxLines) {
    Wrapper wrapper(width, maxLines);
    // One pass: filtering the whole text first would cost as much as the text is long, on every
    // frame, where 18 rows show.
    for (const char c : text) {
        if (c == '\n') {
            wrapper.endParagraph();
        } else if (c == ' ' || c == '\t') {
            wrapper.endWord();
        } else if (c > ' ' && c <= '~') {
            wrapper.addCharacter(c);
        }
        if (wrapper.isFull()) {
            return wrapper.takeRows();
        }
    }
    wrapper.endParagraph();
    return wrapper.takeRows();
}

bool isNotesHeading(std::string_view row) {
    constexpr std::array<std::string_view, 6> words{"LAUNCHER", "WEBSITE",  "PACKAGING",
                                                    "ADDED",    "IMPROVED", "FIXED"};
    return row.starts_with("Cold Anchor v") ||
           std::find(words.begin(), words.end(), row) != words.end();
}

} // namespace ca::launcher
