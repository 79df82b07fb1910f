#include "update/manifest.h"
#include "update/manifest_fields.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::update;

namespace {

const std::string digest(64, 'a');

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

// The shortest manifest that passes; `entry` stands in the array.
std::string minimal(const std::string& array) {
    return R"({"product":"cold-anchor","platform":"windows","version":"1","files":)" + array;
}

std::string entry(const std::string& path, const std::string& more = "") {
    return R"({"path":")" + path + R"(","sha256":")" + digest + '"' + more + '}';
}

// The token, or the number of files.
std::string outcome(const std::string& text) {
    UpdateManifest manifest;
    manifest.version = "untouched";
    std::string error = "untouched";
    if (parseManifest(text, manifest, error)) {
        EXPECT_EQ(error, "untouched");
        return std::to_string(manifest.files.size());
    }
    EXPECT_EQ(manifest.version, "untouched");
    EXPECT_TRUE(manifest.files.empty());
    return error;
}

} // namespace

TEST(Manifest, ReadsEveryField) {
    const std::string text = ca::test::readFile(TEST_DATA "/manifest.json");
    UpdateManifest manifest;
    std::string error;
    ASSERT_TRUE(parseManifest(text, manifest, error)) << error;
    EXPECT_TRUE(manifest.format == 1 && manifest.protocol_version == 7 && !manifest.mandatory);
    EXPECT_EQ(manifest.product + " " + manifest.channel + " " + manifest.platform,
              "cold-anchor stable windows");
    // not the one of "protocol_version" or "minimum_online_version"
    EXPECT_EQ(manifest.version, "1.4.2");
    EXPECT_EQ(manifest.minimum_online_version, "1.3.0");
    EXPECT_EQ(manifest.release_notes, "Cold Anchor v1.4.2\nADDED\n- A \"new\" harbour\\quay");
    ASSERT_EQ(manifest.files.size(), 2u);
    EXPECT_EQ(manifest.files[0].path, "bin/game.dat");
    EXPECT_TRUE(manifest.files[0].size == 1024 && manifest.files[0].executable);
    EXPECT_EQ(manifest.files[1].path, "data/Größe [1].pak");
    EXPECT_EQ(manifest.files[1].size, 0u); // a negative number
    EXPECT_EQ(manifest.files[1].sha256.substr(0, 4), "E3B0");
}

TEST(Manifest, EveryRefusalHasItsToken) {
    const std::string good = minimal("[" + entry("a") + "]}");
    const std::pair<std::string, const char*> rows[] = {
        {good, "1"},
        {replaced(good, "{", R"({"format":2,)"), "manifest_header_invalid"},
        // in quotes it is no number, and the default passes
        {replaced(good, "{", R"({"format":"2",)"), "1"},
        {replaced(good, "{", R"({"format":4294967297,)"), "1"}, // the low 32 bits
        {replaced(good, "cold-anchor", "cold-anchors"), "manifest_header_invalid"},
        {replaced(good, "cold-anchor", "Cold-anchor"), "manifest_header_invalid"},
        {replaced(good, "windows", ""), "manifest_header_invalid"},
        {replaced(good, R"("version":"1")", R"("version":1)"), "manifest_header_invalid"},
        // the first one counts
        {replaced(good, R"("version":"1")", R"("version":"1","version":"")"), "1"},
        {"", "manifest_header_invalid"},
        {"[" + entry("a") +
             R"(],"product":"cold-anchor","platform":"windows","version":"1","files":[)" +
             entry("b"),
         "1"},
        {minimal("[]"), "manifest_has_no_files"},
        {minimal("["), "manifest_has_no_files"},
        {replaced(good, "files", "file"), "manifest_has_no_files"},
        {minimal("[" + entry("a").substr(0, 20)), "manifest_has_no_files"}, // never closed
        {minimal("[" + entry("a")), "1"}, // the array never closed
        {minimal("[{}]"), "manifest_file_invalid"},
        {minimal("[" + entry("a") + "," + entry("../b") + "]"), "manifest_file_invalid"},
        {replaced(good, digest, digest.substr(1)), "manifest_file_invalid"},
        {replaced(good, digest, digest + "a"), "manifest_file_invalid"},
        {replaced(good, digest, std::string(64, '?')), "1"},
        {minimal("[" + entry("a") + " junk [ , " + entry("b", R"(,"n":{"x":{}})") + "] " +
                 entry("c")),
         "2"},
        // braces and escaped quotes inside strings
        {minimal("[" + entry("a}]{[") + entry("b\\\"}") + "]"), "2"},
        // below depth 0 nothing counts any more
        {minimal("[}" + entry("a") + "]"), "manifest_has_no_files"},
        {minimal("[" + entry("a") + entry("a") + "]"), "2"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(outcome(text), expected) << text;
    }
}

TEST(Manifest, EveryCutIsReadOrRefused) {
    const std::string text = ca::test::readFile(TEST_DATA "/manifest.json");
    for (std::size_t length = 0; length < text.size(); ++length) {
        const std::string result = outcome(text.substr(0, length));
        EXPECT_TRUE(result == "1" || result == "2" || result.starts_with("manifest_"))
            << length << ": " << result;
    }
}

TEST(ManifestFields, ReadWhatFollowsTheFirstColon) {
    const auto text = [](const char* value) {
        return extractManifestString(std::string(R"({"k" junk:)") + value, "k");
    };
    const std::pair<const char*, const char*> texts[] = {
        {" \t\r\n\v\f\"a\\q\\/\\t\\n\\r\\\\\\\"\\u00e9\nb\" \"c\"", "aq/\t\n\r\\\"u00e9\nb"},
        {"\"never closed", "never closed"},
        {"\"ends in a backslash\\", "ends in a backslash"},
        {"7", ""},
        {"", ""}};
    for (const auto& [value, expected] : texts) {
        EXPECT_EQ(text(value), expected);
    }
    EXPECT_EQ(extractManifestString(R"(["k"])", "k"), "");
    // a value that equals the key counts as the key
    EXPECT_EQ(extractManifestString(R"({"a":"k","k":"x"})", "k"), "x");

    const auto number = [](const char* value) {
        return extractManifestInt(std::string(R"("k":)") + value, "k", 42);
    };
    EXPECT_TRUE(number("-12abc") == -12 && number("1.5") == 1 &&
                number("18446744073709551617") == 1);
    for (const char* none : {"", "-", "+1", "\"1\"", " ", "--1", "x"}) {
        EXPECT_EQ(number(none), 42) << none;
    }

    const auto truth = [](const char* value) {
        return extractManifestBool(std::string(R"("k":)") + value, "k");
    };
    EXPECT_TRUE(truth(" true") && truth("truest"));
    for (const char* no : {"false", "1", "True", "\"true\"", "tru", ""}) {
        EXPECT_FALSE(truth(no)) << no;
    }
}
