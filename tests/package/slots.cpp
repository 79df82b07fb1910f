// Calls functions of delayed libraries for the first time in eight threads at once, every thread
// all of them. The test has made the slots' section one that can't be written. Ends with the number
// of slots that don't hold their function afterwards, or can be written still.
#include <algorithm>
#include <array>
#include <barrier>
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

} // namespace

int main() {
    if (std::any_of(slots.begin(), slots.end(),
                    [](auto* slot) { return !liesInThisProgram(*slot); })) {
        return 100; // the test shows nothing: they were found before
    }
    std::barrier together(8);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                for (const Step step : steps) {
                    together.arrive_and_wait();
                    step();
                }
            });
        }
    }
    return static_cast<int>(std::count_if(slots.begin(), slots.end(),
                                          [](auto* slot) { return !isAsItShouldBe(slot); }));
}
