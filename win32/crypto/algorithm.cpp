#include "crypto/algorithm.h"

#include <cstring>
#include <cwchar>

namespace {

using namespace ca::win32;

// A handle points at one of these.
constinit Algorithm sha256Algorithm = Algorithm::sha256;
constinit Algorithm rsaAlgorithm = Algorithm::rsa;

} // namespace

NTSTATUS ca::win32::checkAlgorithm(BCRYPT_ALG_HANDLE handle, Algorithm wanted) {
    if (handle != &sha256Algorithm && handle != &rsaAlgorithm) {
        return statusInvalidHandle;
    }
    return *static_cast<const Algorithm*>(handle) == wanted ? statusSuccess : statusNotSupported;
}

NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name,
                                     LPCWSTR implementation, ULONG flags) {
    if (algorithm == nullptr || name == nullptr || implementation != nullptr || flags != 0) {
        return statusInvalidParameter;
    }
    if (std::wcscmp(name, BCRYPT_SHA256_ALGORITHM) == 0) {
        *algorithm = &sha256Algorithm;
    } else if (std::wcscmp(name, BCRYPT_RSA_ALGORITHM) == 0) {
        *algorithm = &rsaAlgorithm;
    } else {
        return statusNotFound;
    }
    return statusSuccess;
}

NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm, ULONG flags) {
    if (flags != 0) {
        return statusInvalidParameter;
    }
    // There is nothing to close: the next opening finds the same object.
    const bool isOpen = checkAlgorithm(algorithm, Algorithm::sha256) != statusInvalidHandle;
    return isOpen ? statusSuccess : statusInvalidHandle;
}

NTSTATUS BCryptGetProperty(BCRYPT_HANDLE algorithm, LPCWSTR property, PUCHAR output,
                           ULONG outputSize, ULONG* result, ULONG flags) {
    if (property == nullptr || result == nullptr || flags != 0) {
        return statusInvalidParameter;
    }
    const NTSTATUS checked = checkAlgorithm(algorithm, Algorithm::sha256);
    if (checked != statusSuccess) {
        return checked;
    }
    if (std::wcscmp(property, BCRYPT_OBJECT_LENGTH) != 0) {
        return statusNotSupported;
    }
    // Set in either case: a caller without a buffer asks for the size.
    *result = sizeof(hashObjectLength);
    if (output == nullptr) {
        return statusSuccess;
    }
    if (outputSize < sizeof(hashObjectLength)) {
        return statusBufferTooSmall;
    }
    std::memcpy(output, &hashObjectLength, sizeof(hashObjectLength));
    return statusSuccess;
}
