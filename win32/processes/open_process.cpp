#include "host.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <time.h>
#include <unistd.h>

namespace {

using namespace ca::win32;

// A process that may not be this one's child.
class ObservedProcess : public Object {
public:
    ObservedProcess(int processDescriptor, DWORD processId)
        : descriptor(processDescriptor), id(processId) {}
    ~ObservedProcess() override { ::close(descriptor); }

    const int descriptor;
    const DWORD id;
};

// What GetCurrentProcess gives: the same pseudo handle as on Windows.
const HANDLE currentProcess = INVALID_HANDLE_VALUE;

// Ticks since the host's start, the 22nd field of /proc/<pid>/stat; the name in the
// second one may hold blanks.
std::optional<unsigned long long> startTicks(DWORD processId) {
    std::ifstream file("/proc/" + std::to_string(processId) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t nameEnds = text.rfind(')');
    if (nameEnds == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(text.substr(nameEnds + 1));
    std::string field;
    for (int i = 3; i <= 22; ++i) {
        fields >> field;
    }
    return fields ? std::optional(std::stoull(field)) : std::nullopt;
}

} // namespace

HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId) {
    if (access != (SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION) || inherit || processId == 0 ||
        processId > INT32_MAX) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const long descriptor = ::syscall(SYS_pidfd_open, static_cast<pid_t>(processId), 0);
    if (descriptor < 0) {
        fail(errno == ESRCH ? ERROR_INVALID_PARAMETER : errorFromErrno(errno));
        return nullptr;
    }
    return static_cast<Object*>(new ObservedProcess(static_cast<int>(descriptor), processId));
}

HANDLE GetCurrentProcess() {
    return currentProcess;
}

BOOL GetProcessTimes(HANDLE process, LPFILETIME created, LPFILETIME ended, LPFILETIME kernel,
                     LPFILETIME user) {
    DWORD id = GetCurrentProcessId();
    if (process != currentProcess) {
        const auto* observed = dynamic_cast<const ObservedProcess*>(static_cast<Object*>(process));
        if (observed == nullptr) {
            return fail(ERROR_INVALID_HANDLE);
        }
        id = observed->id;
    }
    const std::optional<unsigned long long> ticks = startTicks(id);
    if (!ticks) {
        return fail(ERROR_GEN_FAILURE);
    }
    const unsigned long long steps =
        *ticks * (10'000'000ULL / static_cast<unsigned long long>(::sysconf(_SC_CLK_TCK)));
    *ended = *kernel = *user = {0, 0};
    *created = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds) {
    const auto* observed = dynamic_cast<const ObservedProcess*>(static_cast<Object*>(process));
    if (observed == nullptr) {
        fail(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd entry{observed->descriptor, POLLIN, 0};
        const int ready =
            ::poll(&entry, 1, static_cast<int>(std::clamp<long long>(left.count(), 0, INT32_MAX)));
        if (ready > 0) {
            return WAIT_OBJECT_0;
        }
        if (ready == 0) {
            return WAIT_TIMEOUT;
        }
        if (errno != EINTR) {
            fail(errorFromErrno(errno));
            return WAIT_FAILED;
        }
    }
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

ULONGLONG GetTickCount64() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<ULONGLONG>(now.tv_sec) * 1000 +
           static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}
