// Where the passphrase of a private key comes from.
#pragma once

#include <filesystem>
#include <string>

namespace ca::publisher {

inline constexpr const char* passphraseVariable = "COLDANCHOR_PASSPHRASE";

// For an existing key: the first line of `file` if one is named, else the environment variable
// above, else a prompt on the terminal that doesn't echo. Throws Failure, and never returns an
// empty text, if there is none of the three.
std::string findPassphrase(const std::filesystem::path& file, const std::filesystem::path& keyFile);

// For a new key: the same, but a prompt asks twice.
std::string choosePassphrase(const std::filesystem::path& file,
                             const std::filesystem::path& keyFile);

} // namespace ca::publisher
