#include "contract.h"

#include <winhttp.h>

using namespace ca::test;

namespace {

std::string failed(const std::string& step) {
    return step + " " + std::to_string(::GetLastError());
}

std::string readBody(HINTERNET request) {
    std::string body;
    DWORD count = 0;
    while (::WinHttpQueryDataAvailable(request, &count)) {
        if (count == 0) {
            return body;
        }
        std::string chunk(count, ' ');
        if (!::WinHttpReadData(request, chunk.data(), count, &count)) {
            break;
        }
        body += chunk.substr(0, count);
    }
    return body + " " + failed("read");
}

std::string exchange(HINTERNET request) {
    DWORD number = WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS, size = 4;
    EXPECT_TRUE(::WinHttpSetOption(request, WINHTTP_OPTION_REDIRECT_POLICY, &number, size));
    number = WINHTTP_DECOMPRESSION_FLAG_ALL; // an option that Wine 8 doesn't know
    EXPECT_EQ(::WinHttpSetOption(request, WINHTTP_OPTION_DECOMPRESSION, &number, size) != 0,
              !onWindows);
    if (!::WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, 0)) {
        return failed("send");
    }
    if (!::WinHttpReceiveResponse(request, nullptr)) {
        return failed("receive");
    }
    EXPECT_TRUE(::WinHttpQueryHeaders(request,
                                      WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                      nullptr, &number, &size, nullptr));
    wchar_t length[64] = L"-";
    size = sizeof(length);
    const BOOL told = ::WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH, nullptr, length,
                                            &size, nullptr);
    EXPECT_EQ(result(told), told ? 0U : ERROR_WINHTTP_HEADER_NOT_FOUND);
    return std::to_string(number) + " " + utf8FromPath(pathFromWide(length)) + " " +
           readBody(request);
}

// "status length body", with "-" for no Content-Length, or the step that failed and the number.
// `port` is a setting's name.
std::string get(const std::string& port, const std::string& path,
                const wchar_t* host = L"127.0.0.1") {
    const HINTERNET session =
        ::WinHttpOpen(L"Contract/1", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    EXPECT_TRUE(::WinHttpSetTimeouts(session, 4000, 4000, 2000, 2000));
    DWORD protocol = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    EXPECT_TRUE(::WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocol, 4));
    const auto number = static_cast<INTERNET_PORT>(std::stoi(setting(port.c_str(), "1")));
    const HINTERNET server = ::WinHttpConnect(session, host, number, 0);
    const HINTERNET request =
        ::WinHttpOpenRequest(server, L"GET", wideFromUtf8(path).c_str(), nullptr, nullptr, nullptr,
                             port.starts_with("TLS") ? WINHTTP_FLAG_SECURE : 0);
    const std::string outcome = exchange(request);
    for (const HINTERNET handle : {request, server, session}) {
        EXPECT_TRUE(::WinHttpCloseHandle(handle));
    }
    return outcome;
}

// Where these bytes are sent, "\n" standing for CR LF.
std::string pathOf(const std::string& response, const std::string& verb) {
    std::string path = "/" + verb + "/";
    for (const char character : response) {
        for (const char byte :
             character == '\n' ? std::string("\r\n") : std::string(1, character)) {
            path += {'%', "0123456789ABCDEF"[byte >> 4 & 15], "0123456789ABCDEF"[byte & 15]};
        }
    }
    return path;
}

std::string answered(const std::string& response, const std::string& verb = "raw") {
    return get("RAW_PORT", pathOf(response, verb));
}

const std::string ok = "HTTP/1.1 200 OK\nConnection: close\n";

} // namespace

