#include "job/shared.h"

namespace ca::job {

SharedSnapshot snapshotShared(Shared& shared) {
    const std::lock_guard lock(shared.mutex);
    return shared.state;
}

void setTexts(SharedSnapshot& state, JobState jobState, std::string status, std::string detail) {
    state.jobState = jobState;
    state.statusText = std::move(status);
    state.detailText = std::move(detail);
}

} // namespace ca::job
