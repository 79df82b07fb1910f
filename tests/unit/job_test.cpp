#include "job/begin_update_job.h"
#include "support/programs.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::job;

TEST(Job, RunsAloneAndSharesItsRecordBetweenThreads) {
    const ca::test::TemporaryFolder folder;
    static Shared& shared = *new Shared; // which a job's thread may outlive the test with
    shared.state.busy = true;
    beginUpdateJob(shared, folder.path(), "stable", true, false);
    EXPECT_EQ(snapshotShared(shared).jobState, JobState::Starting);
    shared.state.busy = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round) {
                beginUpdateJob(shared, folder.path(), "stable", i % 2 == 0, false);
                const SharedSnapshot snapshot = snapshotShared(shared);
                // Each state is seen whole: a running job has its headline, an ended one its token.
                EXPECT_EQ(snapshot.busy, snapshot.jobState == JobState::Checking);
                EXPECT_EQ(snapshot.busy, snapshot.detailText.empty());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(ca::test::eventually([&] { return !snapshotShared(shared).busy; }));
    EXPECT_EQ(snapshotShared(shared).jobState, JobState::ServiceUnavailable);
}
