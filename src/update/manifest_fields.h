// Single values of a manifest's text, each found by the first occurrence of its quoted key,
// wherever that stands. The value begins behind the first colon after the key and any
// whitespace. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ca::update {

// `key` is the bare key, without quotes. Decimal digits with one optional minus sign; the
// first other byte ends the number, and 64 bits wrap around. `fallback` when the key is absent
// or no number stands there.
std::int64_t extractManifestInt(std::string_view text, std::string_view key, std::int64_t fallback);

// True exactly when the value begins with the four bytes "true".
bool extractManifestBool(std::string_view text, std::string_view key);

// The content of a quoted value, or empty. A backslash makes n, r and t a control character
// and any other byte itself; there are no Unicode escapes. A value that is never closed runs
// to the end of the text.
std::string extractManifestString(std::string_view text, std::string_view key);

// Where the string that begins at `quote` ends: the place of its closing quote, or the text's
// length. A quote with an odd number of backslashes in front of it doesn't close.
std::size_t endOfManifestString(std::string_view text, std::size_t quote);

} // namespace ca::update
