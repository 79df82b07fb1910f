// What needs no disk: names, versions, the manifest's text, a response's headers.
#include "publisher/check/response_rules.h"
#include "publisher/release/manifest_text.h"
#include "publisher/rules/name_rules.h"
#include "publisher/rules/version_rules.h"

#include <gtest/gtest.h>
#include <map>

using namespace ca::publisher;
using ca::update::UpdateManifest;

TEST(Names, AreRefusedWhereWindowsOrAnAddressWouldRefuseThem) {
    for (const char* good :
         {"console/COM10/COM/nul_", ".y/saves/x", "data/update_public_key.pem.txt",
          "long~1name/~1/PATCH_NOTES~1234.txt"}) { // beside what a release brings
        EXPECT_EQ(refusalOf(good), "") << good;
    }
    for (const char c : std::string("<>:\"|*\\?#%")) {
        EXPECT_NE(refusalOf(std::string("a") + c).find(std::string("'") + c), std::string::npos)
            << c;
    }
    const std::map<const char*, std::vector<std::string>> refused{
        {"241 bytes", {std::string(241, 'a')}},
        {"UTF-8", {"a\xFF", "\xED\xA0\x80"}},
        {"control", {"a\nb", "\x1F"}},
        {"dot or a blank", {"a./b", "a/b ", "..", "./a"}},
        {"device", {"con", "a/NUL.tar.gz", "aux .x", "COM1", "lpt\u00B2.x", "conin$/x"}},
        {"short form", {"SAVEGA~1/x", "A~12.TXT"}},
        {"player", {"save", "Save/x", "USERDATA/x"}},
        {"launcher works", {".ColdAnchor-Update/x", ".coldanchor-write-test-1.tmp"}},
        {"key that launchers trust",
         {"data/Update_Public_Key.pem", "data/update_public_key.pem/x"}},
        {"private key", {"update_private_key.pem", "a/Update_Private_Key.PEM"}},
        {"file that installations have", {"coldanchor.exe/x", "data/update_server.txt/x"}},
        {"marker", {"Data/game_version"}},
        {"folder data", {"DATA"}},
        {"launcher's name", {"tools/ColdAnchorLauncher.exe", "coldanchorlauncher.EXE"}}};
    for (const auto& [part, paths] : refused) {
        for (const std::string& path : paths) {
            EXPECT_NE(refusalOf(path).find(part), std::string::npos)
                << path << ": " << refusalOf(path);
        }
    }
    EXPECT_EQ(foldedPath("stra\u00DFe/\u00C9\u03C9"), foldedPath("STRA\u00DFE/\u00E9\u03A9"));
    EXPECT_NE(foldedPath("caf\u00E9"), foldedPath("cafe\u0301"));
    EXPECT_EQ(longestInstalledPath("\U0001F600\u00E9a"), longestInstalledPath("1234"));
}

TEST(Versions, AreRefusedUnlessLaunchersCanOrderThem) {
    for (const char* good :
         {"1", "1.4.2", "0.16.117.0.3", "1.4.2-rc1", "1.4.2+b.7", "999999999.0"}) {
        EXPECT_EQ(versionRefusal(good), "") << good;
    }
    for (const std::string bad : {"", "1.", ".1", "1..2", "v1.2", "1.2rc", "1.2-", "1.2 ",
                                  "1.2-\u00E9", "1234567890.1", "1.2-../x"}) {
        EXPECT_NE(versionRefusal(bad), "") << bad;
    }
    EXPECT_NE(versionRefusal("1-" + std::string(63, 'a')), "");
}

TEST(ManifestText, ReadsBackWhateverItHolds) {
    const auto expectReadsBack = [](const UpdateManifest& m) {
        const std::string text = manifestText(m);
        UpdateManifest seen;
        std::string error;
        ASSERT_TRUE(ca::update::parseManifest(text, seen, error)) << error;
        EXPECT_TRUE(manifestText(seen) == text); // no two manifests are written alike
        EXPECT_TRUE(seen.release_notes == m.release_notes &&
                    seen.files.back().path == m.files.back().path);
    };
    UpdateManifest m;
    m.product = "cold-anchor";
    m.platform = "windows";
    m.channel = "files"; // the names of keys, in the places where they could be taken for them
    m.version = "1.4.2-rc1";
    m.protocol_version = -7;
    m.minimum_online_version = "1.3";
    m.mandatory = true;
    for (int c = 0; c < 256; ++c) {
        m.release_notes += static_cast<char>(c);
    }
    m.release_notes += "\\u00e9 \"files\": [{\"path\": \"x\"}] \r\n\\";
    for (const char* path :
         {"path", "sha256", "size", "executable", "true", "files",
          "a b's [x] {y} + & \"z\", caf\u00E9 cafe\u0301", "]", "}", "{\"", "format"}) {
        m.files.push_back({path, std::string(64, 'a'),
                           m.files.size() % 2 == 0 ? 0 : std::uint64_t{1} << 40,
                           m.files.size() % 3 == 0});
    }
    expectReadsBack(m);
    for (const char* key :
         {"format", "product", "channel", "platform", "version", "protocol_version",
          "minimum_online_version", "mandatory", "release_notes", "files", "path", "sha256"}) {
        SCOPED_TRACE(key);
        m.release_notes = key;
        m.channel = "stable";
        expectReadsBack(m);
        std::swap(m.channel, m.release_notes);
        m.release_notes = "[ : \" ]";
        expectReadsBack(m);
    }
}

TEST(Responses, AreJudgedByWhatCachesAndPlayersMakeOfThem) {
    constexpr const char* fresh = "ETag: \"1\"\r\nCache-Control: no-cache\r\n";
    struct Row {
        std::string finalUrl, headers;
        const char* verdict; // '!' for a problem, '.' for advice
    };
    for (const Row& row : {
             Row{"", fresh, ""},
             {"", "Last-Modified: x\r\ncache-control:  NO-STORE \r\n", ""},
             {"", "ETag: x\r\nCache-Control: private, max-age=60\r\n", ""},
             {"", "ETag: x\r\nCache-Control: max-age=61\r\n", "!"},
             {"", "ETag: x\r\nCache-Control: max-age=0\r\nCache-Control: s-maxage=300\r\n", "!"},
             {"", "ETag: x\r\nCache-Control: max-age=0, immutable\r\n", "!"},
             {"", "Cache-Control: max-age=0\r\n", "."},
             {"https://A:443/b c%2B", fresh, ""},
             {"https://other/b%20c+", fresh, "."},
             {"http://a/b%20c+", fresh, "!"},
         }) {
        Response response{"https://a/b c+",
                          row.finalUrl.empty() ? "https://a/b%20c+" : row.finalUrl,
                          "HTTP/1.1 200 OK\r\n" + row.headers + "\r\n", false};
        std::string verdict;
        for (const Finding& finding : judgeResponse(response)) {
            verdict += finding.isProblem ? '!' : '.';
        }
        EXPECT_EQ(verdict, row.verdict) << row.finalUrl << row.headers;
    }
}
