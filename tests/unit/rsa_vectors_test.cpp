#include "update/digest.h"

#include "temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <windows.h>

#include <bcrypt.h>

namespace {

// The system's own verdict, below what reads keys out of files: these keys have exponents that no channel would use.
bool verifies(std::string modulus, std::string exponent, const std::string& message, std::string signature) {
    modulus.erase(0, std::min(modulus.find_first_not_of('\0'), modulus.size()));
    exponent.erase(0, std::min(exponent.find_first_not_of('\0'), exponent.size()));
    const BCRYPT_RSAKEY_BLOB header{BCRYPT_RSAPUBLIC_MAGIC,
                                    static_cast<ULONG>(8 * modulus.size()),
                                    static_cast<ULONG>(exponent.size()),
                                    static_cast<ULONG>(modulus.size()),
                                    0,
                                    0};
    std::string blob(reinterpret_cast<const char*>(&header), sizeof header);
    blob += exponent + modulus;
    const auto bytes = [](std::string& text) { return reinterpret_cast<PUCHAR>(text.data()); };

    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_KEY_HANDLE key = nullptr;
    EXPECT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_RSA_ALGORITHM, nullptr, 0), 0);
    EXPECT_EQ(::BCryptImportKeyPair(provider, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, bytes(blob),
                                    static_cast<ULONG>(blob.size()), 0),
              0);
    ca::update::Sha256Digest digest;
    EXPECT_TRUE(ca::update::sha256Bytes(message.data(), message.size(), digest));
    BCRYPT_PKCS1_PADDING_INFO padding{BCRYPT_SHA256_ALGORITHM};
    const bool valid = ::BCryptVerifySignature(key, &padding, digest.data(), 32, bytes(signature),
                                               static_cast<ULONG>(signature.size()), BCRYPT_PAD_PKCS1) == 0;
    ::BCryptDestroyKey(key);
    ::BCryptCloseAlgorithmProvider(provider, 0);
    return valid;
}

} // namespace

TEST(RsaPrimitive, AgreesWithThePublishedVectors) {
    std::ifstream vectors(std::filesystem::path(SHARED_VECTORS) / "nist_sigver15_sha256.tsv");
    if (!vectors)
        GTEST_SKIP() << "no published vectors in " << SHARED_VECTORS;
    std::map<std::string, int> rows;
    for (std::string line; std::getline(vectors, line);) {
        if (line.starts_with('#'))
            continue;
        std::istringstream row(line);
        std::map<std::string, std::string> column;
        for (const char* name : {"file", "bits", "verdict", "reason", "modulus", "exponent", "message", "signature"})
            std::getline(row, column[name], '\t');
        const auto bytes = [&](const char* name) { return ca::test::bytesFromHex(column[name]); };
        EXPECT_EQ(verifies(bytes("modulus"), bytes("exponent"), bytes("message"), bytes("signature")),
                  column["verdict"] == "P")
            << column["file"] << ", " << column["bits"] << " bits, " << column["reason"];
        ++rows[column["verdict"]];
    }
    EXPECT_EQ(rows["P"], 24);
    EXPECT_EQ(rows["F"], 120);
}
