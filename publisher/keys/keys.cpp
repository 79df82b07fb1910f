#include "publisher/keys/keys.h"

#include "publisher/files/descriptor.h"
#include "publisher/files/digest.h"
#include "publisher/text/failure.h"
#include "system/hex.h"
#include "update/public_key.h"

#include <algorithm>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>
#include <vector>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

// What a guess at a stolen file's passphrase costs; the figure that OWASP gives for
// PBKDF2 with SHA-256 (2023).
constexpr int derivationRounds = 600'000;

template <auto Function>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        Function(object);
    }
};
using Memory = std::unique_ptr<BIO, Releaser<::BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Releaser<::EVP_PKEY_free>>;
using PlainKey = std::unique_ptr<PKCS8_PRIV_KEY_INFO, Releaser<::PKCS8_PRIV_KEY_INFO_free>>;
using EncryptedKey = std::unique_ptr<X509_SIG, Releaser<::X509_SIG_free>>;

void require(bool good, const char* what) {
    if (!good) {
        throw Failure(what);
    }
}

// What `write` puts into memory.
template <typename Writer>
std::string textOf(Writer write) {
    const Memory memory(::BIO_new(::BIO_s_mem()));
    require(memory && write(memory.get()) == 1, "OpenSSL can't write the key");
    char* data = nullptr;
    const long size = ::BIO_get_mem_data(memory.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

std::string publicPem(EVP_PKEY* key) {
    return textOf([key](BIO* out) { return ::PEM_write_bio_PUBKEY(out, key); });
}

std::string privatePem(EVP_PKEY* key, const std::optional<std::string>& passphrase) {
    const PlainKey plain(::EVP_PKEY2PKCS8(key));
    require(plain != nullptr, "OpenSSL can't write the key");
    if (!passphrase) {
        return textOf(
            [&](BIO* out) { return ::PEM_write_bio_PKCS8_PRIV_KEY_INFO(out, plain.get()); });
    }
    const EncryptedKey encrypted(::PKCS8_encrypt(-1, ::EVP_aes_256_cbc(), passphrase->data(),
                                                 static_cast<int>(passphrase->size()), nullptr, 0,
                                                 derivationRounds, plain.get()));
    require(encrypted != nullptr, "OpenSSL can't encrypt the key");
    return textOf([&](BIO* out) { return ::PEM_write_bio_PKCS8(out, encrypted.get()); });
}

// What the callback below works with. OpenSSL is C: nothing may be thrown through it.
struct Question {
    const fs::path& file;
    const PassphraseSource& source;
    bool asked = false;
    std::exception_ptr failure;
};

int passphraseFor(char* buffer, int size, int, void* context) {
    auto& question = *static_cast<Question*>(context);
    question.asked = true;
    try {
        const std::string passphrase = question.source(question.file);
        if (passphrase.size() > static_cast<std::size_t>(size)) {
            throw Failure("the passphrase of " + question.file.string() +
                          " is longer than 1024 bytes");
        }
        std::copy(passphrase.begin(), passphrase.end(), buffer);
        return static_cast<int>(passphrase.size());
    } catch (...) {
        question.failure = std::current_exception();
        return -1;
    }
}

} // namespace

void makeKeyPair(const fs::path& folder, int bits, const std::optional<std::string>& passphrase) {
    require(bits == 2048 || bits == 3072 || bits == 4096, "a key has 2048, 3072 or 4096 bits");
    const fs::path privateFile = folder / privateKeyName;
    const fs::path publicFile = folder / publicKeyName;
    for (const fs::path& file : {privateFile, publicFile}) {
        if (fs::exists(fs::symlink_status(file))) {
            throw Failure(file.string() +
                          " is there already, and a key is never replaced: name another folder, "
                          "or move the old pair away if no launcher relies on it");
        }
    }
    const Key key(EVP_RSA_gen(static_cast<unsigned>(bits)));
    require(key != nullptr, "OpenSSL can't make an RSA key");
    fs::create_directories(folder);
    writeNewFile(privateFile, privatePem(key.get(), passphrase), 0600);
    try {
        writeNewFile(publicFile, publicPem(key.get()), 0644);
    } catch (const Failure&) {
        std::error_code ignored; // half a pair would stand in the way of the next try
        fs::remove(privateFile, ignored);
        throw;
    }
    flushDisk(folder);
}

std::string fingerprintOf(const fs::path& publicKeyFile) {
    const std::string text = readWhole(publicKeyFile);
    std::vector<unsigned char> blob;
    // Its own digest would make a fingerprint that no launcher could ever match.
    if (text.find("PRIVATE KEY") != std::string::npos) {
        throw Failure(publicKeyFile.string() + " is a private key: name the file " + publicKeyName +
                      " beside it");
    }
    if (!update::readPublicKey(text, blob)) {
        throw Failure(publicKeyFile.string() +
                      " holds no public key that the launcher can read (PEM, PUBLIC KEY)");
    }
    Digest digest;
    digest.add(text.data(), text.size());
    return digest.text();
}

PrivateKey::PrivateKey(const fs::path& file, const PassphraseSource& passphrase) {
    const std::string text = readWhole(file);
    const Memory memory(::BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    Question question{file, passphrase, false, nullptr};
    key_.reset(memory ? ::PEM_read_bio_PrivateKey(memory.get(), nullptr, passphraseFor, &question)
                      : nullptr);
    // What failed is told below; the queue would be found by the next call.
    ::ERR_clear_error();
    if (question.failure) {
        std::rethrow_exception(question.failure);
    }
    if (!key_ && question.asked) {
        throw Failure("the passphrase isn't that of " + file.string());
    }
    if (!key_ || ::EVP_PKEY_is_a(key_.get(), "RSA") != 1) {
        throw Failure(file.string() +
                      " holds no RSA private key: name the file that \"keys new\" has made");
    }
}

std::string PrivateKey::sign(std::string_view text) const {
    const std::unique_ptr<EVP_MD_CTX, Releaser<::EVP_MD_CTX_free>> context(::EVP_MD_CTX_new());
    const char* const refusal = "OpenSSL can't sign with this key";
    require(context != nullptr, refusal);
    require(::EVP_DigestSignInit(context.get(), nullptr, ::EVP_sha256(), nullptr, key_.get()) == 1,
            refusal);
    std::vector<unsigned char> signature(static_cast<std::size_t>(::EVP_PKEY_get_size(key_.get())));
    std::size_t length = signature.size();
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    require(::EVP_DigestSign(context.get(), signature.data(), &length, bytes, text.size()) == 1,
            refusal);
    signature.resize(length);
    return system::hexText(signature);
}

std::string PrivateKey::publicText() const {
    return publicPem(key_.get());
}

} // namespace ca::publisher
