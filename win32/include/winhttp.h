// The part of WinHTTP, in synchronous mode, that the launcher calls, for hosts that are not
// Windows. libcurl carries it.
//
// One request handle is one GET: it opens its own connection, and memory is bounded by one buffer,
// however long the body. Session, connection and request handles may be closed in any order; a
// request keeps what it needs. One handle belongs to one thread at a time; different handles may be
// used at once. Every call that talks to the network blocks until it is done or its time-out ends.
//
// Only http and https are spoken, HTTP/1.1, also behind a redirect. Certificates and host names are
// always checked, against the host's authorities (OpenSSL's default places, so SSL_CERT_FILE and
// SSL_CERT_DIR count).
//
// Where the layer differs from Windows on purpose:
//  - WINHTTP_ACCESS_TYPE_DEFAULT_PROXY takes the proxy from the usual environment variables
//    (http_proxy, https_proxy, all_proxy, no_proxy).
//  - The TLS handshake counts towards the connect time-out.
//  - Sizes of texts are in bytes of the host's wchar_t.
#pragma once

#include <windows.h>

using HINTERNET = LPVOID;
using INTERNET_PORT = WORD;
using INTERNET_SCHEME = int;

inline constexpr INTERNET_SCHEME INTERNET_SCHEME_HTTP = 1;
inline constexpr INTERNET_SCHEME INTERNET_SCHEME_HTTPS = 2;

inline constexpr DWORD WINHTTP_ACCESS_TYPE_DEFAULT_PROXY = 0;
inline constexpr DWORD WINHTTP_ACCESS_TYPE_NO_PROXY = 1;
inline constexpr DWORD WINHTTP_FLAG_SECURE = 0x00800000;

inline constexpr DWORD WINHTTP_OPTION_URL = 34;
inline constexpr DWORD WINHTTP_OPTION_SECURE_PROTOCOLS = 84;
inline constexpr DWORD WINHTTP_OPTION_REDIRECT_POLICY = 88;
inline constexpr DWORD WINHTTP_OPTION_DECOMPRESSION = 118;
inline constexpr DWORD WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 = 0x00000800;
inline constexpr DWORD WINHTTP_OPTION_REDIRECT_POLICY_NEVER = 0;
inline constexpr DWORD WINHTTP_OPTION_REDIRECT_POLICY_DISALLOW_HTTPS_TO_HTTP = 1;
inline constexpr DWORD WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS = 2;
inline constexpr DWORD WINHTTP_DECOMPRESSION_FLAG_GZIP = 1;
inline constexpr DWORD WINHTTP_DECOMPRESSION_FLAG_DEFLATE = 2;
inline constexpr DWORD WINHTTP_DECOMPRESSION_FLAG_ALL = 3;

inline constexpr DWORD WINHTTP_QUERY_CONTENT_LENGTH = 5;
inline constexpr DWORD WINHTTP_QUERY_STATUS_CODE = 19;
inline constexpr DWORD WINHTTP_QUERY_RAW_HEADERS_CRLF = 22;
inline constexpr DWORD WINHTTP_QUERY_FLAG_NUMBER = 0x20000000;

inline constexpr LPCWSTR WINHTTP_NO_PROXY_NAME = nullptr;
inline constexpr LPCWSTR WINHTTP_NO_PROXY_BYPASS = nullptr;
inline constexpr LPCWSTR WINHTTP_NO_REFERER = nullptr;
inline constexpr LPCWSTR* WINHTTP_DEFAULT_ACCEPT_TYPES = nullptr;
inline constexpr LPCWSTR WINHTTP_NO_ADDITIONAL_HEADERS = nullptr;
inline constexpr LPVOID WINHTTP_NO_REQUEST_DATA = nullptr;
inline constexpr LPCWSTR WINHTTP_HEADER_NAME_BY_INDEX = nullptr;
inline constexpr LPDWORD WINHTTP_NO_HEADER_INDEX = nullptr;

// Error numbers (winhttp.h). The last error after a failed call.
inline constexpr DWORD ERROR_WINHTTP_TIMEOUT = 12002;
inline constexpr DWORD ERROR_WINHTTP_INTERNAL_ERROR = 12004;
inline constexpr DWORD ERROR_WINHTTP_INVALID_URL = 12005;
inline constexpr DWORD ERROR_WINHTTP_UNRECOGNIZED_SCHEME = 12006;
inline constexpr DWORD ERROR_WINHTTP_NAME_NOT_RESOLVED = 12007;
inline constexpr DWORD ERROR_WINHTTP_INVALID_OPTION = 12009;
inline constexpr DWORD ERROR_WINHTTP_INCORRECT_HANDLE_TYPE = 12018;
inline constexpr DWORD ERROR_WINHTTP_INCORRECT_HANDLE_STATE = 12019;
inline constexpr DWORD ERROR_WINHTTP_CANNOT_CONNECT = 12029;
inline constexpr DWORD ERROR_WINHTTP_CONNECTION_ERROR = 12030;
inline constexpr DWORD ERROR_WINHTTP_HEADER_NOT_FOUND = 12150;
inline constexpr DWORD ERROR_WINHTTP_INVALID_SERVER_RESPONSE = 12152;
inline constexpr DWORD ERROR_WINHTTP_REDIRECT_FAILED = 12156;
inline constexpr DWORD ERROR_WINHTTP_SECURE_FAILURE = 12175;
inline constexpr DWORD ERROR_WINHTTP_HEADER_SIZE_OVERFLOW = 12182;

