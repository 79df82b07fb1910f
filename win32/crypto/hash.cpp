#include "crypto/openssl.h"

#include <cstring>
#include <cwchar>
#include <memory>
#include <openssl/crypto.h>

namespace {

using namespace ca::win32;

constexpr ULONG digestSize = 32;
constexpr ULONG objectLength = 256; // nothing is stored there; of the order that Windows asks for

struct Hash {
    std::unique_ptr<EVP_MD_CTX, decltype(&::EVP_MD_CTX_free)> context{::EVP_MD_CTX_new(),
                                                                      &::EVP_MD_CTX_free};
    bool finished = false;
};

constinit Algorithm sha256Algorithm = Algorithm::sha256;
constinit Algorithm rsaAlgorithm = Algorithm::rsa;

} // namespace

namespace ca::win32 {

void startOpenSsl() {
    [[maybe_unused]] static const int started =
        ::OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
}

const EVP_MD* sha256() {
    static const EVP_MD* const digest = [] {
        startOpenSsl();
        return ::EVP_MD_fetch(nullptr, "SHA256", nullptr);
    }();
    return digest;
}

bool isAlgorithm(BCRYPT_ALG_HANDLE handle, Algorithm algorithm) {
    return handle == (algorithm == Algorithm::sha256 ? &sha256Algorithm : &rsaAlgorithm);
}

} // namespace ca::win32

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
    return isAlgorithm(algorithm, Algorithm::sha256) || isAlgorithm(algorithm, Algorithm::rsa)
               ? statusSuccess
               : statusInvalidHandle;
}

NTSTATUS BCryptGetProperty(BCRYPT_HANDLE algorithm, LPCWSTR property, PUCHAR output,
                           ULONG outputSize, ULONG* result, ULONG flags) {
    if (property == nullptr || result == nullptr || flags != 0) {
        return statusInvalidParameter;
    }
    if (!isAlgorithm(algorithm, Algorithm::sha256) ||
        std::wcscmp(property, BCRYPT_OBJECT_LENGTH) != 0) {
        return isAlgorithm(algorithm, Algorithm::sha256) || isAlgorithm(algorithm, Algorithm::rsa)
                   ? statusNotSupported
                   : statusInvalidHandle;
    }
    *result = sizeof(objectLength);
    if (output == nullptr) {
        return statusSuccess;
    }
    if (outputSize < sizeof(objectLength)) {
        return statusBufferTooSmall;
    }
    std::memcpy(output, &objectLength, sizeof(objectLength));
    return statusSuccess;
}

NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, PUCHAR object,
                          ULONG objectSize, PUCHAR secret, ULONG secretSize, ULONG flags) {
    if (!isAlgorithm(algorithm, Algorithm::sha256)) {
        return isAlgorithm(algorithm, Algorithm::rsa) ? statusNotSupported : statusInvalidHandle;
    }
    if (hash == nullptr || secret != nullptr || secretSize != 0 || flags != 0) {
        return statusInvalidParameter;
    }
    if (object == nullptr ? objectSize != 0 : objectSize < objectLength) {
        return object == nullptr ? statusInvalidParameter : statusBufferTooSmall;
    }
    auto made = std::make_unique<Hash>();
    if (!made->context || ::EVP_DigestInit_ex2(made->context.get(), sha256(), nullptr) != 1) {
        return statusNoMemory;
    }
    *hash = made.release();
    return statusSuccess;
}

NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, PUCHAR input, ULONG size, ULONG flags) {
    auto* running = static_cast<Hash*>(hash);
    if (running == nullptr) {
        return statusInvalidHandle;
    }
    if (running->finished || (input == nullptr && size != 0) || flags != 0) {
        return statusInvalidParameter;
    }
    return ::EVP_DigestUpdate(running->context.get(), input, size) == 1 ? statusSuccess
                                                                        : statusUnsuccessful;
}

NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, PUCHAR output, ULONG size, ULONG flags) {
    auto* running = static_cast<Hash*>(hash);
    if (running == nullptr) {
        return statusInvalidHandle;
    }
    if (running->finished || output == nullptr || size != digestSize || flags != 0) {
        return statusInvalidParameter;
    }
    running->finished = true;
    return ::EVP_DigestFinal_ex(running->context.get(), output, nullptr) == 1 ? statusSuccess
                                                                              : statusUnsuccessful;
}

NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash) {
    if (hash == nullptr) {
        return statusInvalidHandle;
    }
    delete static_cast<Hash*>(hash);
    return statusSuccess;
}
