// What hash, key and transfer share of OpenSSL: how it is started, its algorithms,
// and CNG's status numbers.
#pragma once

#include <bcrypt.h>
#include <openssl/evp.h>

namespace ca::win32 {

// Status numbers (ntstatus.h).
inline constexpr NTSTATUS statusSuccess = 0;
inline constexpr NTSTATUS statusUnsuccessful = static_cast<NTSTATUS>(0xC0000001U);
inline constexpr NTSTATUS statusInvalidHandle = static_cast<NTSTATUS>(0xC0000008U);
inline constexpr NTSTATUS statusInvalidParameter = static_cast<NTSTATUS>(0xC000000DU);
inline constexpr NTSTATUS statusNoMemory = static_cast<NTSTATUS>(0xC0000017U);
inline constexpr NTSTATUS statusBufferTooSmall = static_cast<NTSTATUS>(0xC0000023U);
inline constexpr NTSTATUS statusNotSupported = static_cast<NTSTATUS>(0xC00000BBU);
inline constexpr NTSTATUS statusNotFound = static_cast<NTSTATUS>(0xC0000225U);
inline constexpr NTSTATUS statusInvalidSignature = static_cast<NTSTATUS>(0xC000A000U);

// Makes OpenSSL ready, without its exit handler: the launcher's main thread may leave the process
// while the job's thread is inside OpenSSL or libcurl, and what that thread uses must then stay.
// Call before any other use of the two. Cheap to repeat.
void startOpenSsl();

// SHA-256, fetched once per process and never freed. Null if OpenSSL has none.
const EVP_MD* sha256();

// The two algorithms are objects of the process, not of a caller: opening one allocates nothing.
enum class Algorithm { sha256, rsa };
bool isAlgorithm(BCRYPT_ALG_HANDLE handle, Algorithm algorithm);

} // namespace ca::win32
