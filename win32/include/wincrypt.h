// The decoding of PEM texts, for hosts that are not Windows.
#pragma once

#include <windows.h>

inline constexpr DWORD CRYPT_STRING_BASE64HEADER = 0;

// Decodes the Base64 between a "-----BEGIN ...-----" line and the next "-----END ...-----" line. The labels aren't
// looked at, and needn't agree; text before the first line and behind the second is skipped; blanks and line ends of
// any kind inside are skipped. `length` is the number of characters, or 0 for a zero-terminated text. With `binary`
// null
// `*size` becomes the size needed, otherwise the size written. `skip` and `usedFormat` must be null, `format` must be
// CRYPT_STRING_BASE64HEADER (else ERROR_INVALID_PARAMETER). A missing marker line or Base64 that isn't whole is
// ERROR_INVALID_DATA, a buffer too small ERROR_MORE_DATA.
BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD format, BYTE* binary, DWORD* size, DWORD* skip,
                          DWORD* usedFormat);
