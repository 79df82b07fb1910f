// The helper's steps on the disk. Each operation of the system that changes something is tried
// again for up to 30 seconds when its failure is one that passes: a scanner or an indexer that has
// just opened the file. A step blocks for that long at the most for each of its operations; one
// thread. Paths are full ones.
#pragma once

#include <filesystem>

namespace ca::helper {

// A non-empty file that the system recognises as a 64-bit program.
bool isProgram(const std::filesystem::path& file);

// Makes the old launcher available under a second name, so that replacing the first can't lose it.
// By a hard link, or by a copy where the volume knows no links. Makes the folder of `copy`, which
// may not be a link, and replaces an older file there.
bool keepAside(const std::filesystem::path& target, const std::filesystem::path& copy);

// Brings the file's bytes to the disk, so that a power cut after a rename can't leave a name
// without them.
bool flushToDisk(const std::filesystem::path& file);

// Renames `from` over `to`, on one volume: the name `to` means the old file or the new one at
// every moment.
bool moveOver(const std::filesystem::path& from, const std::filesystem::path& to);

// Starts a program of the installation, in its folder, without arguments.
bool start(const std::filesystem::path& program);

} // namespace ca::helper
