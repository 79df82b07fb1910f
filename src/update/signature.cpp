#include "update/signature.h"

#include "install/text_file.h"
#include "system/hex.h"
#include "update/digest.h"
#include "update/public_key.h"

#include <memory>
#include <type_traits>
#include <vector>
#include <windows.h>

#include <bcrypt.h>

namespace ca::update {

namespace {

struct CloseProvider {
    void operator()(BCRYPT_ALG_HANDLE handle) const { ::BCryptCloseAlgorithmProvider(handle, 0); }
};
struct DestroyKey {
    void operator()(BCRYPT_KEY_HANDLE handle) const { ::BCryptDestroyKey(handle); }
};
using Provider = std::unique_ptr<std::remove_pointer_t<BCRYPT_ALG_HANDLE>, CloseProvider>;
using Key = std::unique_ptr<std::remove_pointer_t<BCRYPT_KEY_HANDLE>, DestroyKey>;

bool hasDigest(const std::string& keyText, std::string_view fingerprint) {
    Sha256Digest digest;
    return sha256Bytes(keyText.data(), keyText.size(), digest) && sha256Hex(digest) == fingerprint;
}

// A null token means that the signature is valid.
const char* verifyWithKey(std::vector<unsigned char>& blob, Sha256Digest& digest,
                          std::vector<unsigned char>& signature) {
    BCRYPT_ALG_HANDLE providerHandle = nullptr;
    if (::BCryptOpenAlgorithmProvider(&providerHandle, BCRYPT_RSA_ALGORITHM, nullptr, 0) != 0) {
        return "bcrypt_rsa_open_failed";
    }
    const Provider provider(providerHandle);

    BCRYPT_KEY_HANDLE keyHandle = nullptr;
    if (::BCryptImportKeyPair(provider.get(), nullptr, BCRYPT_RSAPUBLIC_BLOB, &keyHandle,
                              blob.data(), static_cast<ULONG>(blob.size()), 0) != 0) {
        return "bcrypt_key_import_failed";
    }
    const Key key(keyHandle);

    BCRYPT_PKCS1_PADDING_INFO padding{BCRYPT_SHA256_ALGORITHM};
    if (::BCryptVerifySignature(key.get(), &padding, digest.data(),
                                static_cast<ULONG>(digest.size()), signature.data(),
                                static_cast<ULONG>(signature.size()), BCRYPT_PAD_PKCS1) != 0) {
        return "manifest_signature_verify_failed";
    }
    return nullptr;
}

} // namespace

bool decodeSignature(std::string_view text, std::vector<unsigned char>& bytes) {
    return !text.empty() && system::bytesFromHex(text, bytes);
}

bool verifyManifestSignature(std::string_view manifest, std::string_view signature,
                             const std::filesystem::path& keyFile, std::string_view fingerprint,
                             std::string& error) {
    const auto fail = [&error](const char* token) {
        error = token;
        return false;
    };
    // The key's file is judged as a whole before anything in it is read: an attacker's file
    // reaches no decoder.
    const std::string keyText = install::readTextFile(keyFile);
    if (keyText.empty()) {
        return fail("update_public_key_missing");
    }
    if (!hasDigest(keyText, fingerprint)) {
        return fail("update_public_key_fingerprint_mismatch");
    }
    std::vector<unsigned char> signatureBytes;
    if (!decodeSignature(signature, signatureBytes)) {
        return fail("manifest_signature_invalid_hex");
    }
    Sha256Digest digest;
    if (!sha256Bytes(manifest.data(), manifest.size(), digest)) {
        return fail("sha256_failed");
    }
    std::vector<unsigned char> blob;
    if (!readPublicKey(keyText, blob)) {
        return fail("public_key_parse_failed");
    }
    const char* token = verifyWithKey(blob, digest, signatureBytes);
    return token == nullptr || fail(token);
}

} // namespace ca::update
