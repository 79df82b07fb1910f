#include "crypto/openssl.h"

#include <openssl/crypto.h>

namespace ca::win32 {

void startOpenSsl() {
    [[maybe_unused]] static const int started =
        ::OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
}

const EVP_MD* sha256() {
    // A fetch looks through OpenSSL's providers and takes a lock, too much for each small file.
    static const EVP_MD* const digest = [] {
        startOpenSsl();
        return ::EVP_MD_fetch(nullptr, "SHA256", nullptr);
    }();
    return digest;
}

} // namespace ca::win32
