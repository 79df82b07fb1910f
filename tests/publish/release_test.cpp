// From a tree to a live release, as one process sees it.
#include "publish/studio.h"
#include "publisher/release/channel_folder.h"
#include "publisher/serve/serve.h"
#include "shared/nginx.h"
#include "update/digest.h"
#include "update/key_fingerprint.h"
#include "update/updater.h"

#include <cstring>
#include <sys/stat.h>

using namespace ca::test;
namespace publisher = ca::publisher;

namespace {
char pinned[65];
}
const std::string_view ca::update::keyFingerprint(pinned, 64);

const fs::path& ca::test::keyFolder() {
    static const TemporaryFolder folder;
    if (pinned[0] == 0) {
        publisher::makeKeyPair(folder.path(), 2048, std::nullopt);
        std::memcpy(pinned, publisher::fingerprintOf(folder / publisher::publicKeyName).data(), 64);
    }
    return folder.path();
}

TEST(Release, IsWhatLaunchersInstall) {
    Studio studio;
    const std::map<std::string, std::string> files{
        {"maps/Nord mole's [big] + & (1) = ~@!$;,^`{}.pak", "odd"},
        {"caf\u00E9.txt", "composed"},
        {"cafe\u0301.txt", "decomposed"},
        {"\u30A2\u30F3\u30AB\u30FC/\U0001F6A2", "far"},
        {"empty", ""},
        {"size", "key"},
        {"..x/...z", "dots"},
        {"blanks", std::string(700'000, '\0') + "end"},
        {std::string(240, 'l'), "long"}};
    for (const auto& [path, bytes] : files) {
        studio.put(path, bytes);
    }
    for (int c = 0; c < 0x80; ++c) {
        studio.options.notes += static_cast<char>(c);
    }
    studio.options.notes += "\r\n\\\"\\u00e9 caf\u00E9";
    studio.options.mandatory = true;
    studio.options.threads = 3;
    ASSERT_EQ(studio.release(), "released");

    const ca::kit::Nginx server(studio.folder / "nginx",
                                {studio.root, 0, std::string(publisher::channelConfiguration)});
    for (const publisher::CheckResult& seen : {studio.check(), studio.check(server.url())}) {
        EXPECT_TRUE(seen.findings.empty())
            << seen.findings.front().where << seen.findings.front().what;
        EXPECT_EQ(seen.manifest.files.size(), files.size() + 4);
    }
    const fs::path game = studio.folder / "installation";
    writeFile(game / "data/update_public_key.pem",
              readFile(keyFolder() / publisher::publicKeyName));
    ca::update::Updater updater(game);
    updater.serverUrl = server.url();
    ca::update::UpdatePlan plan;
    std::string error;
    fs::path launcher;
    ASSERT_TRUE(updater.check("stable", plan, error)) << error;
    EXPECT_TRUE(plan.manifest.release_notes == studio.options.notes && plan.manifest.mandatory);
    ASSERT_TRUE(updater.apply(plan, {}, error, &launcher)) << error;
    for (const auto& [path, bytes] : files) {
        EXPECT_TRUE(readFile(game / path) == bytes) << path;
    }
    EXPECT_EQ(readFile(launcher), "launcher");
    struct stat status {};
    EXPECT_EQ(::stat((studio.live / "files/blanks").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks * 512, 400'000); // zeros take no room
}

TEST(Release, IsTheSameForTheSameTreeAndForEverybodyToRead) {
    Studio studio;
    ASSERT_EQ(studio.release(), "released");
    const mode_t mask = ::umask(077);
    const fs::path deep = studio.folder / "deep";
    for (const unsigned threads : {1U, 8U}) {
        for (const bool linked : {false, true}) {
            studio.options.root = deep / (std::to_string(threads) + (linked ? "linked/" : "/"));
            studio.options.threads = threads;
            studio.options.linked = linked;
            EXPECT_EQ(studio.release(), "released");
            const fs::path live = studio.options.root / "stable/windows";
            for (const char* text : {"manifest.json", "manifest.sig"}) {
                EXPECT_EQ(readFile(live / text), readFile(studio.live / text));
            }
            EXPECT_EQ(fs::equivalent(live / "files/data/first.dat", studio.tree / "data/first.dat"),
                      linked);
        }
    }
    ::umask(mask);
    EXPECT_EQ(fs::status(deep).permissions(), fs::perms(0755));
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(deep)) {
        EXPECT_EQ(entry.status().permissions(), fs::perms(entry.is_directory() ? 0755 : 0644))
            << entry;
    }
}

TEST(Release, KeepsWhatDidNotChangeAndDropsWhatIsOld) {
    Studio studio;
    studio.options.keep = 2;
    studio.options.root = studio.folder / "./game/../channel/"; // the same place
    for (const char* version : {"1.4.2", "1.4.3", "1.4.10", "1.5"}) {
        studio.options.version = version;
        studio.put("data/version.dat", version);
        const fs::path before = fs::exists(studio.live) ? fs::canonical(studio.live) : fs::path();
        ASSERT_EQ(studio.release(), "released");
        const bool first = before.empty();
        EXPECT_EQ(studio.result.shared, first ? 0U : 4U);
        EXPECT_TRUE(first || fs::equivalent(before / "files/data/first.dat",
                                            studio.live / "files/data/first.dat"));
        EXPECT_EQ(readFile(studio.live / "files/data/version.dat"), version);
        EXPECT_TRUE(first || readFile(before / "files/data/version.dat") != version);
        EXPECT_TRUE(studio.check().good());
    }
    EXPECT_EQ(studio.result.removed, Lines{"1.4.2"});
    const fs::path releases = studio.root / ".releases/stable";
    EXPECT_EQ(std::distance(fs::directory_iterator(releases), {}), 3);
    fs::remove(studio.tree / "data/version.dat");
    studio.put("Data/Version.dat/x", "below a file that players have");
    studio.options.version = "1.6";
    EXPECT_NE(studio.release().find("x needs a folder where players of 1.5 have a file"),
              std::string::npos);
}

TEST(Release, RefusesAllThatIsWrongAtOnceAndChangesNothing) {
    Studio studio;
    ASSERT_EQ(studio.release(), "released");
    const auto live = fs::canonical(studio.live);
    EXPECT_NE(studio.release().find("isn't newer than the live 1.4.2"), std::string::npos);
    studio.options.version = "1.4.2-rc2"; // which launchers take for the same
    EXPECT_NE(studio.release().find("--allow-older"), std::string::npos);
    studio.options.version = "1.5";
    studio.options.minimumOnlineVersion = "1.6";
    studio.options.notes = "\xFF";
    studio.options.channel = "../x";
    for (const char* path : {"Data/FIRST.dat", "a", "A/b", "save/x", "b?"}) {
        studio.put(path, "x");
    }
    fs::create_symlink("a", studio.tree / "link");
    ASSERT_EQ(::mkfifo((studio.tree / "pipe").c_str(), 0600), 0);
    const std::string text = studio.release();
    for (const char* part :
         {"--minimum-online-version 1.6 is newer", "aren't UTF-8", "\"../x\" has no usable name",
          "are one file on Windows", "A/b needs a folder where a is a file", "save/x lies",
          "b? has '?'", "link is a link", "pipe is neither"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 8) << text;
    studio.options.channel = "stable";
    EXPECT_EQ(fs::canonical(studio.live), live);
    EXPECT_TRUE(studio.check().good());
    EXPECT_EQ(std::distance(fs::directory_iterator(studio.root / ".releases/stable"), {}), 1);
}

TEST(Release, GuardsTheKeyTheRootAndTheSwitch) {
    Studio studio;
    fs::create_directories(studio.tree / "empty");
    studio.put("d" + std::string(200, 'x') + "/y", "");
    studio.put("data/update_server.txt", "https://a/");
    studio.options.notes = "caf\u00E9";
    ASSERT_EQ(studio.release(), "released");
    for (const char* part : {"empty is an empty folder", "fewer than 80", "beyond ASCII",
                             "/y has a path of 2", "update_server.txt sends launchers"}) {
        EXPECT_NE(studio.warnings.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(std::count(studio.warnings.begin(), studio.warnings.end(), '\n'), 5);

    const TemporaryFolder other;
    publisher::makeKeyPair(other.path(), 2048, std::nullopt);
    studio.options.version = "1.5";
    studio.options.publicKey = other / publisher::publicKeyName; // not the other half
    EXPECT_NE(studio.release().find("isn't signed with this key"), std::string::npos);
    studio.options.allowNewKey = true;
    EXPECT_NE(studio.release().find("manifest_signature_verify_failed"), std::string::npos);
    studio.options.privateKey = other / publisher::privateKeyName;
    fs::remove(studio.options.publicKey); // derived then
    studio.options.publicKey.clear();
    EXPECT_TRUE(studio.check().good());
    EXPECT_EQ(studio.release(), "released");
    EXPECT_FALSE(fs::exists(studio.live / publisher::publicKeyName));
    EXPECT_FALSE(studio.check().good());

    studio.options.version = "1.6";
    {
        const publisher::ChannelFolder busy(studio.root, "stable");
        EXPECT_NE(studio.release().find("another release is being made"), std::string::npos);
    }
    studio.options.root = studio.tree / "channel";
    EXPECT_NE(studio.release().find("lies in the tree"), std::string::npos);
    studio.options.root = studio.folder / "elsewhere";
    fs::create_directories(studio.options.root / "stable/windows");
    EXPECT_NE(studio.release().find("isn't a link"), std::string::npos);
    fs::rename(studio.options.root / "stable", studio.folder / "stable");
    fs::create_directory_symlink(studio.folder / "stable", studio.options.root / "stable");
    EXPECT_NE(studio.release().find("is no folder but a link"), std::string::npos);
    studio.options.root = other.path(); // where the private key lies
    EXPECT_NE(studio.release().find("which everybody gets to see"), std::string::npos);
}

TEST(Release, JudgesNothingByALiveManifestThatCannotBeRead) {
    Studio studio;
    ASSERT_EQ(studio.release(), "released");
    writeFile(studio.live / "manifest.json", "{}");
    studio.options.version = "0"; // as old as the version that isn't there
    for (const bool allowNewKey : {false, true}) {
        studio.options.allowNewKey = allowNewKey;
        const std::string text = studio.release();
        EXPECT_TRUE(text.ends_with("can be read (manifest_header_invalid): move it away")) << text;
    }
}

TEST(Release, SharesNoFileWithTheTreeUnlessAskedTo) {
    Studio studio;
    studio.options.linked = true;
    const fs::path first = studio.tree / "data/first.dat";
    const auto time = fs::last_write_time(first);
    ASSERT_EQ(studio.release(), "released");
    fs::remove(first);
    studio.put("data/first.dat", "other"); // as long and as old: a cache couldn't tell
    fs::last_write_time(first, time);
    studio.options.version = "1.5";
    ASSERT_EQ(studio.release(), "released");
    EXPECT_NE(fs::last_write_time(studio.live / "files/data/first.dat"), time);
    EXPECT_TRUE(
        fs::equivalent(studio.live / "files/ColdAnchor.exe", studio.tree / "ColdAnchor.exe"));
    studio.options.linked = false;
    studio.options.version = "1.6";
    ASSERT_EQ(studio.release(), "released");
    std::ofstream(studio.tree / "ColdAnchor.exe") << "changed in place";
    EXPECT_TRUE(studio.check().good());
}
