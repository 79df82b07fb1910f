// One HTTP GET, made synchronously: first through the system's proxy, then directly.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <windows.h>
#include <winhttp.h>

namespace ca::net {

struct CloseInternetHandle {
    void operator()(HINTERNET handle) const { ::WinHttpCloseHandle(handle); }
};
using InternetHandle = std::unique_ptr<void, CloseInternetHandle>;

// The handles of one GET, each empty while not open. Destroyed in the order
// request, connection, session.
struct OpenRequest {
    InternetHandle session;
    InternetHandle connection;
    InternetHandle request;
};

// A URL taken apart.
struct RequestTarget {
    std::wstring host;
    std::wstring path; // with the query behind it; never empty
    INTERNET_PORT port = 0;
    bool secure = false; // https
};

// Sends a GET for `url` (UTF-8, http or https) and waits for the response's headers. Follows every
// redirect and asks for gzip or deflate, which is decoded on reading. True: the status was 200 to
// 299 and `open.request` is ready to read. False: `error` is "invalid_update_url", or the tokens of
// both attempts, "<first> // direct:<second>". Whatever made the first attempt fail leads to the
// second, and there is no third. `error` may be written even when the result is true. Blocks for at
// most 5 s each for the name, the connection, and 15 s for each wait for the server; any thread.
bool openRequest(std::string_view url, OpenRequest& open, std::string& error);

// One attempt, with a WINHTTP_ACCESS_TYPE. False: `error` is "http_<status>" or a winhttp token
// with its error number, and `open` keeps what was opened.
bool sendGetRequest(const RequestTarget& target, DWORD accessType, OpenRequest& open,
                    std::string& error);

// `token`, "_" and the calling thread's last error number.
std::string lastErrorToken(std::string_view token);

} // namespace ca::net
