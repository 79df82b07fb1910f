#include "job/shared.h"

namespace ca::job {

SharedSnapshot snapshotShared(Shared& shared) {
    const std::lock_guard lock(shared.mutex);
    return shared.state;
}

void setTexts(SharedSnapshot& state, JobState jobState, std::string_view status,
              std::string_view detail) {
    state.jobState = jobState;
    // Copied into the memory that is there: where it is enough, this can't fail.
    state.statusText = status;
    state.detailText = detail;
}

} // namespace ca::job
