// CNG's status numbers (ntstatus.h).
#pragma once

#include <bcrypt.h>

namespace ca::win32 {

inline constexpr NTSTATUS statusSuccess = 0;
inline constexpr NTSTATUS statusUnsuccessful = static_cast<NTSTATUS>(0xC0000001U);
inline constexpr NTSTATUS statusInvalidHandle = static_cast<NTSTATUS>(0xC0000008U);
inline constexpr NTSTATUS statusInvalidParameter = static_cast<NTSTATUS>(0xC000000DU);
inline constexpr NTSTATUS statusNoMemory = static_cast<NTSTATUS>(0xC0000017U);
inline constexpr NTSTATUS statusBufferTooSmall = static_cast<NTSTATUS>(0xC0000023U);
inline constexpr NTSTATUS statusNotSupported = static_cast<NTSTATUS>(0xC00000BBU);
inline constexpr NTSTATUS statusNotFound = static_cast<NTSTATUS>(0xC0000225U);
inline constexpr NTSTATUS statusInvalidSignature = static_cast<NTSTATUS>(0xC000A000U);

} // namespace ca::win32
