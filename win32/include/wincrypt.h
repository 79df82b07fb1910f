// The decoding of PEM texts, for hosts that are not Windows.
#pragma once

#include <windows.h>

inline constexpr DWORD CRYPT_STRING_BASE64HEADER = 0;

// Decodes the Base64 between a "-----BEGIN ...-----" marker and the next "-----END " one. The
// labels aren't looked at, and needn't agree. Text around the two is skipped, and so are spaces,
// tabs and line ends of any kind between them. The padding may be missing, and nothing behind it
// counts. `length` is the number of characters, or 0 for a zero-terminated text.
//
// With `binary` null `*size` becomes the size needed, otherwise the size written. `skip` and
// `usedFormat` must be null, `format` CRYPT_STRING_BASE64HEADER (else ERROR_INVALID_PARAMETER). A
// missing marker, a character that isn't Base64's and an empty result are ERROR_INVALID_DATA, a
// buffer too small is ERROR_MORE_DATA with the size needed.
BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD format, BYTE* binary, DWORD* size,
                          DWORD* skip, DWORD* usedFormat);
