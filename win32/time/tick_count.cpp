#include <time.h>
#include <windows.h>

ULONGLONG GetTickCount64() {
    timespec now{};
    // Like Windows' own it goes on counting while the computer sleeps.
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<ULONGLONG>(now.tv_sec) * 1000 +
           static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}
