#include "demo/nginx.h"
#include "update/digest.h"
#include "update/updater.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <map>

using namespace ca::update;
namespace fs = std::filesystem;

namespace {

using Tree = std::map<std::string, std::string>;

// Every file below `folder` with its content, folders with a slash behind their name, the work folder left out.
Tree treeOf(const fs::path& folder) {
    Tree tree;
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().lexically_relative(folder).generic_string();
        if (name == ".coldanchor-update")
            entry.disable_recursion_pending();
        else if (entry->is_directory())
            tree[name + "/"];
        else
            tree[name] = ca::test::readFile(entry->path());
    }
    return tree;
}

} // namespace

// An installation of version 1 and a real server with the files of version 2.
class Apply : public testing::Test {
protected:
    Apply() {
        ca::test::writeFile(install / "data/game_version", "1\n");
        ca::test::writeFile(install / "x", "old x");
        ca::test::writeFile(install / "folder/inside", "kept");
        plan.manifest.version = "2";
        plan.manifest.channel = "stable";
        plan.manifest.platform = "windows";
        updater.serverUrl = server.url();
        fs::create_directories(files);
    }

    // Serves `content` under `path` and puts it into the plan.
    void add(const std::string& path, const std::string& content, std::uint64_t size = 0) {
        const fs::path file = ca::test::writeFile(files / path, content);
        plan.files.push_back({{path, sha256File(file), size, false}, install / path, false});
        plan.totalBytes += size;
    }

    // "installed", or the token.
    std::string apply(fs::path* staged) {
        std::string error;
        const auto report = [this](std::uint64_t done, std::uint64_t total) {
            reports.push_back(done);
            EXPECT_EQ(total, plan.totalBytes);
            if (onProgress)
                onProgress();
        };
        return updater.apply(plan, report, error, staged) ? "installed" : error;
    }

    // The only folder of this attempt whose name begins so; empty when there is none.
    fs::path workFolder(const std::string& prefix) const {
        std::error_code none;
        for (const fs::directory_entry& entry : fs::directory_iterator(install / ".coldanchor-update", none))
            if (entry.path().filename().string().starts_with(prefix))
                return entry.path();
        return {};
    }

    void expectFailure(const std::string& token, bool stageStays) {
        const Tree before = treeOf(install.path());
        fs::path staged;
        EXPECT_EQ(apply(&staged), token);
        EXPECT_EQ(treeOf(install.path()), before);
        EXPECT_EQ(!workFolder("stage-").empty(), stageStays);
    }

    const ca::test::TemporaryFolder install;
    const ca::test::TemporaryFolder root;
    const fs::path files = root / "stable/windows/files";
    ca::demo::Nginx server{root / "server", {.root = root.path(), .serverDirectives = {}}};
    Updater updater{install.path()};
    UpdatePlan plan;
    std::vector<std::uint64_t> reports;
    std::function<void()> onProgress;
};

TEST_F(Apply, MovesNewFilesInAndOldOnesAside) {
    add("x", "new x", 5);
    add("sub folder\\ünï/y", "new y", 3); // two bytes short: what arrived counts
    add("folder", "a file where a folder stood");
    add("empty", "", 9); // the manifest's size counts
    fs::path staged = "left over";
    EXPECT_EQ(apply(&staged), "installed");
    EXPECT_TRUE(staged.empty());
    EXPECT_EQ(treeOf(install.path()), (Tree{{"data/", ""},
                                            {"data/game_version", "2\n"},
                                            {"x", "new x"},
                                            {"sub folder/", ""},
                                            {"sub folder/ünï/", ""},
                                            {"sub folder/ünï/y", "new y"},
                                            {"folder", "a file where a folder stood"},
                                            {"empty", ""}}));
    EXPECT_EQ(treeOf(workFolder("backup-")), (Tree{{"x", "old x"}, {"folder/", ""}, {"folder/inside", "kept"}}));
    EXPECT_TRUE(workFolder("stage-").empty());
    EXPECT_EQ(reports, (std::vector<std::uint64_t>{5, 5, 10, 10, 37, 17, 17})); // in flight uncapped, finished capped
}

TEST_F(Apply, HasNothingToDoOrMayNot) {
    EXPECT_EQ(apply(nullptr), "installed"); // no files: not even the marker is written
    EXPECT_EQ(ca::test::readFile(install / "data/game_version"), "1\n");
    add("x", "new x");
    ca::test::writeFile(install / "data/game_version", "2.0.0.1");
    expectFailure("update_downgrade_blocked:2", false);
    ca::test::writeFile(install / "data/game_version", "2.0 is as good as 2");
    EXPECT_EQ(apply(nullptr), "installed");
}

TEST_F(Apply, StopsAtTheFirstDownloadThatFails) {
    add("x", "new x");
    add("y", "new y");
    add("z", "new z");
    fs::remove(files / "y");
    expectFailure("http_404 // direct:http_404", false);
    plan.files[1].file = plan.files[0].file;
    plan.files[1].file.path = "x/under a file"; // the stage folder holds the file x
    expectFailure("download_destination_unwritable", false);
    EXPECT_TRUE(treeOf(workFolder("backup-")).empty());
    EXPECT_EQ(ca::test::readFile(server.accessLog()).find("/z "), std::string::npos);
}

// Something else, such as a scanner, takes a staged file away or stands in the way of a backup.
TEST_F(Apply, RollsBackFilesAndFolders) {
    add("x", "new x");
    add("folder", "a file");
    add("new/y", "new y");
    ca::test::writeFile(install / "new/kept", ""); // so that no folder of the plan is new
    plan.files.push_back(plan.files[0]);
    plan.files.back().file.path = "last";
    ca::test::writeFile(files / "last", "new x");
    onProgress = [this] {
        if (fs::exists(workFolder("stage-") / "last"))
            fs::remove(workFolder("stage-") / "new/y");
    };
    expectFailure("update_install_failed:new/y", true);
    fs::remove_all(install / ".coldanchor-update");
    onProgress = [this] { ca::test::writeFile(workFolder("backup-") / "folder", "in the way"); };
    expectFailure("update_backup_failed:folder", true);
}

TEST_F(Apply, HoldsTheLauncherBack) {
    add("tools/ColdAnchorLauncher.exe", "first");
    add("ColdAnchorLauncher.exe", "second");
    fs::path staged;
    EXPECT_EQ(apply(&staged), "installed");
    EXPECT_EQ(staged, workFolder("stage-") / "ColdAnchorLauncher.exe"); // the last one in the plan's order
    EXPECT_EQ(ca::test::readFile(staged), "second");
    EXPECT_EQ(ca::test::readFile(install / "data/game_version"), "2\n");
    EXPECT_FALSE(fs::exists(install / "ColdAnchorLauncher.exe"));
    fs::remove_all(install / ".coldanchor-update");
    EXPECT_EQ(apply(nullptr), "installed"); // nobody asked for it: skipped, and gone with the stage folder
    EXPECT_TRUE(workFolder("stage-").empty());
}

TEST_F(Apply, TakesAPathOnce) {
    add("a/b", "same");
    add("a\\b", "same");
    add("x", "new x");
    EXPECT_EQ(apply(nullptr), "installed");
    EXPECT_EQ(ca::test::readFile(install / "a/b"), "same");
    fs::remove_all(install / ".coldanchor-update");
    plan.files[1].file.sha256 = plan.files[2].file.sha256;
    expectFailure("update_duplicate_path:a\\b", false);
    EXPECT_FALSE(fs::exists(install / ".coldanchor-update"));
}
