#include "contract.h"

#include <bcrypt.h>
#include <cstring>
#include <wincrypt.h>

using namespace ca::test;

namespace {

std::string hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes)
        for (const int digit : {byte >> 4 & 15, byte & 15})
            text += "0123456789abcdef"[digit];
    return text;
}

PUCHAR data(std::string& bytes) {
    return reinterpret_cast<PUCHAR>(bytes.data());
}
ULONG size(const std::string& bytes) {
    return static_cast<ULONG>(bytes.size());
}

std::string sha256(std::vector<std::string> pieces) {
    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    ULONG objectSize = 0;
    ULONG got = 0;
    std::string digest(32, ' ');
    EXPECT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_SHA256_ALGORITHM, nullptr, 0), 0);
    EXPECT_EQ(::BCryptGetProperty(provider, BCRYPT_OBJECT_LENGTH, reinterpret_cast<PUCHAR>(&objectSize), 4, &got, 0),
              0);
    std::string object(objectSize, ' ');
    EXPECT_EQ(::BCryptCreateHash(provider, &hash, data(object), objectSize, nullptr, 0, 0), 0);
    for (std::string& piece : pieces)
        EXPECT_EQ(::BCryptHashData(hash, data(piece), size(piece), 0), 0);
    EXPECT_NE(::BCryptFinishHash(hash, data(digest), 31, 0), 0);
    EXPECT_EQ(::BCryptFinishHash(hash, data(digest), 32, 0), 0);
    EXPECT_TRUE(::BCryptDestroyHash(hash) == 0 && ::BCryptCloseAlgorithmProvider(provider, 0) == 0);
    return digest;
}

// "refused" by the import, "valid", or the verification's status.
std::string verdict(BCRYPT_RSAKEY_BLOB header, const std::string& numbers, std::string signature) {
    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_KEY_HANDLE key = nullptr;
    EXPECT_EQ(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_RSA_ALGORITHM, nullptr, 0), 0);
    std::string blob(sizeof(header), ' ');
    std::memcpy(blob.data(), &header, sizeof(header));
    blob += bytesFromHex(numbers);
    NTSTATUS status = ::BCryptImportKeyPair(provider, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, data(blob), size(blob), 0);
    if (status == 0) {
        BCRYPT_PKCS1_PADDING_INFO padding{BCRYPT_SHA256_ALGORITHM};
        std::string digest = sha256({"signed text"});
        status = ::BCryptVerifySignature(key, &padding, data(digest), 32, data(signature), size(signature),
                                         BCRYPT_PAD_PKCS1);
        EXPECT_EQ(::BCryptDestroyKey(key), 0);
    } else {
        status = 1;
    }
    EXPECT_EQ(::BCryptCloseAlgorithmProvider(provider, 0), 0);
    return status == 0 ? "valid" : status == 1 ? "refused" : std::to_string(static_cast<ULONG>(status));
}

// A key of 1024 bits whose private half is gone, and its signature of "signed text".
const std::string modulus =
    "a329525880857ad6804c92f105919ed3b372ec65db4b09f40f26a09bb891ad0c6de85e585214bf69e529a63f13d58c4d24df0446c246"
    "d8de239df3e16e41a7e7da5404c22359113395952e4f4278ebb0bec076982eb57f685371502551395919b57d71a0510cc29cc633de92"
    "429a7a6f0dfe07975f737bd123abba0389f6414b";
const std::string signatureHex =
    "4fb7f0422f349a9ef41b10b5496ffa6fba4c8d2bb34bbdcdc17ed4dbe9dff809d77eedfa210358032a88d4c2d61304fdf1d452a96435"
    "5846142596393bbde8dd6025053daef95add84cd36e1c7bd9ca157b40b1833334e795133a2f78efe2d8159c3b0986885545d35a0b703"
    "95b42e4f94d96116801fe0b18b169500ad090f26";

} // namespace

TEST(Hash, IsThatOfAllBytesHoweverTheyCame) {
    const std::string abc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    EXPECT_EQ(hex(sha256({})), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hex(sha256({"abc"})), abc);
    EXPECT_EQ(hex(sha256({"a", "", "bc"})), abc);
    BCRYPT_ALG_HANDLE none = nullptr;
    EXPECT_NE(::BCryptOpenAlgorithmProvider(&none, L"SHA257", nullptr, 0), 0);
    EXPECT_TRUE(::BCryptCloseAlgorithmProvider(none, 0) != 0 && ::BCryptDestroyHash(nullptr) != 0);
}

