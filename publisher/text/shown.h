// Texts from elsewhere, such as a channel's or a tree's, made fit for a terminal. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

namespace ca::publisher {

// A text of one line as it can be shown, wherever it comes from: what a terminal would obey, line
// ends among it, is a question mark, and so is every byte beyond ASCII of a text that isn't UTF-8.
std::string shown(std::string_view text);
// The same of every line of a text; each ends with '\n'.
std::string shownLines(std::string_view text);

} // namespace ca::publisher
