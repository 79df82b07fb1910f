// Calls functions of delayed libraries for the first time in four threads at once, every thread all
// of them, and again with the slots as they were before. The test has made the slots' section one
// that can't be written. Ends with the number of slots that don't hold their function afterwards,
// or can still be written.
#include <algorithm>
#include <array>
#include <atomic>
#include <thread>
#include <vector>
#include <windows.h>

#include <bcrypt.h>
#include <objbase.h>
#include <oleauto.h>
#include <wincrypt.h>

extern "C" {
extern FARPROC __imp_BCryptFreeBuffer, __imp_CoGetCurrentProcess, __imp_CoTaskMemFree,
    __imp_CryptMemAlloc, __imp_CryptMemFree, __imp_PropVariantClear, __imp_StringFromGUID2,
    __imp_SysAllocString, __imp_SysFreeString, __imp_SysStringLen, __imp_VariantClear,
    __imp_VariantInit;
}

namespace {

using Step = void (*)();
constexpr std::array<Step, 12> steps{
    [] { ::SysFreeString(nullptr); },
    [] { ::CoTaskMemFree(nullptr); },
    [] { ::CryptMemFree(nullptr); },
    [] { ::BCryptFreeBuffer(nullptr); },
    [] { ::SysFreeString(::SysAllocString(L"text")); },
    [] { static_cast<void>(::CoGetCurrentProcess()); },
    [] { ::CryptMemFree(::CryptMemAlloc(1)); },
    [] { static_cast<void>(::SysStringLen(nullptr)); },
    [] {
        wchar_t text[40];
        static_cast<void>(::StringFromGUID2(GUID{}, text, 40));
    },
    [] {
        VARIANT value;
        ::VariantInit(&value);
    },
    [] {
        VARIANT value{};
        static_cast<void>(::VariantClear(&value));
    },
    [] {
        PROPVARIANT value{};
        static_cast<void>(::PropVariantClear(&value));
    },
};

constexpr std::array slots{
    &__imp_BCryptFreeBuffer, &__imp_CoGetCurrentProcess, &__imp_CoTaskMemFree,
    &__imp_CryptMemAlloc,    &__imp_CryptMemFree,        &__imp_PropVariantClear,
    &__imp_StringFromGUID2,  &__imp_SysAllocString,      &__imp_SysFreeString,
    &__imp_SysStringLen,     &__imp_VariantClear,        &__imp_VariantInit,
};

bool liesInThisProgram(FARPROC function) {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(function), &module);
    return module == ::GetModuleHandleW(nullptr);
}

bool isAsItShouldBe(const FARPROC* slot) {
    MEMORY_BASIC_INFORMATION page{};
    ::VirtualQuery(slot, &page, sizeof(page));
    return !liesInThisProgram(*slot) && page.Protect == PAGE_READONLY;
}

void set(FARPROC* slot, FARPROC function) {
    DWORD before = 0;
    ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before);
    *slot = function;
    ::VirtualProtect(slot, sizeof(*slot), before, &before);
}

constexpr int threadCount = 4;
constexpr int rounds = 100;

// Whoever comes waits for the others. Not std::barrier, whose waiters some runtimes forget.
class Meeting {
public:
    void waitForAll() {
        const int now = number_;
        if (++arrived_ == threadCount) {
            arrived_ = 0;
            ++number_;
        }
        while (number_ == now) {
            ::SwitchToThread();
        }
    }

private:
    std::atomic<int> arrived_ = 0;
    std::atomic<int> number_ = 0;
};

} // namespace

int main() {
    std::array<FARPROC, slots.size()> stubs;
    std::transform(slots.begin(), slots.end(), stubs.begin(), [](auto* slot) { return *slot; });
    if (!std::all_of(stubs.begin(), stubs.end(), liesInThisProgram)) {
        return 100; // the test shows nothing: they were found before
    }
    Meeting meeting;
    const auto call = [&](bool first) {
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; first && i < slots.size(); ++i) {
                set(slots[i], stubs[i]);
            }
            for (const Step step : steps) {
                meeting.waitForAll();
                step();
            }
            meeting.waitForAll();
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back(call, i == 0);
        }
    }
    return static_cast<int>(std::count_if(slots.begin(), slots.end(),
                                          [](auto* slot) { return !isAsItShouldBe(slot); }));
}
