#include "helper/file_steps.h"

#include "install/folders.h"
#include "install/retry.h"

#include <windows.h>

namespace ca::helper {

namespace {

// A scanner is done with a launcher long before.
constexpr install::RetryTimes times{.limit = 30 * 1000, .firstPause = 50, .longestPause = 2000};

} // namespace

bool isMissing(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES &&
           ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool isProgram(const std::wstring& file) {
    DWORD kind = 0;
    return install::withRetries(times,
                                [&] { return ::GetBinaryTypeW(file.c_str(), &kind) != 0; }) &&
           kind == SCS_64BIT_BINARY;
}

bool keepAside(const std::wstring& target, const std::wstring& folder, const std::wstring& name) {
    const std::wstring copy = folder + name;
    // mostly there already; a failure shows in the next step
    ::CreateDirectoryW(folder.c_str(), nullptr);
    if (install::isLink(folder)) {
        return false;
    }
    // What is left there may be a second name of the target itself, which a copy would
    // overwrite with itself.
    if (!isMissing(copy) &&
        !install::withRetries(times, [&] { return ::DeleteFileW(copy.c_str()) != 0; })) {
        return false;
    }
    return install::withRetries(times, [&] {
        return ::CreateHardLinkW(copy.c_str(), target.c_str(), nullptr) ||
               (::CopyFileW(target.c_str(), copy.c_str(), TRUE) && flushToDisk(copy));
    });
}

bool flushToDisk(const std::wstring& file) {
    return install::withRetries(times, [&] {
        const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            return false;
        }
        const bool flushed = ::FlushFileBuffers(handle) != 0;
        const DWORD error = ::GetLastError();
        ::CloseHandle(handle);
        ::SetLastError(error);
        return flushed;
    });
}

bool moveOver(const std::wstring& from, const std::wstring& to) {
    return install::withRetries(times, [&] {
        return ::MoveFileExW(from.c_str(), to.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    });
}

bool start(const std::wstring& program, const std::wstring& folder) {
    std::wstring commandLine = L"\"" + program + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!install::withRetries(times, [&] {
            return ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0,
                                    nullptr, folder.c_str(), &startup, &process) != 0;
        })) {
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

} // namespace ca::helper
