#include "job/shared.h"

#include "temporary_folder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace ca::job;

namespace {

// The record of a job that has ended; fails after ten seconds.
SharedSnapshot awaitEnd(Shared& shared) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
        SharedSnapshot snapshot = snapshotShared(shared);
        if (!snapshot.busy)
            return snapshot;
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "the job never ended";
            return snapshot;
        }
        std::this_thread::yield();
    }
}

// Outlives the test, as a job's thread may.
Shared& newShared() {
    static std::vector<Shared*>& all = *new std::vector<Shared*>;
    return *all.emplace_back(new Shared);
}

} // namespace

TEST(Job, WithoutAServerLeavesTheGamePlayable) {
    for (const char* server : {"", " \r\n"}) {
        const ca::test::TemporaryFolder folder;
        if (*server)
            ca::test::writeFile(folder / "data/update_server.txt", server);
        Shared& shared = newShared();
        shared.state.latestVersion = "1.0";
        shared.state.updateAvailable = true;
        beginUpdateJob(shared, folder.path(), "stable", false, false);
        const SharedSnapshot end = awaitEnd(shared);
        EXPECT_EQ(end.jobState, JobState::ServiceUnavailable);
        EXPECT_EQ(end.statusText, "UPDATE SERVICE UNAVAILABLE");
        EXPECT_EQ(end.detailText, "update_server_not_configured // ONLINE LOGIN STILL REQUIRED");
        EXPECT_EQ(end.latestVersion, "1.0"); // what an earlier check found stays
        EXPECT_TRUE(end.updateAvailable);
        EXPECT_FALSE(end.exitRequested);
    }
}

TEST(Job, IsRefusedWhileOneRuns) {
    const ca::test::TemporaryFolder folder;
    Shared& shared = newShared();
    shared.state.busy = true;
    shared.state.statusText = "RUNNING";
    beginUpdateJob(shared, folder.path(), "stable", true, false);
    EXPECT_EQ(snapshotShared(shared).statusText, "RUNNING");
    EXPECT_EQ(snapshotShared(shared).jobState, JobState::Starting);
}

TEST(Job, RecordIsSharedBetweenThreads) {
    const ca::test::TemporaryFolder folder;
    Shared& shared = newShared();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round) {
                beginUpdateJob(shared, folder.path(), "stable", i % 2 == 0, false);
                const SharedSnapshot snapshot = snapshotShared(shared);
                // Each state is seen whole: a running job has its headline, an ended one its token.
                EXPECT_EQ(snapshot.busy, snapshot.jobState == JobState::Checking);
                EXPECT_EQ(snapshot.busy, snapshot.detailText.empty());
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(awaitEnd(shared).jobState, JobState::ServiceUnavailable);
}
