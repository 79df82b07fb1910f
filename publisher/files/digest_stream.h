// SHA-256 of bytes that come in pieces, at the speed of the processor's own instructions.
#pragma once

#include <cstddef>
#include <memory>
#include <openssl/evp.h>
#include <string>

namespace ca::publisher {

// Belongs to one thread. Throws Failure when OpenSSL refuses.
class DigestStream {
public:
    DigestStream();

    void add(const void* data, std::size_t size);
    // 64 lower-case hexadecimal digits, as manifests carry them. The stream begins anew.
    std::string finish();

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&::EVP_MD_CTX_free)> context_{::EVP_MD_CTX_new(),
                                                                       &::EVP_MD_CTX_free};
};

// Two lower-case digits a byte.
std::string hexText(const unsigned char* bytes, std::size_t count);

} // namespace ca::publisher
