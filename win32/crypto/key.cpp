#include "crypto/algorithm.h"
#include "crypto/openssl.h"

#include <cstring>
#include <cwchar>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>
#include <span>

namespace {

using namespace ca::win32;

// What CNG itself takes. Exponents above 64 bits are refused since Windows 10 version 1903.
constexpr ULONG minimumBits = 512;
constexpr ULONG maximumBits = 16384;
constexpr int maximumExponentBits = 64;

using Number = OpenSslPointer<BIGNUM, ::BN_free>;
using Key = OpenSslPointer<EVP_PKEY, ::EVP_PKEY_free>;
using Builder = OpenSslPointer<OSSL_PARAM_BLD, ::OSSL_PARAM_BLD_free>;
using Parameters = OpenSslPointer<OSSL_PARAM, ::OSSL_PARAM_free>;

struct PublicNumbers {
    Number exponent;
    Number modulus;
};

Number numberOf(std::span<const UCHAR> bytes) {
    return Number(::BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

bool lengthsAddUp(const BCRYPT_RSAKEY_BLOB& header, std::size_t size) {
    // Sums in 64 bits: the header may hold any numbers.
    const std::uint64_t modulusBits = std::uint64_t{header.cbModulus} * 8;
    return header.BitLength <= modulusBits && header.BitLength + 8ULL > modulusBits &&
           sizeof(header) + std::uint64_t{header.cbPublicExp} + header.cbModulus == size;
}

bool isPublicKey(const BCRYPT_RSAKEY_BLOB& header) {
    return header.Magic == BCRYPT_RSAPUBLIC_MAGIC && header.cbPrime1 == 0 && header.cbPrime2 == 0;
}

// An even modulus has no Montgomery form, an even exponent no inverse, and with the exponent 1
// everybody can sign.
bool canVerify(const PublicNumbers& numbers) {
    const BIGNUM* exponent = numbers.exponent.get();
    const BIGNUM* modulus = numbers.modulus.get();
    // The header may promise more bits than the number has.
    return ::BN_num_bits(modulus) >= static_cast<int>(minimumBits) && ::BN_is_odd(modulus) == 1 &&
           ::BN_is_odd(exponent) == 1 && ::BN_is_one(exponent) == 0 &&
           ::BN_num_bits(exponent) <= maximumExponentBits && ::BN_cmp(exponent, modulus) < 0;
}

bool readBlob(std::span<const UCHAR> blob, PublicNumbers& numbers) {
    BCRYPT_RSAKEY_BLOB header{};
    if (blob.size() < sizeof(header)) {
        return false;
    }
    std::memcpy(&header, blob.data(), sizeof(header));
    if (!isPublicKey(header) || header.BitLength < minimumBits || header.BitLength > maximumBits ||
        !lengthsAddUp(header, blob.size())) {
        return false;
    }
    numbers.exponent = numberOf(blob.subspan(sizeof(header), header.cbPublicExp));
    numbers.modulus = numberOf(blob.last(header.cbModulus));
    return numbers.exponent && numbers.modulus && canVerify(numbers);
}

Parameters parametersOf(const PublicNumbers& numbers) {
    const Builder builder(::OSSL_PARAM_BLD_new());
    if (!builder) {
        return nullptr;
    }
    const auto push = [&builder](const char* name, const Number& number) {
        return ::OSSL_PARAM_BLD_push_BN(builder.get(), name, number.get()) == 1;
    };
    if (!push(OSSL_PKEY_PARAM_RSA_N, numbers.modulus) ||
        !push(OSSL_PKEY_PARAM_RSA_E, numbers.exponent)) {
        return nullptr;
    }
    return Parameters(::OSSL_PARAM_BLD_to_param(builder.get()));
}

Key makeKey(const PublicNumbers& numbers) {
    const Parameters parameters = parametersOf(numbers);
    const KeyContext context(::EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
    if (!parameters || !context || ::EVP_PKEY_fromdata_init(context.get()) != 1) {
        return nullptr;
    }
    EVP_PKEY* key = nullptr;
    const int made =
        ::EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get());
    return made == 1 ? Key(key) : nullptr;
}

} // namespace

NTSTATUS BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, BCRYPT_KEY_HANDLE importKey,
                             LPCWSTR blobType, BCRYPT_KEY_HANDLE* key, PUCHAR input, ULONG size,
                             ULONG flags) {
    const NTSTATUS checked = checkAlgorithm(algorithm, Algorithm::rsa);
    if (checked != statusSuccess) {
        return checked;
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
    // What a refused key leaves in OpenSSL's queue, a TLS connection of this thread would find.
    ::ERR_clear_error();
    if (!made) {
        return statusInvalidParameter;
    }
    *key = made.release();
    return statusSuccess;
}

NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key) {
    if (key == nullptr) {
        return statusInvalidHandle;
    }
    ::EVP_PKEY_free(static_cast<EVP_PKEY*>(key));
    return statusSuccess;
}
