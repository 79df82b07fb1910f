// Command lines as Windows programs read them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ca::win32 {

// The arguments in `line` by the rules of the C runtime on Windows: blanks and tabs part them,
// except between double quotes; of backslashes before a quote every two are one, an odd one makes
// the quote a character; two quotes between quotes are one. With `programFirst` the first argument
// is a program's name, in which a backslash is nothing but itself.
std::vector<std::string> splitCommandLine(std::string_view line, bool programFirst);

// `argument` so that splitCommandLine gives it back: between quotes if it is empty or
// holds blanks or quotes.
std::string quoteArgument(std::string_view argument);

} // namespace ca::win32
