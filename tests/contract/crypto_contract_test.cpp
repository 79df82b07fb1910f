#include "contract.h"

#include <bcrypt.h>
#include <wincrypt.h>

using namespace ca::test;

// That digests and signatures are the right ones is the engine's test, on either system;
// here is which key files are refused.

TEST(Key, IsRefusedWhereCngRefusesIt) {
    BCRYPT_ALG_HANDLE provider = nullptr;
    ASSERT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_RSA_ALGORITHM, nullptr, 0), 0);
    // Whether a key imports whose header names so many bits.
    const auto imports = [&](ULONG bits, const std::string& exponent, const std::string& modulus,
                             ULONG magic = BCRYPT_RSAPUBLIC_MAGIC) {
        const ULONG header[] = {magic,          bits, static_cast<ULONG>(exponent.size()),
                                (bits + 7) / 8, 0,    0};
        std::string blob(reinterpret_cast<const char*>(header), sizeof(header));
        blob += exponent + modulus;
        BCRYPT_KEY_HANDLE key = nullptr;
        return ::BCryptImportKeyPair(provider, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key,
                                     reinterpret_cast<PUCHAR>(blob.data()),
                                     static_cast<ULONG>(blob.size()), 0) == 0 &&
               ::BCryptDestroyKey(key) == 0;
    };
    const auto odd = [](std::size_t bytes) { return std::string(bytes, '\xC3'); };
    const std::string e("\1\0\1", 3), n = odd(128);
    expectSteps({
        {"1024 bits", imports(1024, e, n), true},
        {"512 bits", imports(512, e, odd(64)), true},
        {"16384 bits", imports(16384, e, odd(2048)), true},
        {"another kind of blob", imports(1024, e, n, 7), false},
        {"bytes behind", imports(1024, e, n + n), false},
        {"a byte short", imports(1024, e, odd(127)), false},
        {"no exponent", imports(1024, "", n), false},
        {"exponent 0", imports(1024, std::string(1, '\0'), n), false},
        // Wine 8 imports these too, and then verifies nothing by them.
        {"504 bits", imports(504, e, odd(63)), onWindows},
        {"16392 bits", imports(16392, e, odd(2049)), onWindows},
        {"a long exponent", imports(1024, std::string(9, '\1'), n), onWindows},
        {"exponent 2", imports(1024, "\2", n), onWindows},
        {"exponent 1", imports(1024, "\1", n), onWindows},
        {"an even modulus", imports(1024, e, odd(127) + "\2"), onWindows},
        {"closed", ::BCryptCloseAlgorithmProvider(provider, 0) == 0, true},
    });
}

TEST(Pem, IsDecodedBetweenItsMarkers) {
    const auto framed = [](const std::string& text) {
        return "-----BEGIN PUBLIC KEY-----\n" + text + "\n-----END PUBLIC KEY-----\n";
    };
    using Row = std::pair<std::string, std::string>;
    for (const auto& [text, result] : {Row(framed("QUJD\nREVG"), "ABCDEF"),
                                       {framed("QU JD\t\r"), "ABC"},
                                       {"before\n-----BEGIN A-----QUJD-----END B-----after", "ABC"},
                                       {framed("QUJD") + framed("REVG"), "ABC"},
                                       {framed("QUI"), "AB"},
                                       {framed("QQ==REVG"), "A"},
                                       {framed("QU*D"), ""},
                                       {framed("QU\xE9+"), ""},
                                       {framed(""), ""},
                                       {framed("QUJD").substr(1), ""},
                                       {framed("QUJD").substr(0, 40), ""},
                                       {"-----begin A-----\nQUJD\n-----end A-----", ""}}) {
        BYTE bytes[64];
        for (BYTE* buffer : {static_cast<BYTE*>(nullptr), bytes}) { // the size is told first
            DWORD size = 64;
            const BOOL done =
                ::CryptStringToBinaryA(text.data(), static_cast<DWORD>(text.size()),
                                       CRYPT_STRING_BASE64HEADER, buffer, &size, nullptr, nullptr);
            if (!done) {
                EXPECT_EQ(::GetLastError(), DWORD{ERROR_INVALID_DATA}) << text;
            }
            EXPECT_EQ(done ? size : 0, result.size()) << text;
        }
        EXPECT_EQ(std::string(bytes, bytes + result.size()), result) << text;
    }
}
