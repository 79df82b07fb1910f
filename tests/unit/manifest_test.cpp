#include "update/manifest.h"
#include "update/manifest_fields.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <set>

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
    UpdateManifest manifest;
    std::string error;
    ASSERT_TRUE(parseManifest(ca::test::readFile(TEST_DATA "/manifest.json"), manifest, error));
    EXPECT_EQ(manifest.format, 1);
    EXPECT_EQ(manifest.protocol_version, 7);
    EXPECT_FALSE(manifest.mandatory);
    EXPECT_EQ(manifest.product + " " + manifest.channel + " " + manifest.platform,
              "cold-anchor stable windows");
    // not the one of "protocol_version" or "minimum_online_version"
    EXPECT_EQ(manifest.version, "1.4.2");
    EXPECT_EQ(manifest.minimum_online_version, "1.3.0");
    EXPECT_EQ(manifest.release_notes, "Cold Anchor v1.4.2\nADDED\n- A \"new\" harbour\\quay");
    std::string files;
    for (const ManifestFile& file : manifest.files) { // the second size is a negative number
        files += file.path + " " + std::to_string(file.size) + " " +
                 (file.executable ? "program " : "") + file.sha256.substr(0, 4) + "\n";
    }
    EXPECT_EQ(files, "bin/game.dat 1024 program e3b0\ndata/Größe [1].pak 0 E3B0\n");
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
        const std::string kind = result.substr(0, result.find('_'));
        EXPECT_TRUE((std::set<std::string>{"1", "2", "manifest"}.contains(kind))) << result;
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
    using Row = std::pair<const char*, int>;
    for (const auto& [value, expected] : {Row("-12abc", -12),
                                          {"1.5", 1},
                                          {"18446744073709551617", 1},
                                          {"", 42},
                                          {"-", 42},
                                          {"+1", 42},
                                          {"\"1\"", 42},
                                          {" ", 42}}) {
        EXPECT_EQ(number(value), expected) << value;
    }

    const auto truth = [](const char* value) {
        return extractManifestBool(std::string(R"("k":)") + value, "k");
    };
    EXPECT_TRUE(truth(" true"));
    EXPECT_TRUE(truth("truest"));
    for (const char* no : {"false", "True", "\"true\"", "tru", ""}) {
        EXPECT_FALSE(truth(no)) << no;
    }
}
