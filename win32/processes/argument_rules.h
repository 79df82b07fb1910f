// Command lines as Windows programs read them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ca::win32 {

// The arguments in `line` by the rules of the C runtime on Windows. Spaces and tabs separate them,
// except between double quotes. Every two backslashes before a quote are one, and an odd one makes
// the quote a character. Two quotes between quotes are one. With `programFirst` the first argument
// is a program's name, in which a backslash is nothing but itself.
std::vector<std::string> splitCommandLine(std::string_view line, bool programFirst);

// `argument` so that splitCommandLine returns it: between quotes if it is empty or holds spaces,
// tabs or quotes.
std::string quoteArgument(std::string_view argument);

} // namespace ca::win32
