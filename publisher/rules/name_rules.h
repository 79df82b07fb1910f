// Which files of a tree no player's machine could install, or would install
// wrongly. Pure; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ca::publisher {

// Why a file of this path (UTF-8, slashes, relative to the tree) can't be part of a release, and
// what to do; empty if it can. Beyond the launcher's own rule: what Windows forbids in names, what
// the channel's URLs would swallow, the player's folders and the launcher's own files in any
// spelling that Windows takes for theirs.
std::string refusalOf(std::string_view path);

// The path as Windows compares it: two that are equal here are one file there. Composed and
// decomposed letters differ.
std::wstring foldedPath(std::string_view path);

// Characters of the longest path that an installation in C:\Program Files\Cold Anchor gives the
// file while it is updated, in UTF-16 units. From 260 on, programs that haven't asked Windows for
// long paths can't open it.
std::size_t longestInstalledPath(std::string_view path);

} // namespace ca::publisher
