#include "publisher/files/digest.h"

#include "publisher/text/failure.h"

namespace ca::publisher {

namespace {

void require(bool good) {
    if (!good) {
        throw Failure("OpenSSL refuses to compute SHA-256 digests");
    }
}

} // namespace

Digest::Digest() {
    require(static_cast<bool>(hash_));
}

void Digest::add(const void* data, std::size_t size) {
    require(hash_.add(data, size));
}

std::string Digest::text() {
    update::Sha256Digest digest{};
    require(hash_.finish(digest));
    return update::sha256Hex(digest);
}

} // namespace ca::publisher
