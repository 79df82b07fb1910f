#include "text/ignore_case.h"

#include <algorithm>

namespace ca::win32 {

namespace {

// The C library's own goes by the locale; no protocol does.
template <class Character>
Character lowered(Character character) {
    const bool upper = character >= 'A' && character <= 'Z';
    return upper ? static_cast<Character>(character - 'A' + 'a') : character;
}

template <class Character>
bool areEqual(std::basic_string_view<Character> a, std::basic_string_view<Character> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](Character x, Character y) { return lowered(x) == lowered(y); });
}

} // namespace

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return areEqual(a, b);
}

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b) {
    return areEqual(a, b);
}

} // namespace ca::win32
