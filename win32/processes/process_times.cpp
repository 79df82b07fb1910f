#include "processes/observed_process.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

namespace {

using namespace ca::win32;

constexpr unsigned long long stepsPerSecond = 10'000'000; // FILETIME's
// The fields of /proc/<pid>/stat are numbered from 1, as proc(5) does.
constexpr int firstBehindName = 3;
constexpr int startTime = 22;

// Clock ticks from the host's start to the process's. Empty if there is no such process.
std::optional<unsigned long long> startTicks(DWORD processId) {
    std::ifstream file("/proc/" + std::to_string(processId) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    // The second field is the name between brackets. It may hold spaces and brackets itself.
    const std::size_t nameEnds = text.rfind(')');
    if (nameEnds == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(text.substr(nameEnds + 1));
    std::string field;
    for (int number = firstBehindName; number <= startTime; ++number) {
        fields >> field;
    }
    return fields ? std::optional(std::stoull(field)) : std::nullopt;
}

} // namespace

BOOL GetProcessTimes(HANDLE process, LPFILETIME created, LPFILETIME ended, LPFILETIME kernel,
                     LPFILETIME user) {
    DWORD id = ::GetCurrentProcessId();
    if (process != ::GetCurrentProcess()) {
        const auto* observed = objectOf<ObservedProcess>(process);
        if (observed == nullptr) {
            return FALSE;
        }
        id = observed->id();
    }
    const std::optional<unsigned long long> ticks = startTicks(id);
    if (!ticks) {
        return fail(ERROR_GEN_FAILURE);
    }
    const auto ticksPerSecond = static_cast<unsigned long long>(::sysconf(_SC_CLK_TCK));
    const unsigned long long steps = *ticks * (stepsPerSecond / ticksPerSecond);
    *created = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    *ended = {0, 0};
    *kernel = {0, 0};
    *user = {0, 0};
    return TRUE;
}
