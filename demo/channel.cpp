#include "channel.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace ca::demo {
namespace {

template <auto Function>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        Function(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using Digest = std::unique_ptr<EVP_MD_CTX, Releaser<EVP_MD_CTX_free>>;
using File = std::unique_ptr<std::FILE, Releaser<std::fclose>>;

void require(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error(what);
}

std::string hex(const unsigned char* bytes, std::size_t length) {
    std::string result;
    for (std::size_t i = 0; i < length; ++i) {
        result += "0123456789abcdef"[bytes[i] >> 4];
        result += "0123456789abcdef"[bytes[i] & 15];
    }
    return result;
}

std::string fileDigest(const fs::path& path) {
    const File file(std::fopen(path.c_str(), "rb"));
    require(file != nullptr, "can't read " + path.string());
    const Digest digest(EVP_MD_CTX_new());
    bool good = digest != nullptr && EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr) == 1;
    std::vector<char> buffer(1 << 18);
    for (std::size_t length = 1; good && length != 0;) {
        length = std::fread(buffer.data(), 1, buffer.size(), file.get());
        good = EVP_DigestUpdate(digest.get(), buffer.data(), length) == 1;
    }
    std::array<unsigned char, 32> result{};
    good = good && std::ferror(file.get()) == 0 && EVP_DigestFinal_ex(digest.get(), result.data(), nullptr) == 1;
    require(good, "can't compute the digest of " + path.string());
    return hex(result.data(), result.size());
}

std::vector<std::string> filesBelow(const fs::path& tree) {
    std::vector<std::string> result;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree))
        if (entry.is_regular_file())
            result.push_back(entry.path().lexically_relative(tree).generic_string());
    std::sort(result.begin(), result.end());
    return result;
}

void writeByRename(const fs::path& target, std::string_view text) {
    fs::path fresh = target;
    fresh += ".new";
    std::ofstream file(fresh, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    require(static_cast<bool>(file), "can't write " + fresh.string());
    fs::rename(fresh, target);
}

void placeFile(const fs::path& source, const fs::path& target) {
    fs::create_directories(target.parent_path());
    std::error_code error;
    if (fs::equivalent(source, target, error)) // renaming one link over the other would leave both names
        return;
    fs::path fresh = target;
    fresh += ".new";
    fs::remove(fresh);
    fs::create_hard_link(source, fresh, error);
    if (error)
        fs::copy_file(source, fresh);
    fs::rename(fresh, target);
}

} // namespace

std::string manifestText(const fs::path& tree, const Release& release) {
    nlohmann::ordered_json manifest = {{"format", 1},
                                       {"product", "cold-anchor"},
                                       {"channel", release.channel},
                                       {"platform", release.platform},
                                       {"version", release.version},
                                       {"protocol_version", 1},
                                       {"minimum_online_version", release.minimumOnlineVersion},
                                       {"mandatory", release.mandatory},
                                       {"release_notes", release.notes},
                                       {"files", nlohmann::ordered_json::array()}};
    for (const std::string& path : filesBelow(tree))
        manifest["files"].push_back({{"path", path},
                                     {"sha256", fileDigest(tree / path)},
                                     {"size", fs::file_size(tree / path)},
                                     {"executable", path.ends_with(".exe")}});
    return manifest.dump(1) + "\n";
}

std::string signText(std::string_view text, const fs::path& privateKeyPem) {
    const File file(std::fopen(privateKeyPem.c_str(), "rb"));
    require(file != nullptr, "can't read the private key " + privateKeyPem.string());
    const Key key(PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr));
    require(key != nullptr && EVP_PKEY_is_a(key.get(), "RSA") == 1, "no RSA key in " + privateKeyPem.string());
    const Digest context(EVP_MD_CTX_new());
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    std::vector<unsigned char> signature(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())));
    std::size_t length = signature.size();
    const bool good = context != nullptr &&
                      EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
                      EVP_DigestSign(context.get(), signature.data(), &length, bytes, text.size()) == 1;
    require(good, "signing failed");
    return hex(signature.data(), length);
}

void publish(const fs::path& tree, const fs::path& channelRoot, const Release& release, const fs::path& privateKeyPem) {
    const std::string manifest = manifestText(tree, release);
    const std::string signature = signText(manifest, privateKeyPem);
    const fs::path folder = channelRoot / release.channel / release.platform;
    for (const std::string& path : filesBelow(tree))
        placeFile(tree / path, folder / "files" / path);
    fs::create_directories(folder);
    writeByRename(folder / "manifest.json", manifest);
    writeByRename(folder / "manifest.sig", signature + "\n");
}

void makeKeyPair(const fs::path& folder) {
    fs::create_directories(folder);
    const Key key(EVP_RSA_gen(3072));
    require(key != nullptr, "no RSA key could be made");
    const fs::path privatePath = folder / "update_private_key.pem";
    const fs::path publicPath = folder / "update_public_key.pem";
    File file(std::fopen(privatePath.c_str(), "wb"));
    require(file != nullptr, "can't write " + privatePath.string());
    fs::permissions(privatePath, fs::perms::owner_read | fs::perms::owner_write); // before there is anything in it
    bool good = PEM_write_PrivateKey(file.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
                std::fflush(file.get()) == 0;
    require(good, "can't write " + privatePath.string());
    file.reset(std::fopen(publicPath.c_str(), "wb"));
    require(file != nullptr, "can't write " + publicPath.string());
    good = PEM_write_PUBKEY(file.get(), key.get()) == 1 && std::fflush(file.get()) == 0;
    require(good, "can't write " + publicPath.string());
}

} // namespace ca::demo
