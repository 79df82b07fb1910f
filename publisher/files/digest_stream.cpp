#include "publisher/files/digest_stream.h"

#include "publisher/text/failure.h"

#include <array>

namespace ca::publisher {

namespace {

void require(bool good) {
    if (!good) {
        throw Failure("OpenSSL refuses to compute SHA-256 digests");
    }
}

} // namespace

DigestStream::DigestStream() {
    require(context_ && ::EVP_DigestInit_ex2(context_.get(), ::EVP_sha256(), nullptr) == 1);
}

void DigestStream::add(const void* data, std::size_t size) {
    require(::EVP_DigestUpdate(context_.get(), data, size) == 1);
}

std::string DigestStream::finish() {
    std::array<unsigned char, 32> digest{};
    require(::EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr) == 1 &&
            ::EVP_DigestInit_ex2(context_.get(), ::EVP_sha256(), nullptr) == 1);
    return hexText(digest.data(), digest.size());
}

std::string hexText(const unsigned char* bytes, std::size_t count) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        (text += digits[bytes[i] >> 4]) += digits[bytes[i] & 15];
    }
    return text;
}

} // namespace ca::publisher
