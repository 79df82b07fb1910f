// What the sources of this layer share: texts between the launcher's world and the host's, and
// the host's error numbers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <windows.h>

namespace ca::win32 {

// UTF-8 of a wide text. Characters that no Unicode text holds (surrogates, beyond U+10FFFF) make
// the result empty with ERROR_INVALID_NAME as the last error.
std::optional<std::string> toUtf8(std::wstring_view wide);

// The same for a zero-terminated text that the host will take for a path or a name: null and empty
// ones are refused too, with ERROR_PATH_NOT_FOUND as Windows does for a path.
std::optional<std::string> toPath(LPCWSTR wide);

// The wide text of well-formed UTF-8; empty with ERROR_NO_UNICODE_TRANSLATION for any other.
std::optional<std::wstring> toWide(std::string_view utf8);

// The Win32 number of an errno value.
DWORD errorFromErrno(int number);

// Sets the last error and returns FALSE, so that a failing call ends in one line.
BOOL fail(DWORD error);

// Sets the last error for `number` that a call on `path` left; a missing name is told from a
// missing folder above it.
BOOL failOnPath(int number, const std::string& path);

// A kernel object of the launcher: what a HANDLE points at. Deleted by CloseHandle,
// which frees what it holds.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;
};

} // namespace ca::win32