// Into port, host and path, or with an error. Rows that Wine 8 reads otherwise aren't asked there:
// it takes a query for a part of the host, lets empty hosts and wrong ports pass, and knows no
// brackets.
TEST(Url, IsTakenApartOrRefused) {
    using Rows = std::map<std::string, std::string>;
    Rows rows{{"http://a", "80 a "},
              {"HTTPS://A.b/", "443 A.b /"},
              {"http://a:8080/p?q=1", "8080 a /p?q=1"},
              {"http://a/p?q#f", "80 a /p?q#f"},
              {"http://a/p#f?q", "80 a /p#f?q"},
              {"http://u:p@a/x@y", "80 a /x@y"},
              {"http://a:/", "80 a /"},
              {"http://a:0/", "0 a /"},
              {"http://a:65535/", "65535 a /"},
              {"http://a/b c/../%41%zz", "80 a /b c/../%41%zz"},
              {"http://a:65536/", "12005"},
              {"http://", "12005"},
              {"http:/a", "12005"},
              {"", "12006"},
              {"httpx://a/", "12006"},
              {" http://a/", "12006"}};
    if (!onWindows) {
        rows.merge(Rows{{"http://a?q", "80 a ?q"},
                        {"http:///p", "12005"},
                        {"http://a:8x/", "12005"},
                        {"http://[::1]:81/x", "81 [::1] /x"},
                        {"http://[::1/", "12005"}});
    }
    for (const auto& [text, expected] : rows) {
        URL_COMPONENTS parts{};
        parts.dwStructSize = sizeof(parts);
        parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = ~DWORD{0};
        const std::wstring url = wideFromUtf8(text);
        const DWORD error = result(::WinHttpCrackUrl(url.c_str(), 0, 0, &parts));
        std::wstring found = std::to_wstring(error);
        if (error == 0) {
            found = std::to_wstring(parts.nPort) + L" " +
                    std::wstring(parts.lpszHostName, parts.dwHostNameLength) + L" " +
                    std::wstring(parts.lpszUrlPath, parts.dwUrlPathLength) +
                    std::wstring(parts.lpszExtraInfo, parts.dwExtraInfoLength);
        }
        EXPECT_EQ(found, wideFromUtf8(expected)) << text;
        EXPECT_EQ(parts.nScheme == INTERNET_SCHEME_HTTPS, text.starts_with("HTTPS"));
    }
}

TEST(Http, ReadsResponsesToTheirEnd) {
    const std::string chunked = ok + "Transfer-Encoding: chunked\n\n5";
    const std::string end = "Location: http://127.0.0.1:" + setting("WEB_PORT") +
                            "/chain/0\nConnection: close\nContent-Length: 0\n\n";
    std::string trailer;
    while (trailer.size() < 70'000) {
        trailer += "A: " + std::string(1000, 'b') + "\n";
    }
    struct Row {
        std::string response, expected;
        bool alsoWine = true;
    };
    for (const Row& row : {Row{ok + "Content-Length: 5\n\nhello", "200 5 hello"},
                           {ok + "\nhello", "200 - hello"},
                           {ok + "Content-Length: 0\n\n", "200 0 "},
                           {"HTTP/1.0 200 OK\n\nhello", "200 - hello"},
                           {ok + "Content-Length: 50\n\ncut short", "200 50 cut short"},
                           {chunked + ";x=1\nhello\n1\n!\n0\nA: b\n\n", "200 - hello!"},
                           {chunked + "\ncut", "200 - cut"},
                           {"HTTP/1.1 199 Odd\n\n", "199 - "},
                           {"HTTP/1.1 204 None\n\n", "204 - "},
                           {"HTTP/1.1 300 Many\n" + end, "300 0 "},
                           {"HTTP/1.1 503 Busy\n\nno", "503 - no"},
                           {"HTTP/1.1 301 Moved\n" + end, "200 3 end"},
                           {"HTTP/1.1 307 Moved\n" + end, "200 3 end"},
                           {"HTTP/1.1 305 Proxy\n" + end, "305 0 "},
                           {"hello\n\n", "receive 12152"},
                           {"", "receive 12152"},
                           // Wine 8 reads a length that is no number as 0, follows neither 303 nor
                           // 308, takes "ftp" for a folder and misses what comes behind 100.
                           {ok + "Content-Length: abc\n\nhello", "200 abc hello", false},
                           {"HTTP/1.1 303 See\n" + end, "200 3 end", false},
                           {"HTTP/1.1 308 Moved\n" + end, "200 3 end", false},
                           {"HTTP/1.1 302 F\nConnection: close\nLocation: ftp://127.0.0.1/\n\n",
                            "receive 12156", false},
                           {"HTTP/1.1 100 Continue\n\n" + ok + "\nok", "200 - ok", false}}) {
        if (row.alsoWine || !onWindows) {
            EXPECT_EQ(answered(row.response), row.expected) << row.response;
        }
    }
    EXPECT_EQ(answered(ok + "Content-Length: 5\n\nhello", "hold"), "200 5 hello");
    EXPECT_EQ(get("WEB_PORT", "/chain/10"), "200 3 end");
    EXPECT_EQ(get("WEB_PORT", "/chain/11"), "receive 12156");
    EXPECT_EQ(get("WEB_PORT", "/loop"), "receive 12156");
}

