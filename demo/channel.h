// What a publisher does, in a few calls: describe a folder of files as a release, sign it and lay it out for a web
// server.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::demo {

struct Release {
    std::string version;              // dotted decimal, such as "1.4.2"
    std::string minimumOnlineVersion; // empty: any version may play on
    std::string notes;                // UTF-8; the launcher shows notes of 80 bytes and more
    std::string channel = "stable";
    std::string platform = "windows";
    bool mandatory = false;
};

// All of these throw std::runtime_error with a text for people when a file can't be read or written, and so on.

// The manifest of all regular files below `tree`, in the order of their paths' bytes: the same tree gives the same
// text. Paths are UTF-8 with '/' between the names, digests lower-case, "size" in bytes, "executable" for names in
// ".exe".
std::string manifestText(const std::filesystem::path& tree, const Release& release);

// RSA PKCS#1 v1.5 over SHA-256 of `text`, as lower-case hexadecimal digits without a line end.
std::string signText(std::string_view text, const std::filesystem::path& privateKeyPem);

// Writes <channelRoot>/<channel>/<platform>/ with "files", "manifest.json" and "manifest.sig". Files are hard links
// where the file system allows it, so don't change `tree` afterwards in place. Everything arrives by rename; files of
// an earlier release stay beside the new ones.
void publish(const std::filesystem::path& tree, const std::filesystem::path& channelRoot, const Release& release,
             const std::filesystem::path& privateKeyPem);

// A new RSA key of 3072 bits: <folder>/update_private_key.pem, readable by its owner alone, and
// <folder>/update_public_key.pem, a SubjectPublicKeyInfo. Replaces what is there. Takes up to a second.
void makeKeyPair(const std::filesystem::path& folder);

} // namespace ca::demo
