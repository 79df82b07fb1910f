// Why a manifest is believed: an RSA signature over its raw bytes, by a key whose file is
// pinned in the executable.
#pragma once

#include "update/key_fingerprint.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ca::update {

// The bytes of a signature, from two hexadecimal digits each, of either case, with nothing
// around them. False if `signature` is anything else or empty; `bytes` then holds
// anything. Pure; any thread.
bool decodeSignature(std::string_view signature, std::vector<unsigned char>& bytes);

// Whether `signature`, spelt so, is the RSA PKCS#1 v1.5 signature with SHA-256 of exactly these
// bytes, by the key in `keyFile`, whose own bytes must have the digest `fingerprint`. False:
// `error` is "update_public_key_missing", "update_public_key_fingerprint_mismatch",
// "manifest_signature_invalid_hex", "sha256_failed", "public_key_parse_failed",
// "bcrypt_rsa_open_failed", "bcrypt_key_import_failed" or "manifest_signature_verify_failed",
// whichever comes first in this order. Keeps no state; any thread.
bool verifyManifestSignature(std::string_view manifest, std::string_view signature,
                             const std::filesystem::path& keyFile, std::string_view fingerprint,
                             std::string& error);

// The same under the key that this executable pins.
inline bool verifyManifestSignature(std::string_view manifest, std::string_view signature,
                                    const std::filesystem::path& keyFile, std::string& error) {
    return verifyManifestSignature(manifest, signature, keyFile, keyFingerprint, error);
}

} // namespace ca::update
