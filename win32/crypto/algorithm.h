// What CNG's algorithm handles stand for.
#pragma once

#include "crypto/status.h"

namespace ca::win32 {

// The two algorithms are objects of the process, not of a caller: opening one allocates nothing.
enum class Algorithm { sha256, rsa };

// statusSuccess if the handle is that algorithm's, statusNotSupported if it is another one's, and
// statusInvalidHandle if it is none's.
NTSTATUS checkAlgorithm(BCRYPT_ALG_HANDLE handle, Algorithm wanted);

inline constexpr ULONG sha256Size = 32; // bytes of a digest

// Bytes that BCryptCreateHash wants to be handed. Nothing is stored there; the number is of the
// order that Windows asks for.
inline constexpr ULONG hashObjectLength = 256;

} // namespace ca::win32
