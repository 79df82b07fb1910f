#include "crypto/openssl.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>
#include <span>

namespace {

using namespace ca::win32;

// What CNG's own RSA provider takes. Exponents above 64 bits are refused since
// Windows 10 version 1903.
constexpr ULONG minimumBits = 512;
constexpr ULONG maximumBits = 16384;
constexpr int maximumExponentBits = 64;
constexpr ULONG digestSize = 32;

template <auto freeFunction>
struct Free {
    template <class T>
    void operator()(T* object) const {
        freeFunction(object);
    }
};
using Number = std::unique_ptr<BIGNUM, Free<::BN_free>>;
using Key = std::unique_ptr<EVP_PKEY, Free<::EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Free<::EVP_PKEY_CTX_free>>;
using Builder = std::unique_ptr<OSSL_PARAM_BLD, Free<::OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Free<::OSSL_PARAM_free>>;

struct PublicNumbers {
    Number exponent;
    Number modulus;
};

Number numberOf(std::span<const UCHAR> bytes) {
    return Number(::BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

bool lengthsAddUp(const BCRYPT_RSAKEY_BLOB& header, std::size_t size) {
    // Sums in 64 bits: the header's numbers are anybody's.
    const std::uint64_t modulusBits = std::uint64_t{header.cbModulus} * 8;
    return header.Magic == BCRYPT_RSAPUBLIC_MAGIC && header.cbPrime1 == 0 && header.cbPrime2 == 0 &&
           header.BitLength >= minimumBits && header.BitLength <= maximumBits &&
           header.BitLength <= modulusBits && header.BitLength + 8ULL > modulusBits &&
           sizeof(header) + std::uint64_t{header.cbPublicExp} + header.cbModulus == size;
}

bool readBlob(std::span<const UCHAR> blob, PublicNumbers& numbers) {
    BCRYPT_RSAKEY_BLOB header{};
    if (blob.size() < sizeof(header)) {
        return false;
    }
    std::memcpy(&header, blob.data(), sizeof(header));
    if (!lengthsAddUp(header, blob.size())) {
        return false;
    }
    numbers.exponent = numberOf(blob.subspan(sizeof(header), header.cbPublicExp));
    numbers.modulus = numberOf(blob.last(header.cbModulus));
    if (!numbers.exponent || !numbers.modulus) {
        return false;
    }
    // An even modulus has no Montgomery form, an even exponent no inverse, and with the
    // exponent 1 everybody can sign.
    const int bits = ::BN_num_bits(numbers.modulus.get());
    return bits >= static_cast<int>(minimumBits) && ::BN_is_odd(numbers.modulus.get()) == 1 &&
           ::BN_is_odd(numbers.exponent.get()) == 1 && ::BN_is_one(numbers.exponent.get()) == 0 &&
           ::BN_num_bits(numbers.exponent.get()) <= maximumExponentBits &&
           ::BN_cmp(numbers.exponent.get(), numbers.modulus.get()) < 0;
}

Key makeKey(const PublicNumbers& numbers) {
    const Builder builder(::OSSL_PARAM_BLD_new());
    if (!builder ||
        ::OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_N, numbers.modulus.get()) !=
            1 ||
        ::OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_E, numbers.exponent.get()) !=
            1) {
        return nullptr;
    }
    const Parameters parameters(::OSSL_PARAM_BLD_to_param(builder.get()));
    const KeyContext context(::EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
    EVP_PKEY* key = nullptr;
    if (!parameters || !context || ::EVP_PKEY_fromdata_init(context.get()) != 1 ||
        ::EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get()) != 1) {
        return nullptr;
    }
    return Key(key);
}

} // namespace

NTSTATUS BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, BCRYPT_KEY_HANDLE importKey,
                             LPCWSTR blobType, BCRYPT_KEY_HANDLE* key, PUCHAR input, ULONG size,
                             ULONG flags) {
    if (!isAlgorithm(algorithm, Algorithm::rsa)) {
        return isAlgorithm(algorithm, Algorithm::sha256) ? statusNotSupported : statusInvalidHandle;
    }
    if (importKey != nullptr || blobType == nullptr || key == nullptr || input == nullptr ||
        flags != 0) {
        return statusInvalidParameter;
    }
    if (std::wcscmp(blobType, BCRYPT_RSAPUBLIC_BLOB) != 0) {
        return statusNotSupported;
    }
    startOpenSsl();
    PublicNumbers numbers;
    if (!readBlob({input, size}, numbers)) {
        return statusInvalidParameter;
    }
    Key made = makeKey(numbers);
    ::ERR_clear_error();
    if (!made) {
        return statusInvalidParameter;
    }
    *key = made.release();
    return statusSuccess;
}

NTSTATUS BCryptVerifySignature(BCRYPT_KEY_HANDLE key, LPVOID padding, PUCHAR hash, ULONG hashSize,
                               PUCHAR signature, ULONG signatureSize, ULONG flags) {
    if (key == nullptr) {
        return statusInvalidHandle;
    }
    const auto* scheme = static_cast<const BCRYPT_PKCS1_PADDING_INFO*>(padding);
    if (flags != BCRYPT_PAD_PKCS1 || scheme == nullptr || scheme->pszAlgId == nullptr ||
        hash == nullptr || signature == nullptr || hashSize != digestSize) {
        return statusInvalidParameter;
    }
    if (std::wcscmp(scheme->pszAlgId, BCRYPT_SHA256_ALGORITHM) != 0) {
        return statusNotSupported;
    }
    const KeyContext context(
        ::EVP_PKEY_CTX_new_from_pkey(nullptr, static_cast<EVP_PKEY*>(key), nullptr));
    if (!context || ::EVP_PKEY_verify_init(context.get()) != 1 ||
        ::EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1 ||
        ::EVP_PKEY_CTX_set_signature_md(context.get(), sha256()) != 1) {
        return statusUnsuccessful;
    }
    const bool valid =
        ::EVP_PKEY_verify(context.get(), signature, signatureSize, hash, hashSize) == 1;
    ::ERR_clear_error();
    return valid ? statusSuccess : statusInvalidSignature;
}

NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key) {
    if (key == nullptr) {
        return statusInvalidHandle;
    }
    ::EVP_PKEY_free(static_cast<EVP_PKEY*>(key));
    return statusSuccess;
}
