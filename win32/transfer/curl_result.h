// libcurl's results as WinHTTP's error numbers.
#pragma once

#include <curl/curl.h>
#include <windows.h>

namespace ca::win32 {

// The WinHTTP or Win32 error number of a result other than CURLE_OK.
DWORD errorFromResult(CURLcode result);

} // namespace ca::win32
