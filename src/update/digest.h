// SHA-256 of bytes and of files. Nothing is kept between calls; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace ca::update {

using Sha256Digest = std::array<unsigned char, 32>;

// False when the system's cryptography refuses.
bool sha256Bytes(const void* data, std::size_t size, Sha256Digest& digest);

// 64 lower-case hexadecimal digits.
std::string sha256Hex(const Sha256Digest& digest);

// The digest of the file's bytes as sha256Hex writes it; empty on any failure, which equals no
// manifest's digest. Streams through one buffer of 64 KiB, so memory doesn't grow with the
// file. Blocks on the disk.
std::string sha256File(const std::filesystem::path& path);

} // namespace ca::update
