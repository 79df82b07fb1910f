// Starts jobs that end at once, one after the other. On one processor, where a thread may be
// detached before it runs, one in some hundred was lost when the job didn't wait for that.
#include "job/begin_update_job.h"
#include "support/programs.h"

#include <windows.h>

TEST(Start, LosesNoJob) {
    ASSERT_TRUE(::SetProcessAffinityMask(::GetCurrentProcess(), 1));
    static ca::job::Shared& shared = *new ca::job::Shared; // which a job may outlive the test with
    for (int i = 0; i < 2000 && !HasFailure(); ++i) {
        ca::job::beginUpdateJob(shared, "no installation", "stable", false, false);
        const ULONGLONG begin = ::GetTickCount64();
        while (ca::job::snapshotShared(shared).busy && ::GetTickCount64() - begin < 20'000) {
            std::this_thread::yield();
        }
        EXPECT_EQ(ca::job::snapshotShared(shared).jobState, ca::job::JobState::ServiceUnavailable)
            << "after " << i;
    }
}