TEST(Key, IsRefusedOrVerifies) {
    const std::string good = bytesFromHex(signatureHex);
    const std::string bad = std::to_string(0xC000A000); // STATUS_INVALID_SIGNATURE
    const std::string n = modulus;
    const auto key = [](ULONG bits, ULONG exponentSize) { // as its header tells
        return BCRYPT_RSAKEY_BLOB{BCRYPT_RSAPUBLIC_MAGIC, bits, exponentSize, (bits + 7) / 8, 0, 0};
    };
    BCRYPT_RSAKEY_BLOB otherMagic = key(1024, 3);
    ++otherMagic.Magic;
    EXPECT_EQ(verdict(key(1024, 3), "010001" + n, good), "valid");
    for (const std::string& other : {good.substr(1), good + "x", "x" + good.substr(1), std::string("x")})
        EXPECT_EQ(verdict(key(1024, 3), "010001" + n, other), bad);
    EXPECT_EQ(verdict(key(1024, 3), "000003" + n, good), bad);
    EXPECT_EQ(verdict(otherMagic, "010001" + n, good), "refused");
    for (const std::string& numbers : {"010001" + n + "00", "0001" + n, "000000" + n})
        EXPECT_EQ(verdict(key(1024, 3), numbers, good), "refused") << numbers;
    EXPECT_EQ(verdict(key(1024, 0), n, good), "refused");
    // Wine 8 imports what CNG has no use for, and then verifies nothing by it.
    const std::string refused = onWindows ? bad : "refused";
    for (const char* exponent : {"010002", "000001"})
        EXPECT_EQ(verdict(key(1024, 3), exponent + n, good), refused) << exponent;
    EXPECT_EQ(verdict(key(1024, 9), "010000000000000001" + n, good), refused) << "an exponent of 65 bits";
    EXPECT_EQ(verdict(key(1024, 3), "010001" + n.substr(1) + "0", good), refused) << "an even modulus";
    EXPECT_EQ(verdict(key(504, 3), "010001" + n.substr(0, 126), good), refused);
    EXPECT_EQ(verdict(key(16392, 3), "010001" + std::string(4098, '7'), good), refused);
}

TEST(Pem, IsDecodedBetweenItsMarkers) {
    using Row = std::pair<std::string, const char*>;
    const std::string begin = "-----BEGIN PUBLIC KEY-----\n";
    const std::string end = "-----END PUBLIC KEY-----\n";
    for (const auto& [text, result] :
         {Row(begin + "AQID\nBAUG\n" + end, "010203040506"), Row(begin + "AQ ID\t\r\n" + end, "010203"),
          Row("-----BEGIN A-----\r\nAQID\r\n-----END B-----\r\n", "010203"),
          Row("-----BEGIN A-----AQID-----END A-----", "010203"),
          Row("before\n" + begin + "AQID\n" + end + "after", "010203"),
          Row(begin + "AQID\n" + end + begin + "BAUG\n" + end, "010203"), Row(begin + "AQI=\n" + end, "0102"),
          Row(begin + "AQ==\n" + end, "01"), Row(begin + "AQI\n" + end, "0102"), Row(begin + "AQ==BAUG\n" + end, "01"),
          Row(begin + "AQ*D\n" + end, ""), Row(begin + "AQ\xE9+\n" + end, ""), Row(begin + end, ""),
          Row("AQID\n" + end, ""), Row(begin + "AQID\n", ""), Row("AQID", ""),
          Row("----BEGIN A----\nAQID\n----END A----\n", ""), Row("-----begin A-----\nAQID\n-----end A-----", "")}) {
        const auto length = static_cast<DWORD>(text.size());
        DWORD count = 0;
        bool good =
            ::CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64HEADER, nullptr, &count, nullptr, nullptr);
        std::string bytes(good ? count : 0, ' ');
        EXPECT_TRUE(good || ::GetLastError() == ERROR_INVALID_DATA);
        good = good && ::CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64HEADER, data(bytes), &count,
                                              nullptr, nullptr);
        EXPECT_EQ(hex(bytes.substr(0, count)), result) << text;
    }
}