// A URL taken apart by WinHttpCrackUrl. A part is asked for by a pointer of null and a length other
// than 0, and then points into the URL; its length counts characters.
struct URL_COMPONENTS {
    DWORD dwStructSize;
    LPWSTR lpszScheme;
    DWORD dwSchemeLength;
    INTERNET_SCHEME nScheme;
    LPWSTR lpszHostName;
    DWORD dwHostNameLength;
    INTERNET_PORT nPort;
    LPWSTR lpszUserName;
    DWORD dwUserNameLength;
    LPWSTR lpszPassword;
    DWORD dwPasswordLength;
    LPWSTR lpszUrlPath;
    DWORD dwUrlPathLength;
    LPWSTR lpszExtraInfo;
    DWORD dwExtraInfoLength;
};
using LPURL_COMPONENTS = URL_COMPONENTS*;

// Takes a URL apart without decoding anything. `length` 0 means zero-terminated, `flags` must be 0.
// Only http and https (ERROR_WINHTTP_UNRECOGNIZED_SCHEME); what isn't a URL is
// ERROR_WINHTTP_INVALID_URL. Nothing goes over the network.
BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, LPURL_COMPONENTS parts);

// A session: user agent and settings for the requests made of it. Proxy names must be null and
// `flags` 0.
HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass,
                      DWORD flags);

// On a session or request; milliseconds, 0 or -1 for none. Resolving and connecting are bounded
// together by the sum of their two; `receive` bounds the time without one byte arriving. An ended
// time-out is ERROR_WINHTTP_TIMEOUT.
BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive);

// The three options that are settings, each a DWORD; every other one is
// ERROR_WINHTTP_INVALID_OPTION. WINHTTP_OPTION_SECURE_PROTOCOLS belongs to a session and takes TLS
// 1.2 alone; the others belong to a session or a request.
BOOL WinHttpSetOption(HINTERNET handle, DWORD option, LPVOID value, DWORD size);

// WINHTTP_OPTION_URL of a request whose response has come: the address that it came from, behind
// all redirects, with the port even if it is the scheme's own. `*size` is in bytes, and on success
// excludes the zero; a buffer too small is ERROR_INSUFFICIENT_BUFFER with the size needed. Every
// other option is ERROR_WINHTTP_INVALID_OPTION.
BOOL WinHttpQueryOption(HINTERNET handle, DWORD option, LPVOID buffer, LPDWORD size);

// Names the server of later requests; nothing goes over the network. `reserved` must be 0.
HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved);

// Prepares a request. Only "GET" (also by null), the default version, no referrer, the default
// accept types, flags 0 or WINHTTP_FLAG_SECURE. `path` holds the query too. Characters that no URL
// holds are sent percent-encoded: spaces, controls, any of "#<>[\]^`{|} and everything beyond ASCII
// (as UTF-8). Everything else is sent unchanged, including dots and escapes that are already there.
HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                             LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags);

// Connects and sends the request. No headers and no body can be added.
BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength, LPVOID optional,
                        DWORD optionalLength, DWORD totalLength, DWORD_PTR context);

// Waits for the response's headers and follows redirects (301, 302, 303, 307 and 308 with a
// Location), at most 10. An eleventh, and one to another scheme than http and https, fails with
// ERROR_WINHTTP_REDIRECT_FAILED. Where the policy forbids one, the redirecting response is
// returned. Headers of more than 64 KiB are ERROR_WINHTTP_HEADER_SIZE_OVERFLOW.
BOOL WinHttpReceiveResponse(HINTERNET request, LPVOID reserved);

// The status as a number (WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, into a DWORD), the
// text of Content-Length as the server sent it, or all headers as it sent them
// (WINHTTP_QUERY_RAW_HEADERS_CRLF), with the empty line behind them. `*size` is in bytes, and on
// success excludes the zero. A header that didn't come is ERROR_WINHTTP_HEADER_NOT_FOUND, a buffer
// too small ERROR_INSUFFICIENT_BUFFER with the size needed.
BOOL WinHttpQueryHeaders(HINTERNET request, DWORD info, LPCWSTR name, LPVOID buffer, LPDWORD size,
                         LPDWORD index);

// Waits until bytes of the body are there and tells how many, 0 at its end. A body that ends before
// its Content-Length ends like any other; a connection that breaks is
// ERROR_WINHTTP_CONNECTION_ERROR, behind the bytes that came before.
BOOL WinHttpQueryDataAvailable(HINTERNET request, LPDWORD available);

// Takes up to `size` bytes of the body, waiting for the first; `*read` 0 is the end of the body.
BOOL WinHttpReadData(HINTERNET request, LPVOID buffer, DWORD size, LPDWORD read);

// Ends a handle; a transfer that still runs is broken off without waiting.
BOOL WinHttpCloseHandle(HINTERNET handle);
