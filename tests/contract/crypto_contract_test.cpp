#include "contract.h"

#include <bcrypt.h>
#include <cstring>
#include <wincrypt.h>

using namespace ca::test;

// That digests and signatures are the right ones is the engine's test, on either system;
// here is what is refused.

TEST(Hash, EndsWithItsWholeDigest) {
    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    UCHAR text[] = "abc", digest[32];
    EXPECT_NE(::BCryptOpenAlgorithmProvider(&provider, L"SHA257", nullptr, 0), 0);
    ASSERT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_SHA256_ALGORITHM, nullptr, 0), 0);
    EXPECT_EQ(::BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, 0), 0);
    EXPECT_TRUE(::BCryptHashData(hash, text, 3, 0) == 0 && ::BCryptHashData(hash, text, 0, 0) == 0);
    EXPECT_TRUE(::BCryptFinishHash(hash, digest, 31, 0) != 0 &&
                ::BCryptFinishHash(hash, digest, 32, 0) == 0);
    EXPECT_TRUE(::BCryptDestroyHash(hash) == 0 && ::BCryptDestroyHash(nullptr) != 0);
    EXPECT_TRUE(::BCryptCloseAlgorithmProvider(provider, 0) == 0 &&
                ::BCryptCloseAlgorithmProvider(nullptr, 0) != 0);
}

TEST(Key, IsRefusedWhereCngRefusesIt) {
    BCRYPT_ALG_HANDLE provider = nullptr;
    ASSERT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_RSA_ALGORITHM, nullptr, 0), 0);
    // Whether a key imports whose exponent is `e` and whose modulus is `n`, of `bits`,
    // in the header's opinion.
    const auto imports = [&](ULONG bits, const std::string& e, const std::string& n,
                             ULONG magic = BCRYPT_RSAPUBLIC_MAGIC) {
        const BCRYPT_RSAKEY_BLOB header{magic,          bits, static_cast<ULONG>(e.size()),
                                        (bits + 7) / 8, 0,    0};
        std::vector<UCHAR> blob(sizeof(header) + e.size() + n.size());
        std::memcpy(blob.data(), &header, sizeof(header));
        std::copy_n((e + n).begin(), e.size() + n.size(), blob.begin() + sizeof(header));
        BCRYPT_KEY_HANDLE key = nullptr;
        const auto size = static_cast<ULONG>(blob.size());
        return ::BCryptImportKeyPair(provider, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, blob.data(),
                                     size, 0) == 0 &&
               ::BCryptDestroyKey(key) == 0;
    };
    const std::string e("\1\0\1", 3);
    const std::string n(128, '\xC3');
    EXPECT_TRUE(imports(1024, e, n) && imports(512, e, std::string(64, '\xC3')) &&
                imports(16384, e, std::string(2048, '\xC3')));
    EXPECT_FALSE(imports(1024, e, n, 7) || imports(1024, e, n + n) ||
                 imports(1024, e, n.substr(1)) || imports(1024, "", n) ||
                 imports(1024, std::string(1, '\0'), n));
    // Wine 8 imports these too, and then verifies nothing by them: sizes and exponents out
    // of bounds, even numbers,
    // a 1.
    for (const bool imported :
         {imports(504, e, n.substr(65)), imports(16392, e, std::string(2049, '\xC3')),
          imports(1024, "\1" + std::string(8, '\1'), n), imports(1024, "\2", n),
          imports(1024, "\1", n), imports(1024, e, n.substr(1) + "\2")}) {
        EXPECT_EQ(imported, onWindows);
    }
    EXPECT_EQ(::BCryptCloseAlgorithmProvider(provider, 0), 0);
}

TEST(Pem, IsDecodedBetweenItsMarkers) {
    using Row = std::pair<std::string, std::string>;
    const std::string begin = "-----BEGIN PUBLIC KEY-----\n";
    const std::string end = "-----END PUBLIC KEY-----\n";
    for (const auto& [text, result] :
         {Row(begin + "QUJD\nREVG\n" + end, "ABCDEF"), Row(begin + "QU JD\t\r\n" + end, "ABC"),
          Row("before\n-----BEGIN A-----QUJD-----END B-----after", "ABC"),
          Row(begin + "QUJD\n" + end + begin + "REVG\n" + end, "ABC"),
          Row(begin + "QUI\n" + end, "AB"), Row(begin + "QQ==REVG\n" + end, "A"),
          Row(begin + "QU*D\n" + end, ""), Row(begin + "QU\xE9+\n" + end, ""), Row(begin + end, ""),
          Row("QUJD\n" + end, ""), Row(begin + "QUJD\n", ""),
          Row("----BEGIN A----\nQUJD\n----END A----\n", ""),
          Row("-----begin A-----\nQUJD\n-----end A-----", "")}) {
        const auto length = static_cast<DWORD>(text.size());
        DWORD size = 64;
        BYTE bytes[64];
        const BOOL sized = ::CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64HEADER,
                                                  nullptr, &size, nullptr, nullptr);
        EXPECT_TRUE(sized ? size == result.size()
                          : result.empty() && ::GetLastError() == ERROR_INVALID_DATA)
            << text;
        size = 64;
        EXPECT_EQ(::CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64HEADER, bytes,
                                         &size, nullptr, nullptr) != 0,
                  !result.empty());
        EXPECT_EQ(std::string(bytes, bytes + (result.empty() ? 0 : size)), result) << text;
    }
}
