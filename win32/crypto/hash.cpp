#include "crypto/algorithm.h"
#include "crypto/openssl.h"

namespace {

using namespace ca::win32;

// A handle isn't asked for its kind, only for null: every piece of every file comes through here.
struct Hash {
    OpenSslPointer<EVP_MD_CTX, ::EVP_MD_CTX_free> context{::EVP_MD_CTX_new()};
    bool finished = false;
};

NTSTATUS statusOf(int result) {
    return result == 1 ? statusSuccess : statusUnsuccessful;
}

} // namespace

NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, PUCHAR object,
                          ULONG objectSize, PUCHAR secret, ULONG secretSize, ULONG flags) {
    const NTSTATUS checked = checkAlgorithm(algorithm, Algorithm::sha256);
    if (checked != statusSuccess) {
        return checked;
    }
    if (hash == nullptr || secret != nullptr || secretSize != 0 || flags != 0) {
        return statusInvalidParameter;
    }
    // Without memory of the caller's Windows takes its own, as this layer always does.
    if (object == nullptr && objectSize != 0) {
        return statusInvalidParameter;
    }
    if (object != nullptr && objectSize < hashObjectLength) {
        return statusBufferTooSmall;
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
    return statusOf(::EVP_DigestUpdate(running->context.get(), input, size));
}

NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, PUCHAR output, ULONG size, ULONG flags) {
    auto* running = static_cast<Hash*>(hash);
    if (running == nullptr) {
        return statusInvalidHandle;
    }
    if (running->finished || output == nullptr || size != sha256Size || flags != 0) {
        return statusInvalidParameter;
    }
    // CNG starts over only with hashes that were made for it by a flag.
    running->finished = true;
    return statusOf(::EVP_DigestFinal_ex(running->context.get(), output, nullptr));
}

NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash) {
    if (hash == nullptr) {
        return statusInvalidHandle;
    }
    delete static_cast<Hash*>(hash);
    return statusSuccess;
}
