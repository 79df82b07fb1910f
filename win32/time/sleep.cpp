#include <chrono>
#include <thread>
#include <windows.h>

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
