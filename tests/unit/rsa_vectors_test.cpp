#include "update/digest.h"

#include "published.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <bcrypt.h>

namespace {

// The system's own verdict, below what reads keys out of files: these keys have exponents that no channel would use.
bool verifies(std::string modulus, std::string exponent, const std::string& message, std::string signature) {
    for (std::string* number : {&modulus, &exponent})
        number->erase(0, std::min(number->find_first_not_of('\0'), number->size()));
    const auto length = [](const std::string& text) { return static_cast<ULONG>(text.size()); };
    const BCRYPT_RSAKEY_BLOB header{
        BCRYPT_RSAPUBLIC_MAGIC, 8 * length(modulus), length(exponent), length(modulus), 0, 0};
    std::string blob = std::string(reinterpret_cast<const char*>(&header), sizeof header) + exponent + modulus;
    const auto bytes = [](std::string& text) { return reinterpret_cast<PUCHAR>(text.data()); };

    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_KEY_HANDLE key = nullptr;
    EXPECT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_RSA_ALGORITHM, nullptr, 0), 0);
    EXPECT_EQ(::BCryptImportKeyPair(provider, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, bytes(blob), length(blob), 0), 0);
    ca::update::Sha256Digest digest;
    EXPECT_TRUE(ca::update::sha256Bytes(message.data(), message.size(), digest));
    BCRYPT_PKCS1_PADDING_INFO padding{BCRYPT_SHA256_ALGORITHM};
    const bool valid = ::BCryptVerifySignature(key, &padding, digest.data(), 32, bytes(signature), length(signature),
                                               BCRYPT_PAD_PKCS1) == 0;
    ::BCryptDestroyKey(key);
    ::BCryptCloseAlgorithmProvider(provider, 0);
    return valid;
}

} // namespace

TEST(RsaPrimitive, AgreesWithThePublishedVectors) {
    const auto rows = ca::test::publishedRows("nist_sigver15_sha256.tsv");
    if (rows.empty())
        GTEST_SKIP() << "no published vectors in " << SHARED_VECTORS;
    std::map<std::string, int> counts;
    for (const auto& row : rows) {
        const auto bytes = [&](const char* column) { return ca::test::bytesFromHex(row.at(column)); };
        const std::string verdict = row.at("P_or_F");
        EXPECT_EQ(verifies(bytes("n_hex"), bytes("e_hex"), bytes("msg_hex"), bytes("sig_hex")), verdict == "P")
            << row.at("#file") << ", " << row.at("mod") << " bits, " << row.at("reason");
        ++counts[verdict];
    }
    EXPECT_EQ(counts, (std::map<std::string, int>{{"P", 24}, {"F", 120}}));
}
