#include "update/digest.h"

#include "install/file_handle.h"

#include <algorithm>
#include <limits>
#include <vector>
#include <windows.h>

#include <bcrypt.h>

namespace ca::update {

namespace {

// One running SHA-256 of the system's cryptography.
class Sha256 {
public:
    Sha256() {
        DWORD objectSize = 0;
        ULONG resultSize = 0;
        if (::BCryptOpenAlgorithmProvider(&provider_, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0 ||
            ::BCryptGetProperty(provider_, BCRYPT_OBJECT_LENGTH,
                                reinterpret_cast<PUCHAR>(&objectSize), sizeof objectSize,
                                &resultSize, 0) != 0) {
            return;
        }
        object_.resize(objectSize);
        if (::BCryptCreateHash(provider_, &hash_, object_.data(), objectSize, nullptr, 0, 0) != 0) {
            hash_ = nullptr;
        }
    }
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256() {
        if (hash_) {
            ::BCryptDestroyHash(hash_);
        }
        if (provider_) {
            ::BCryptCloseAlgorithmProvider(provider_, 0);
        }
    }

    explicit operator bool() const { return hash_ != nullptr; }

    bool add(const unsigned char* data, std::size_t size) {
        // CNG's declaration lacks the const that its behaviour has.
        for (auto* rest = const_cast<unsigned char*>(data); size != 0;) {
            const ULONG piece =
                static_cast<ULONG>(std::min<std::size_t>(size, std::numeric_limits<ULONG>::max()));
            if (::BCryptHashData(hash_, rest, piece, 0) != 0) {
                return false;
            }
            rest += piece;
            size -= piece;
        }
        return true;
    }

    bool finish(Sha256Digest& digest) {
        return ::BCryptFinishHash(hash_, digest.data(), static_cast<ULONG>(digest.size()), 0) == 0;
    }

private:
    BCRYPT_ALG_HANDLE provider_ = nullptr;
    BCRYPT_HASH_HANDLE hash_ = nullptr;
    std::vector<unsigned char> object_;
};

} // namespace

bool sha256Bytes(const void* data, std::size_t size, Sha256Digest& digest) {
    Sha256 hash;
    return hash && hash.add(static_cast<const unsigned char*>(data), size) && hash.finish(digest);
}

std::string sha256Hex(const Sha256Digest& digest) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text(2 * digest.size(), '0');
    for (std::size_t i = 0; i < digest.size(); ++i) {
        text[2 * i] = digits[digest[i] >> 4];
        text[2 * i + 1] = digits[digest[i] & 15];
    }
    return text;
}

std::string sha256File(const std::filesystem::path& path) {
    const install::FileHandle file = install::FileHandle::openForReading(path);
    if (!file) {
        return {};
    }
    Sha256 hash;
    if (!hash) {
        return {};
    }
    std::array<unsigned char, 65536> buffer;
    DWORD count = 0;
    // A read error ends the file early; the digest of what was read then
    // differs from the manifest's.
    while (
        ::ReadFile(file.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) &&
        count != 0) {
        if (!hash.add(buffer.data(), count)) {
            return {};
        }
    }
    Sha256Digest digest;
    return hash.finish(digest) ? sha256Hex(digest) : std::string();
}

} // namespace ca::update
