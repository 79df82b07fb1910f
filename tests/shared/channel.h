// A signed channel in a call, for the demo, the tests and the benchmarks: the publisher's own
// program, without its questions.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::kit {

struct Release {
    std::string version;              // dotted decimal, such as "1.4.2"
    std::string minimumOnlineVersion; // empty: any version may play on
    std::string notes;                // UTF-8; the launcher shows notes of 80 bytes and more
    std::string channel = "stable";
    bool mandatory = false;
};

// All of these throw std::runtime_error with a text for people when a file can't be read
// or written, and so on.

// RSA PKCS#1 v1.5 over SHA-256 of `text`, as lower-case hexadecimal digits without a line end.
std::string signText(std::string_view text, const std::filesystem::path& privateKeyPem);

// Makes <channelRoot>/<channel>/windows, with "files", "manifest.json" and "manifest.sig", the
// release of `tree`, whatever release it was before. Files are hard links where the file system
// allows it, so don't change `tree` afterwards in place.
void makeLive(const std::filesystem::path& tree, const std::filesystem::path& channelRoot,
              const Release& release, const std::filesystem::path& privateKeyPem);

// A new RSA key of 3072 bits: <folder>/update_private_key.pem, unencrypted but readable by its
// owner alone, and <folder>/update_public_key.pem. Replaces what is there. Takes up to a second.
void makeKeyPair(const std::filesystem::path& folder);

} // namespace ca::kit
