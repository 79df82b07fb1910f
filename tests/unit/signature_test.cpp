#include "update/digest.h"
#include "update/key_fingerprint.h"
#include "update/signature.h"

#include "published.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace ca::update;
using namespace ca::test;

static char pinned[65];
const std::string_view ca::update::keyFingerprint(pinned, 64);

namespace {

void pinKey(const std::filesystem::path& keyFile) {
    std::memcpy(pinned, sha256File(keyFile).data(), 64);
}

// "valid", or the token.
std::string verdict(const std::string& manifest, const std::string& signature, const std::filesystem::path& key) {
    std::string error;
    return verifyManifestSignature(manifest, signature, key, error) ? "valid" : error;
}

std::string base64(const std::string& bytes) {
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 6) {
        unsigned pair = static_cast<unsigned char>(bytes[bit / 8]) * 256u;
        if (bit / 8 + 1 < bytes.size())
            pair += static_cast<unsigned char>(bytes[bit / 8 + 1]);
        text += digits[pair >> (10 - bit % 8) & 63];
    }
    return text.append((4 - text.size() % 4) % 4, '=');
}

std::string pem(const std::string& derHex) {
    return "-----BEGIN PUBLIC KEY-----\n" + base64(bytesFromHex(derHex)) + "\n-----END PUBLIC KEY-----\n";
}

} // namespace

TEST(Signature, NeedsThePinnedKeyFile) {
    const TemporaryFolder folder;
    const auto key = writeFile(folder / "key.pem", "a key");
    pinKey(key);
    EXPECT_EQ(verdict("{}", "not looked at", folder / "none.pem"), "update_public_key_missing");
    EXPECT_EQ(verdict("{}", "not looked at", writeFile(folder / "empty.pem", "")), "update_public_key_missing");
    EXPECT_EQ(verdict("{}", "not looked at", writeFile(folder / "crlf.pem", "a key\r\n")),
              "update_public_key_fingerprint_mismatch");
}

TEST(Signature, RefusesAKeyThatIsMalformedAtAnyLevel) {
    const TemporaryFolder folder;
    const auto verdictOf = [&](const std::string& keyText) {
        const auto file = writeFile(folder / "key.pem", keyText);
        pinKey(file);
        return verdict("{}", "00", file);
    };
    const std::string tiny = "300d300003090030060201c5020103"; // well-formed, but of 8 bits
    // With its short length, with a length of eight bytes, with bytes behind it.
    for (const std::string& der : {tiny, "3088000000000000000d" + tiny.substr(4), tiny + "ffff"})
        EXPECT_TRUE(verdictOf(pem(der)) == "bcrypt_key_import_failed" ||
                    verdictOf(pem(der)) == "manifest_signature_verify_failed") // Wine 8 imports a key of any size
            << der;
    const std::pair<std::size_t, const char*> changes[] = {
        {0, "31"}, {2, "31"}, {4, "04"}, {7, "31"}, {9, "03"},  {12, "03"}, // another type at each level
        {1, "0e"}, {3, "0c"}, {5, "0a"}, {8, "07"}, {10, "05"}, {13, "02"}, // a byte longer than what there is
        {1, "80"}, {6, "01"}};                                              // a length of no bytes, an unused bit
    for (const auto& [byte, digits] : changes)
        EXPECT_EQ(verdictOf(pem(std::string(tiny).replace(2 * byte, 2, digits))), "public_key_parse_failed") << byte;
    // Cut off, no algorithm around it, lengths of nine and of too many bytes, an empty BIT STRING, no modulus, no
    // exponent.
    for (const char* der : {"", "30", "30060201c5020103", "308900000000000000000d300003090030060201c5020103",
                            "3088ffffffffffffffff300003090030060201c5020103", "300430000300",
                            "300c3000030800300502000201030000", "300a300003060030030201c5"})
        EXPECT_EQ(verdictOf(pem(der)), "public_key_parse_failed") << der;
    EXPECT_EQ(verdictOf("no PEM at all"), "public_key_parse_failed");
}

TEST(Signature, AgreesWithThePublishedVectors) {
    const TemporaryFolder folder;
    const auto rows = publishedRows("wycheproof_rsa_pkcs1_sha256.tsv");
    if (rows.empty())
        GTEST_SKIP() << "no published vectors in " << SHARED_VECTORS;
    std::map<std::string, int> counts;
    for (const auto& row : rows) {
        const auto file = writeFile(folder / "key.pem", pem(row.at("spki_der_hex")));
        pinKey(file);
        const std::string kind = row.at("class");
        const bool valid = verdict(bytesFromHex(row.at("msg_hex")), row.at("sig_hex"), file) == "valid";
        if (kind == "legacy_missing_null") // the one class that providers disagree on: the answer is on record
            RecordProperty("legacy_missing_null_" + row.at("keybits"), valid ? "accepted" : "refused");
        else
            EXPECT_EQ(valid, kind != "invalid") << row.at("#src") << ", " << row.at("tcId");
        ++counts[kind];
    }
    EXPECT_EQ(counts, (std::map<std::string, int>{
                          {"valid", 21}, {"small_exponent", 3}, {"invalid", 749}, {"legacy_missing_null", 3}}));
}
