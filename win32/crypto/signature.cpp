#include "crypto/algorithm.h"
#include "crypto/openssl.h"

#include <cwchar>
#include <openssl/err.h>
#include <openssl/rsa.h>

namespace {

using namespace ca::win32;

// Ready to verify PKCS#1 v1.5 signatures of SHA-256 digests; null on failure.
KeyContext verifierOf(EVP_PKEY* key) {
    KeyContext context(::EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr));
    if (!context || ::EVP_PKEY_verify_init(context.get()) != 1 ||
        ::EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1 ||
        ::EVP_PKEY_CTX_set_signature_md(context.get(), sha256()) != 1) {
        return nullptr;
    }
    return context;
}

} // namespace

NTSTATUS BCryptVerifySignature(BCRYPT_KEY_HANDLE key, LPVOID padding, PUCHAR hash, ULONG hashSize,
                               PUCHAR signature, ULONG signatureSize, ULONG flags) {
    if (key == nullptr) {
        return statusInvalidHandle;
    }
    // As on Windows the flag alone tells the type of this structure.
    const auto* scheme = static_cast<const BCRYPT_PKCS1_PADDING_INFO*>(padding);
    if (flags != BCRYPT_PAD_PKCS1 || scheme == nullptr || scheme->pszAlgId == nullptr ||
        hash == nullptr || signature == nullptr || hashSize != sha256Size) {
        return statusInvalidParameter;
    }
    if (std::wcscmp(scheme->pszAlgId, BCRYPT_SHA256_ALGORITHM) != 0) {
        return statusNotSupported;
    }
    const KeyContext context = verifierOf(static_cast<EVP_PKEY*>(key));
    if (!context) {
        return statusUnsuccessful;
    }
    const int result = ::EVP_PKEY_verify(context.get(), signature, signatureSize, hash, hashSize);
    // What a wrong signature leaves in OpenSSL's queue, a TLS connection of this thread would find.
    ::ERR_clear_error();
    return result == 1 ? statusSuccess : statusInvalidSignature;
}
