// The helper's steps on the disk. Each operation of the system that changes something is tried
// again while `patience` lasts and its failure is one that passes: a scanner or an indexer that
// has just opened the file. They block for that long at the most; one thread. Paths are full ones.
#pragma once

#include "system/retry.h"

#include <string>

namespace ca::helper {

// A non-empty file that the system recognises as a 64-bit program.
bool isProgram(const std::wstring& file, const system::Patience& patience);

// Makes the old launcher available under a second name, so that replacing the first can't lose it.
// By a hard link, or by a copy where the volume knows no links. Makes `folder`, which may not be a
// link, and replaces an older file there. `name` is the second name below `folder`, with its
// separator in front.
bool keepAside(const std::wstring& target, const std::wstring& folder, const std::wstring& name,
               const system::Patience& patience);

// Brings the file's bytes to the disk, so that a power cut after a rename can't leave a name
// without them.
bool flushToDisk(const std::wstring& file, const system::Patience& patience);

// Renames `from` over `to`, on one volume: the name `to` means the old file or the new one at
// every moment.
bool moveOver(const std::wstring& from, const std::wstring& to, const system::Patience& patience);

// Starts a program of the installation, in its folder, without arguments.
bool start(const std::wstring& program, const system::Patience& patience);

} // namespace ca::helper