TEST(Http, FailsWithWindowsNumbers) {
    EXPECT_EQ(get("NO_PORT", "/"), "send 12029");
    EXPECT_EQ(get("WEB_PORT", "/", std::wstring(64, L'a').c_str()), "send 12007");
    // Wine 8 has one number for every failed handshake, and takes its authorities from its host
    // alone.
    const std::string refused = onWindows ? "send 12157" : "send 12175";
    EXPECT_EQ(get("TLS_STRANGER_PORT", "/down"), refused);
    EXPECT_EQ(get("TLS13_PORT", "/down"), refused);
    EXPECT_EQ(get("TLS_PORT", "/down"), onWindows ? refused : "200 3 end");
    if (onWindows) {
        GTEST_SKIP() << "Wine 8 tells WinSock's numbers, and waits for the first byte for good";
    }
    EXPECT_EQ(answered("", "reset"), "receive 12030");
    EXPECT_EQ(answered(ok + "Content-Length: 50\n\nhello", "hold"), "200 50 hello read 12002");
    EXPECT_EQ(answered("HTTP/1.1 200 OK\nConte", "hold"), "receive 12002");
}

TEST(Http, UndoesCodings) {
    if (onWindows) {
        GTEST_SKIP() << "Wine 8 leaves them alone";
    }
    const std::string gzip(
        "\x1f\x8b\x08\0\0\0\0\0\0\3\xcb\x48\xcd\xc9\xc9\7\0\x86\xa6\x10\x36\5\0\0\0", 25);
    const std::string bare("\xcb\x48\xcd\xc9\xc9\7\0", 7);
    const std::string zlib = "\x78\x9c" + bare + std::string("\6\x2c\2\x15", 4);
    for (const auto& [coding, body, decoded] : {std::tuple("gzip", gzip, "hello"),
                                                {"gzip", gzip + gzip, "hellohello"},
                                                {"gzip", gzip.substr(0, 14), "hel"},
                                                {"deflate", zlib, "hello"},
                                                {"deflate", bare, "hello"},
                                                {"gzip", std::string("none"), " read 12152"},
                                                {"br", std::string("left"), "left"}}) {
        EXPECT_EQ(answered(ok + "Content-Encoding: " + coding + "\n\n" + body),
                  std::string("200 - ") + decoded)
            << coding;
    }
}

TEST(Http, ReadsLongBodiesFromARealServer) {
    std::string numbers;
    for (int number = 1; number <= 300000; ++number) {
        numbers += std::to_string(number) + "\n";
    }
    const std::string whole = "200 " + std::to_string(numbers.size()) + " " + numbers;
    EXPECT_TRUE(get("WEB_PORT", "/numbers.txt") == whole);
    EXPECT_TRUE(get("WEB_PORT", "/packed/numbers.txt") == (onWindows ? whole : "200 - " + numbers));
}

// the agent, the connection, no accepted types, the codings
TEST(Http, SendsThePathEscapedAndFewHeaderFields) {
    EXPECT_EQ(
        get("WEB_PORT", "/echo/ x/é€/%41%2f/../a//b;~!$&'()*+,=:@?q=\"1\"<>\\^`{|}[]").substr(8),
        "GET "
        "/echo/%20x/%C3%A9%E2%82%AC/%41%2f/../a//"
        "b;~!$&'()*+,=:@?q=%221%22%3C%3E%5C%5E%60%7B%7C%7D%5B%5D HTTP/1.1 "
        "Contract/1 Keep-Alive ," +
            std::string(onWindows ? "" : "gzip, deflate"));
}
