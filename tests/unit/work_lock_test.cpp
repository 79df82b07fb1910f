#include "temporary_folder.h"
#include "update/updater.h"
#include "update/work_lock.h"

#include <gtest/gtest.h>
#include <optional>

using namespace ca::update;
namespace fs = std::filesystem;

TEST(WorkLock, ExcludesOthersUntilItsEnd) {
    const ca::test::TemporaryFolder folder;
    EXPECT_EQ(findLastAttempt(folder.path()), 0U);
    EXPECT_FALSE(fs::exists(folder / ".coldanchor-update")); // asking changes nothing
    std::optional<WorkLock> first(folder.path());
    EXPECT_TRUE(*first);
    EXPECT_FALSE(WorkLock(folder.path()));
    const LastAttempt whileHeld = findLastAttempt(folder.path());
    EXPECT_NE(whileHeld, newestAttempt(folder.path()));
    first.reset();
    EXPECT_TRUE(WorkLock(folder.path()));
    EXPECT_EQ(findLastAttempt(folder.path()), 0U);
}

TEST(WorkLock, MakesFoldersThatNobodyHasUsed) {
    const ca::test::TemporaryFolder folder;
    const WorkLock lock(folder.path());
    fs::path stage, backup;
    ASSERT_TRUE(lock.makeFolders(stage, backup));
    const LastAttempt before = newestAttempt(folder.path());
    EXPECT_EQ(backup.filename(), "backup-" + std::to_string(before));
    // The clock stands still, and something of the next names is there already.
    const fs::path work = folder / ".coldanchor-update";
    const auto later = [&](LastAttempt count) {
        return std::to_string(before + 1'000'000'000 + count);
    };
    fs::create_directory(work / ("backup-" + later(0)));
    fs::create_directory(work / ("stage-" + later(1)));
    ca::test::writeFile(work / ("stage-" + later(2)), "");
    fs::create_directory(work / "backup-1234567890123456"); // nobody's
    ASSERT_TRUE(lock.makeFolders(stage, backup));
    EXPECT_EQ(stage.filename(), "stage-" + later(3));
    EXPECT_EQ(backup.filename(), "backup-" + later(3));
    EXPECT_EQ(std::to_string(newestAttempt(folder.path())), later(3));
}

// What a check has seen is stale once another launcher has begun to install.
TEST(WorkLock, KeepsAStalePlanFromTheMarker) {
    const ca::test::TemporaryFolder folder;
    const Updater updater(folder.path());
    UpdatePlan plan;
    plan.manifest.version = "2";
    plan.lastAttempt = findLastAttempt(folder.path());
    fs::path stage, backup;
    ASSERT_TRUE(WorkLock(folder.path()).makeFolders(stage, backup));
    EXPECT_FALSE(updater.confirmVersion(plan));
    EXPECT_FALSE(fs::exists(folder / "data/game_version"));
    plan.lastAttempt = findLastAttempt(folder.path());
    EXPECT_TRUE(updater.confirmVersion(plan));
    EXPECT_EQ(ca::test::readFile(folder / "data/game_version"), "2\n");
}
