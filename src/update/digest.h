// SHA-256 of bytes and of files. Nothing is kept between calls; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>
#include <windows.h>

#include <bcrypt.h>

namespace ca::update {

using Sha256Digest = std::array<unsigned char, 32>;

// Characters of a digest's text: two hexadecimal digits a byte.
inline constexpr std::size_t sha256TextLength = 2 * sizeof(Sha256Digest);

// One running SHA-256 of the system's cryptography, over bytes that come in pieces. Owns its
// handles; not copyable; belongs to one thread. After a false result it is of no more use.
class Sha256 {
public:
    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    // False when the system's cryptography has refused to begin; nothing else may be called then.
    explicit operator bool() const { return hash_ != nullptr; }

    bool add(const void* data, std::size_t size);
    // The last call: a further digest needs another object.
    bool finish(Sha256Digest& digest);

private:
    BCRYPT_ALG_HANDLE provider_ = nullptr;
    BCRYPT_HASH_HANDLE hash_ = nullptr;
    std::vector<unsigned char> object_;
};

// False when the system's cryptography refuses.
bool sha256Bytes(const void* data, std::size_t size, Sha256Digest& digest);

// 64 lower-case hexadecimal digits.
std::string sha256Hex(const Sha256Digest& digest);

// The digest of the file's bytes as sha256Hex writes it; empty on any failure, which equals no
// manifest's digest. Streams through one buffer of 64 KiB, so memory doesn't grow with the
// file. Blocks on the disk.
std::string sha256File(const std::filesystem::path& path);

} // namespace ca::update
