// Names that count without the case of their letters, as in URLs and HTTP headers.
#pragma once

#include <string_view>

namespace ca::win32 {

// Whether the texts are equal but for the case of ASCII letters.
bool equalIgnoringCase(std::string_view a, std::string_view b);
bool equalIgnoringCase(std::wstring_view a, std::wstring_view b);

} // namespace ca::win32
