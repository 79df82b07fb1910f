#include "update/digest.h"

#include "system/files.h"
#include "system/hex.h"

#include <algorithm>
#include <limits>

namespace ca::update {

Sha256::Sha256() {
    DWORD objectSize = 0;
    ULONG resultSize = 0;
    if (::BCryptOpenAlgorithmProvider(&provider_, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0) {
        provider_ = nullptr;
        return;
    }
    if (::BCryptGetProperty(provider_, BCRYPT_OBJECT_LENGTH, reinterpret_cast<PUCHAR>(&objectSize),
                            sizeof objectSize, &resultSize, 0) != 0) {
        return;
    }
    object_.resize(objectSize);
    if (::BCryptCreateHash(provider_, &hash_, object_.data(), objectSize, nullptr, 0, 0) != 0) {
        hash_ = nullptr;
    }
}

Sha256::~Sha256() {
    if (hash_) {
        ::BCryptDestroyHash(hash_);
    }
    if (provider_) {
        ::BCryptCloseAlgorithmProvider(provider_, 0);
    }
}

bool Sha256::add(const void* data, std::size_t size) {
    // CNG's declaration lacks the const that its behaviour has.
    auto* rest = static_cast<unsigned char*>(const_cast<void*>(data));
    while (size != 0) {
        constexpr std::size_t longest = std::numeric_limits<ULONG>::max();
        const ULONG piece = static_cast<ULONG>(std::min(size, longest));
        if (::BCryptHashData(hash_, rest, piece, 0) != 0) {
            return false;
        }
        rest += piece;
        size -= piece;
    }
    return true;
}

bool Sha256::finish(Sha256Digest& digest) {
    return ::BCryptFinishHash(hash_, digest.data(), static_cast<ULONG>(digest.size()), 0) == 0;
}

bool sha256Bytes(const void* data, std::size_t size, Sha256Digest& digest) {
    Sha256 hash;
    return hash && hash.add(data, size) && hash.finish(digest);
}

std::string sha256Hex(const Sha256Digest& digest) {
    return system::hexText(digest);
}

std::string sha256File(const std::filesystem::path& path) {
    const system::FileHandle file = system::FileHandle::openForReading(path);
    if (!file) {
        return {};
    }
    Sha256 hash;
    if (!hash) {
        return {};
    }
    std::array<unsigned char, 65536> buffer;
    // A read error ends the file early; the digest of what was read then differs from the
    // manifest's.
    std::size_t count = 0;
    while (file.read(buffer.data(), buffer.size(), count) && count != 0) {
        if (!hash.add(buffer.data(), count)) {
            return {};
        }
    }
    Sha256Digest digest;
    return hash.finish(digest) ? sha256Hex(digest) : std::string();
}

} // namespace ca::update
