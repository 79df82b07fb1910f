// From a tree to a live release, as one process sees it.
#include "publish/studio.h"
#include "publisher/release/channel_folder.h"
#include "publisher/serve/serve.h"
#include "shared/nginx.h"
#include "update/key_fingerprint.h"
#include "update/updater.h"

#include <cstring>
#include <sys/stat.h>

using namespace ca::test;
using namespace ca::publisher;

namespace {
char pinned[65];
}
const std::string_view ca::update::keyFingerprint(pinned, 64);

const fs::path& ca::test::keyFolder() {
    static const TemporaryFolder folder;
    if (pinned[0] == 0) {
        makeKeyPair(folder.path(), 2048, std::nullopt);
        std::memcpy(pinned, fingerprintOf(folder / publicKeyName).data(), 64);
    }
    return folder.path();
}

TEST(Release, IsWhatLaunchersInstall) {
    Studio s;
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
        s.put(path, bytes);
    }
    s.options.notes = std::string(1, '\0') + "\x1F\x7F\r\n\\\"\\u00e9 caf\u00E9";
    s.options.mandatory = true;
    s.options.threads = 3;
    s.expectRelease();

    const ca::kit::Nginx server(s.folder / "nginx", {s.root, 0, std::string(channelConfiguration)});
    for (const CheckResult& seen : {s.check(), s.check(server.url())}) {
        EXPECT_TRUE(seen.findings.empty())
            << seen.findings.front().where << seen.findings.front().what;
        EXPECT_EQ(seen.manifest.files.size(), files.size() + 4);
    }
    const fs::path game = s.folder / "installation";
    writeFile(game / "data/update_public_key.pem", readFile(keyFolder() / publicKeyName));
    ca::update::Updater updater(game);
    updater.serverUrl = server.url();
    ca::update::UpdatePlan plan;
    std::string error;
    fs::path launcher;
    ASSERT_TRUE(updater.check("stable", plan, error)) << error;
    EXPECT_TRUE(plan.manifest.release_notes == s.options.notes && plan.manifest.mandatory);
    ASSERT_TRUE(updater.apply(plan, {}, error, &launcher)) << error;
    for (const auto& [path, bytes] : files) {
        EXPECT_TRUE(readFile(game / path) == bytes) << path;
    }
    EXPECT_EQ(readFile(launcher), "launcher");
    struct stat status {};
    EXPECT_EQ(::stat((s.live / "files/blanks").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks * 512, 400'000); // zeros take no room
}

TEST(Release, IsTheSameForTheSameTreeAndForEverybodyToRead) {
    Studio s;
    s.expectRelease();
    const mode_t mask = ::umask(077);
    const fs::path deep = s.folder / "deep";
    for (const unsigned threads : {1U, 8U}) {
        for (const bool linked : {false, true}) {
            s.options.root = deep / (std::to_string(threads) + (linked ? "linked/" : "/"));
            s.options.threads = threads;
            s.options.linked = linked;
            s.expectRelease();
            const fs::path live = s.options.root / "stable/windows";
            for (const char* text : {"manifest.json", "manifest.sig"}) {
                EXPECT_EQ(readFile(live / text), readFile(s.live / text));
            }
            EXPECT_EQ(fs::equivalent(live / "files/data/first.dat", s.tree / "data/first.dat"),
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
    Studio s;
    s.options.keep = 2;
    s.options.root = s.folder / "./game/../channel/"; // the same place
    for (const char* version : {"1.4.2", "1.4.3", "1.4.10", "1.5"}) {
        s.options.version = version;
        s.put("data/version.dat", version);
        const fs::path before = fs::exists(s.live) ? fs::canonical(s.live) : fs::path();
        s.expectRelease();
        const bool first = before.empty();
        EXPECT_EQ(s.result.shared, first ? 0U : 4U);
        EXPECT_TRUE(first || fs::equivalent(before / "files/data/first.dat",
                                            s.live / "files/data/first.dat"));
        EXPECT_EQ(readFile(s.live / "files/data/version.dat"), version);
        EXPECT_TRUE(first || readFile(before / "files/data/version.dat") != version);
        EXPECT_TRUE(s.check().good());
    }
    EXPECT_EQ(s.result.removed, Lines{"1.4.2"});
    const fs::path releases = s.root / ".releases/stable";
    EXPECT_EQ(std::distance(fs::directory_iterator(releases), {}), 3);
    fs::remove(s.tree / "data/version.dat");
    s.put("Data/Version.dat/x", "below a file that players have");
    s.options.version = "1.6";
    s.expectRefusal("x needs a folder where players of 1.5 have a file");
}

TEST(Release, RefusesAllThatIsWrongAtOnceAndChangesNothing) {
    Studio s;
    s.expectRelease();
    const auto live = fs::canonical(s.live);
    s.expectRefusal("isn't newer than the live 1.4.2");
    s.options.version = "1.4.2-rc2"; // which launchers take for the same
    s.expectRefusal("--allow-older");
    s.options.version = "1.5";
    s.options.minimumOnlineVersion = "1.6";
    s.options.notes = "\xFF";
    s.options.channel = "../x";
    for (const char* path : {"Data/FIRST.dat", "a", "A/b", "save/x"}) {
        s.put(path, "x");
    }
    fs::create_symlink("a", s.tree / "link");
    ASSERT_EQ(::mkfifo((s.tree / "pipe").c_str(), 0600), 0);
    const std::string text = s.release();
    for (const char* part :
         {"--minimum-online-version 1.6 is newer", "aren't UTF-8", "\"../x\" has no usable name",
          "are one file on Windows", "A/b needs a folder where a is a file", "save/x lies",
          "link is a link", "pipe is neither"}) {
        expectPart(text, part);
    }
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 7) << text;
    s.options.channel = "stable";
    EXPECT_EQ(fs::canonical(s.live), live);
    EXPECT_TRUE(s.check().good());
    EXPECT_EQ(std::distance(fs::directory_iterator(s.root / ".releases/stable"), {}), 1);
}

TEST(Release, GuardsTheKeyTheRootAndTheSwitch) {
    Studio s;
    fs::create_directories(s.tree / "empty");
    s.put("d" + std::string(200, 'x') + "/y", "");
    s.put("data/update_server.txt", "https://a/");
    s.options.notes = "caf\u00E9";
    s.expectRelease();
    for (const char* part : {"empty is an empty folder", "fewer than 80", "beyond ASCII",
                             "/y has a path of 2", "update_server.txt sends launchers"}) {
        expectPart(s.warnings, part);
    }
    EXPECT_EQ(std::count(s.warnings.begin(), s.warnings.end(), '\n'), 5);

    const TemporaryFolder other;
    makeKeyPair(other.path(), 2048, std::nullopt);
    s.options.version = "1.5";
    s.options.publicKey = other / publicKeyName; // not the other half
    s.expectRefusal("isn't signed with this key");
    s.options.allowNewKey = true;
    s.expectRefusal("manifest_signature_verify_failed");
    s.options.privateKey = other / privateKeyName;
    fs::remove(s.options.publicKey); // derived then
    s.options.publicKey.clear();
    EXPECT_TRUE(s.check().good());
    s.expectRelease();
    EXPECT_FALSE(fs::exists(s.live / publicKeyName));
    EXPECT_FALSE(s.check().good());

    s.options.version = "1.6";
    {
        const ChannelFolder busy(s.root, "stable");
        s.expectRefusal("another release is being made");
    }
    s.options.root = s.tree / "channel";
    s.expectRefusal("lies in the tree");
    s.options.root = s.folder / "elsewhere";
    fs::create_directories(s.options.root / "stable/windows");
    s.expectRefusal("isn't a link");
    fs::rename(s.options.root / "stable", s.folder / "stable");
    fs::create_directory_symlink(s.folder / "stable", s.options.root / "stable");
    s.expectRefusal("is no folder but a link");
    s.options.root = other.path(); // where the private key lies
    s.expectRefusal("which everybody gets to see");
}

TEST(Release, JudgesNothingByALiveManifestThatCannotBeRead) {
    Studio s;
    s.expectRelease();
    writeFile(s.live / "manifest.json", "{}");
    s.options.version = "0"; // as old as the version that isn't there
    for (const bool allowNewKey : {false, true}) {
        s.options.allowNewKey = allowNewKey;
        const std::string text = s.release();
        EXPECT_TRUE(text.ends_with("can be read (manifest_header_invalid): move it away")) << text;
    }
}

TEST(Release, SharesNoFileWithTheTreeUnlessAskedTo) {
    Studio s;
    s.options.linked = true;
    const fs::path first = s.tree / "data/first.dat";
    const auto time = fs::last_write_time(first);
    s.expectRelease();
    fs::remove(first);
    s.put("data/first.dat", "other"); // as long and as old: a cache couldn't tell
    fs::last_write_time(first, time);
    s.options.version = "1.5";
    s.expectRelease();
    EXPECT_NE(fs::last_write_time(s.live / "files/data/first.dat"), time);
    EXPECT_TRUE(fs::equivalent(s.live / "files/ColdAnchor.exe", s.tree / "ColdAnchor.exe"));
    s.options.linked = false;
    s.options.version = "1.6";
    s.expectRelease();
    std::ofstream(s.tree / "ColdAnchor.exe") << "changed in place";
    EXPECT_TRUE(s.check().good());
}
