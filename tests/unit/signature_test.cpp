#include "system/hex.h"
#include "update/channel.h"
#include "update/digest.h"
#include "update/signature.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::update;
using namespace ca::test;

// The key that signed data/manifest.json and was thrown away then.
const std::string_view ca::update::keyFingerprint =
    "4a9c6752db61009a7d6375b00ba85bfc805b86df338a994779b2677bd4885b72";

namespace {

const char* const noKey = "public_key_parse_failed";
const char* const noHex = "manifest_signature_invalid_hex";
const char* const wrong = "manifest_signature_verify_failed";

// "valid", or the token, where a file with this text is the key to believe.
std::string verdict(const std::string& keyText, const std::string& message,
                    std::string_view signature) {
    const TemporaryFolder folder;
    const auto file = writeFile(folder / "key.pem", keyText);
    std::string error;
    return verifyManifestSignature(message, signature, file, sha256File(file), error) ? "valid"
                                                                                      : error;
}

std::string fromHex(const std::string& digits) {
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(ca::system::bytesFromHex(digits, bytes)) << digits;
    return {bytes.begin(), bytes.end()};
}

std::string pemOf(const std::string& derHex) { // its padding may be missing
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text = "-----BEGIN PUBLIC KEY-----\n";
    const std::string der = fromHex(derHex) + '\0';
    for (std::size_t bit = 0; bit < 4 * derHex.size(); bit += 6) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(der[at]); };
        text += digits[(byte(bit / 8) << 8 | byte(bit / 8 + 1)) >> (10 - bit % 8) & 63];
    }
    return text + "\n-----END PUBLIC KEY-----\n";
}

} // namespace

TEST(Signature, NeedsTheKeyFileThatIsBelieved) {
    std::string error;
    EXPECT_FALSE(verifyManifestSignature("{}", "not looked at", TEST_DATA "/manifest.json",
                                         std::string(64, 'a'), error));
    EXPECT_EQ(error, "update_public_key_fingerprint_mismatch");
    EXPECT_EQ(verdict("", "{}", "not looked at"), "update_public_key_missing");
}

TEST(Signature, RefusesAKeyThatIsMalformedAtAnyLevel) {
    const auto verdictOf = [](const std::string& derHex) {
        return verdict(pemOf(derHex), "{}", "00");
    };
    const std::string tiny = "300d300003090030060201c5020103"; // well-formed, but of 8 bits
    // With its short length, with a length of eight bytes, with bytes behind it.
    for (const std::string& der : {tiny, "3088000000000000000d" + tiny.substr(4), tiny + "ffff"}) {
        const std::string token = verdictOf(der);
        EXPECT_TRUE(token == "bcrypt_key_import_failed" || token == wrong) // as Wine 8 does
            << der << ": " << token;
    }
    // one more than each type, length and count of unused bits
    for (const std::size_t byte : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 12U, 13U}) {
        std::string der = tiny;
        char& digit = der[2 * byte + 1];
        digit == '9' ? void(digit = 'a') : void(++digit);
        EXPECT_EQ(verdictOf(der), noKey) << der;
    }
    // Cut off, no algorithm around it, lengths of no, of nine and of too many bytes, an empty BIT
    // STRING, no modulus, no exponent.
    for (const char* der : {"", "30", "30060201c5020103", "3080300003090030060201c5020103",
                            "308900000000000000000d300003090030060201c5020103",
                            "3088ffffffffffffffff300003090030060201c5020103", "300430000300",
                            "300c3000030800300502000201030000", "300a300003060030030201c5"}) {
        EXPECT_EQ(verdictOf(der), noKey) << der;
    }
    EXPECT_EQ(verdict("no PEM at all", "{}", "00"), noKey);
}

// Figures that others published: those with the key of 1024 bits are out of NIST's validation of
// signatures (FIPS 186-3), the others out of the Wycheproof project's tests of RSA PKCS#1 v1.5.
// A line is "valid" or "invalid", a message, a signature and a name; a line "key" tells the key of
// the lines below it in the signature's place.
TEST(Signature, AgreesWithPublishedFigures) {
    std::ifstream lines(TEST_DATA "/signatures.txt");
    std::string kind, message, digits, name, key;
    int cases = 0;
    while (lines >> kind >> message >> digits && std::getline(lines, name)) {
        if (kind == "key") {
            key = pemOf(digits);
            continue;
        }
        EXPECT_EQ(verdict(key, fromHex(message), digits), kind == "valid" ? kind : wrong) << name;
        ++cases;
    }
    EXPECT_EQ(cases, 16);
}

TEST(Signature, HoldsForNoOtherByte) {
    const std::string manifest = readFile(TEST_DATA "/manifest.json");
    const std::string signature = readFile(TEST_DATA "/manifest.sig").substr(0, 512);
    const auto outcome = [](const std::string& text, std::string_view digits) {
        std::string error;
        return verifyManifestSignature(text, trimSignature(digits),
                                       TEST_DATA "/update_public_key.pem", error)
                   ? "valid"
                   : error;
    };
    std::string capitals = signature;
    std::transform(capitals.begin(), capitals.end(), capitals.begin(), ::toupper);
    using Row = std::pair<std::string, const char*>;
    for (const auto& [digits, result] : {Row(capitals, "valid"),
                                         {signature + " \t\r\n", "valid"},
                                         {" " + signature, noHex},
                                         {signature.substr(1), noHex},
                                         {"", noHex},
                                         {"0x" + signature, noHex},
                                         {std::string(512, 'g'), noHex},
                                         {signature + "00", wrong},
                                         {"00", wrong},
                                         {std::string(512, 'f'), wrong}}) {
        EXPECT_EQ(outcome(manifest, digits), result) << digits;
    }
    for (std::string text : {manifest, signature}) {
        for (char& byte : text) {
            byte ^= 1; // in a digit's place another digit or none
            EXPECT_NE(text.size() == 512 ? outcome(manifest, text) : outcome(text, signature),
                      "valid")
                << text;
            byte ^= 1;
        }
    }
    EXPECT_EQ(outcome(manifest.substr(1), signature), wrong);
}
