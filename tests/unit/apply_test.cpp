#include "net/download.h"
#include "shared/nginx.h"
#include "update/digest.h"
#include "update/manifest_path.h"
#include "update/updater.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::update;
using namespace ca::test;

// An installation of version 1 and a real server with the files of version 2.
class Apply : public testing::Test {
protected:
    Apply() {
        writeFile(install / "data/game_version", "1\n");
        writeFile(install / "x", "old x");
        writeFile(install / "folder/inside", "kept");
        plan.manifest.version = "2";
        plan.manifest.channel = "stable";
        plan.manifest.platform = "windows";
        updater.serverUrl = server.url();
        fs::create_directories(files);
    }

    // Serves `content` under `path` and puts it into the plan.
    void add(const std::string& path, const std::string& content, std::uint64_t size = 0) {
        const fs::path file = writeFile(files / path, content);
        plan.files.push_back({{path, sha256File(file), size, false}, install / path, false});
        plan.totalBytes += size;
    }

    // "installed", or the token.
    std::string apply(fs::path* staged) {
        std::string error;
        const auto report = [this](std::uint64_t done, std::uint64_t total) {
            reports.push_back(done);
            EXPECT_EQ(total, plan.totalBytes);
            if (onProgress) {
                onProgress();
            }
        };
        return updater.apply(plan, report, error, staged) ? "installed" : error;
    }

    // The only folder of this attempt whose name begins so; empty when there is none.
    fs::path workFolder(const std::string& prefix) const {
        std::error_code none;
        for (const fs::directory_entry& entry :
             fs::directory_iterator(install / ".coldanchor-update", none)) {
            if (entry.path().filename().string().starts_with(prefix)) {
                return entry.path();
            }
        }
        return {};
    }

    // The installation without the work folder.
    Contents installed() const {
        Contents contents = contentsOf(install.path());
        std::erase_if(contents, [](const auto& entry) {
            return entry.first.starts_with(".coldanchor-update");
        });
        return contents;
    }

    void expectFailure(const std::string& token, bool stageStays) {
        const Contents before = installed();
        fs::path staged;
        EXPECT_EQ(apply(&staged), token);
        EXPECT_EQ(installed(), before);
        EXPECT_EQ(!workFolder("stage-").empty(), stageStays);
    }

    const TemporaryFolder install;
    const TemporaryFolder root;
    const fs::path files = root / "stable/windows/files";
    ca::kit::Nginx server{root / "server", {.root = root.path(), .serverDirectives = {}}};
    Updater updater{install.path()};
    UpdatePlan plan;
    std::vector<std::uint64_t> reports;
    std::function<void()> onProgress;
};

TEST_F(Apply, ChecksTheBytesThatWereSigned) {
    const fs::path data(TEST_DATA), web = root / "stable/windows";
    fs::copy(data / "update_public_key.pem", install / "data");
    fs::copy(data, web);
    for (const auto& [name, behind, offered] :
         {std::tuple("manifest.sig", " \t\r\n", 2U), {"manifest.json", "\n", 0U}}) {
        writeFile(web / name, readFile(web / name) + behind);
        UpdatePlan fresh;
        std::string error;
        EXPECT_EQ(updater.check("stable", fresh, error), offered != 0) << error;
        EXPECT_EQ(fresh.files.size(), offered);
    }
}

TEST_F(Apply, MovesNewFilesInAndOldOnesAside) {
    add("x", "new x", 5);
    add("sub folder\\ünï/y", "new y", 3); // two bytes short: what arrived counts
    add("folder", "a file where a folder stood");
    add("empty", "", 9); // the manifest's size counts
    fs::path staged = "left over";
    EXPECT_EQ(apply(&staged), "installed");
    EXPECT_TRUE(staged.empty());
    Contents expected{
        {"data/", ""}, {"data/game_version", "2\n"}, {"sub folder/", ""}, {"sub folder/ünï/", ""}};
    for (const PlanFile& planned : plan.files) {
        expected[relativePath(planned.file.path).generic_string()] =
            readFile(files / planned.file.path);
    }
    EXPECT_EQ(installed(), expected);
    EXPECT_EQ(contentsOf(workFolder("backup-")),
              (Contents{{"x", "old x"}, {"folder/", ""}, {"folder/inside", "kept"}}));
    EXPECT_TRUE(workFolder("stage-").empty());
    // in flight uncapped, finished capped
    EXPECT_EQ(reports, (std::vector<std::uint64_t>{5, 5, 10, 10, 37, 17, 17}));
}

TEST_F(Apply, HasNothingToDoOrMayNot) {
    EXPECT_EQ(apply(nullptr), "installed"); // no files: not even the marker is written
    EXPECT_EQ(readFile(install / "data/game_version"), "1\n");
    add("x", "new x");
    writeFile(install / "data/game_version", "2.0.0.1");
    expectFailure("update_downgrade_blocked:2", false);
    writeFile(install / "data/game_version", "2.0 is as good as 2");
    EXPECT_EQ(apply(nullptr), "installed");
}

// Something else, such as a scanner, takes a staged file away or stands in the way of a backup.
TEST_F(Apply, RollsBackFilesAndFolders) {
    add("x", "new x");
    add("folder", "a file");
    add("new/y", "new y");
    writeFile(install / "new/kept", ""); // so that no folder of the plan is new
    add("last", "last");
    onProgress = [this] {
        if (fs::exists(workFolder("stage-") / "last")) {
            fs::remove(workFolder("stage-") / "new/y");
        }
    };
    expectFailure("update_install_failed:new/y", true);
    fs::remove_all(install / ".coldanchor-update");
    onProgress = [this] { writeFile(workFolder("backup-") / "folder", "in the way"); };
    expectFailure("update_backup_failed:folder", true);
}

TEST_F(Apply, HoldsTheLauncherBack) {
    add("tools/ColdAnchorLauncher.exe", "first");
    add("ColdAnchorLauncher.exe", "second");
    fs::path staged;
    EXPECT_EQ(apply(&staged), "installed");
    // the last one in the plan's order
    EXPECT_EQ(staged, workFolder("stage-") / "ColdAnchorLauncher.exe");
    EXPECT_EQ(readFile(staged), "second");
    EXPECT_EQ(readFile(install / "data/game_version"), "2\n");
    EXPECT_FALSE(fs::exists(install / "ColdAnchorLauncher.exe"));
    fs::remove_all(install / ".coldanchor-update");
    // nobody asked for it: skipped, and gone with the stage folder
    EXPECT_EQ(apply(nullptr), "installed");
    EXPECT_TRUE(workFolder("stage-").empty());
}

TEST_F(Apply, TellsThatABodyCannotBeStored) {
    add("x", "new x");
    std::string error;
    EXPECT_FALSE(
        ca::net::downloadToFile(server.url() + "/stable/windows/files/x", "/dev/full", {}, error));
    EXPECT_EQ(error, "download_write_failed");
}

TEST_F(Apply, TakesAPathOnce) {
    add("a/b", "same");
    add("a\\b", "same");
    add("x", "new x");
    EXPECT_EQ(apply(nullptr), "installed");
    EXPECT_EQ(readFile(install / "a/b"), "same");
    fs::remove_all(install / ".coldanchor-update");
    plan.files[1].file.sha256 = plan.files[2].file.sha256;
    expectFailure("update_duplicate_path:a\\b", false);
    EXPECT_FALSE(fs::exists(install / ".coldanchor-update"));
}
