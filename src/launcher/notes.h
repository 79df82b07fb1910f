// The patch notes: which text is shown, and how it becomes rows that the debug font can draw.
#pragma once

#include "job/shared.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ca::launcher {

// The first text that isn't blank of "data/patch_notes.txt", "PATCH_NOTES_v<version>.txt" and
// "PATCH_NOTES.txt", trimmed; else three lines that name the installed version. Bytes as they
// stand. Blocks on the disk; any thread.
std::string loadLocalPatchNotes(const std::filesystem::path& installDir);

// The channel's notes when they have 80 bytes or more, else the local ones. The result refers
// to one of the arguments.
const std::string& chooseNotesText(const job::SharedSnapshot& snapshot,
                                   const std::string& localPatchNotes);

// Wraps `text` by words into at most `maxLines` rows of at most `width` characters; a longer word
// stands alone on its row. Only printable ASCII and line feeds count: a tab is a blank, and every
// other byte vanishes. Blank lines give no row. The work stops with the last row, so it doesn't
// grow with a text that is longer than what shows; only bytes that make no row (blank lines, a word
// without an end) are still looked at one by one.
std::vector<std::string> wrapText(std::string_view text, std::size_t width, std::size_t maxLines);

// Whether a wrapped row is drawn as a heading: one of six words, or a title that
// begins with "Cold Anchor v".
bool isNotesHeading(std::string_view row);

} // namespace ca::launcher
