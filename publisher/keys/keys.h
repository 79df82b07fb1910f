// The key pair of an update channel. Its private half signs manifests; its public half is a file of
// every installation, and the digest of that file, the fingerprint, is compiled into the launcher.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <openssl/evp.h>
#include <optional>
#include <string>
#include <string_view>

namespace ca::publisher {

inline constexpr const char* privateKeyName = "update_private_key.pem";
// as an installation's folder "data" has it
inline constexpr const char* publicKeyName = "update_public_key.pem";

// Returns the passphrase of a key file; asked only if the key is encrypted.
using PassphraseSource = std::function<std::string(const std::filesystem::path& keyFile)>;

// Makes a new pair in `folder`, made if missing: the private key as PKCS#8, mode 0600, encrypted
// with AES-256 under the passphrase (PBKDF2, 600,000 rounds) unless there is none, and the public
// key as SubjectPublicKeyInfo, both PEM. `bits` is 2048, 3072 or 4096. Replaces nothing: throws
// Failure if either file is there. Takes up to some seconds.
void makeKeyPair(const std::filesystem::path& folder, int bits,
                 const std::optional<std::string>& passphrase);

// The text that a launcher's build pins: SHA-256 of the file's bytes, 64 lower-case hexadecimal
// digits. Throws Failure if the launcher couldn't read a public key from it.
std::string fingerprintOf(const std::filesystem::path& publicKeyFile);

// An RSA key that signs.
class PrivateKey {
public:
    // Throws Failure if the file holds no RSA key or the passphrase is wrong.
    PrivateKey(const std::filesystem::path& file, const PassphraseSource& passphrase);

    // RSA PKCS#1 v1.5 over SHA-256 of `text`, as lower-case hexadecimal digits. The same text
    // has the same signature.
    std::string sign(std::string_view text) const;
    // The public half as makeKeyPair writes it.
    std::string publicText() const;

private:
    std::unique_ptr<EVP_PKEY, decltype(&::EVP_PKEY_free)> key_{nullptr, &::EVP_PKEY_free};
};

} // namespace ca::publisher
