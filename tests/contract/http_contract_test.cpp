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
    DWORD number = WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS;
    EXPECT_TRUE(::WinHttpSetOption(request, WINHTTP_OPTION_REDIRECT_POLICY, &number, 4));
    number = WINHTTP_DECOMPRESSION_FLAG_ALL; // an option that Wine 8 doesn't know
    EXPECT_EQ(::WinHttpSetOption(request, WINHTTP_OPTION_DECOMPRESSION, &number, 4) != 0,
              !onWindows);
    EXPECT_TRUE(!::WinHttpSetOption(request, 9999, &number, 4) &&
                ::GetLastError() == ERROR_WINHTTP_INVALID_OPTION);
    if (!::WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, 0)) {
        return failed("send");
    }
    if (!::WinHttpReceiveResponse(request, nullptr)) {
        return failed("receive");
    }
    DWORD size = 4;
    EXPECT_TRUE(::WinHttpQueryHeaders(request,
                                      WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                      nullptr, &number, &size, nullptr));
    wchar_t length[64] = L"-";
    size = sizeof(length);
    EXPECT_TRUE(::WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH, nullptr, length, &size,
                                      nullptr) ||
                ::GetLastError() == ERROR_WINHTTP_HEADER_NOT_FOUND);
    return std::to_string(number) + " " + utf8FromPath(pathFromWide(length)) + " " +
           readBody(request);
}

// An answer's head and where it came from.
std::string headOf(HINTERNET request) {
    std::wstring head(2000, L'\0'), url(2000, L'\0');
    auto size = static_cast<DWORD>(head.size() * sizeof(wchar_t)), none = DWORD{0};
    EXPECT_TRUE(::WinHttpQueryHeaders(request, WINHTTP_QUERY_RAW_HEADERS_CRLF, nullptr, head.data(),
                                      &size, nullptr));
    EXPECT_FALSE(::WinHttpQueryOption(request, WINHTTP_OPTION_URL, nullptr, &none));
    const bool toldSize = ::GetLastError() == ERROR_INSUFFICIENT_BUFFER;
    EXPECT_TRUE(onWindows || // Wine 8 lacks this option
                (toldSize && ::WinHttpQueryOption(request, WINHTTP_OPTION_URL, url.data(), &none)));
    return utf8FromPath(pathFromWide(head.substr(0, size / sizeof(wchar_t)) + url.c_str()));
}

// "status length body", with "-" for no Content-Length, or the step that failed and the number.
// `port` is a setting's name. `head` gets headOf.
std::string get(const std::string& port, const std::string& path,
                const std::wstring& host = L"127.0.0.1", std::string* head = nullptr) {
    const HINTERNET session =
        ::WinHttpOpen(L"Contract/1", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    EXPECT_TRUE(::WinHttpSetTimeouts(session, 4000, 4000, 2000, 2000));
    DWORD protocol = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    EXPECT_TRUE(::WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocol, 4));
    const auto number = static_cast<INTERNET_PORT>(std::atoi(setting(port.c_str()).c_str()));
    const HINTERNET server = ::WinHttpConnect(session, host.c_str(), number == 0 ? 1 : number, 0);
    const HINTERNET request =
        ::WinHttpOpenRequest(server, L"GET", wideFromUtf8(path).c_str(), nullptr, nullptr, nullptr,
                             port.starts_with("TLS") ? WINHTTP_FLAG_SECURE : 0);
    const std::string result = exchange(request);
    if (head != nullptr) {
        *head = headOf(request);
    }
    for (const HINTERNET handle : {request, server, session}) {
        EXPECT_TRUE(::WinHttpCloseHandle(handle));
    }
    return result;
}

// Has these bytes sent, "\n" standing for CR LF.
std::string answered(const std::string& answer, const std::string& verb = "raw") {
    std::string path = "/" + verb + "/";
    for (const char character : answer) {
        for (const char byte :
             character == '\n' ? std::string("\r\n") : std::string(1, character)) {
            path += {'%', "0123456789ABCDEF"[byte >> 4 & 15], "0123456789ABCDEF"[byte & 15]};
        }
    }
    return get("RAW_PORT", path);
}

// What is asked; what comes of it; and, where Wine 8 is known to differ, what comes of it there.
struct Row {
    Row(const std::string& question, const std::string& answer) : Row(question, answer, answer) {}
    Row(std::string question, const std::string& answer, const std::string& wine)
        : asked(std::move(question)), expected(onWindows ? wine : answer) {}
    std::string asked, expected;
};

void expectAnswers(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(answered(row.asked), row.expected) << row.asked;
    }
}

const std::string ok = "HTTP/1.1 200 OK\nConnection: close\n";

} // namespace

TEST(Url, IsTakenApartOrRefused) { // into port, host and path, or with an error
    for (const Row& row :
         {Row("http://a", "80 a "), Row("HTTPS://A.b/", "443 A.b /"),
          Row("http://a:8080/p?q=1", "8080 a /p?q=1"), Row("http://a/p?q#f", "80 a /p?q#f"),
          Row("http://a/p#f?q", "80 a /p#f?q"), Row("http://u:p@a/x@y", "80 a /x@y"),
          Row("http://a:/", "80 a /"), Row("http://a:0/", "0 a /"),
          Row("http://a:65535/", "65535 a /"), Row("http://a/b c/../%41%zz", "80 a /b c/../%41%zz"),
          Row("http://a:65536/", "12005"), Row("http://", "12005"), Row("http:/a", "12005"),
          Row("http:a", "12005"), Row("", "12006"), Row("httpx://a/", "12006"),
          Row(" http://a/", "12006"),
          // Wine 8 takes a query for a part of the host, lets empty hosts and wrong ports pass,
          // and knows no brackets.
          Row("http://a?q", "80 a ?q", "80 a?q "), Row("http:///p", "12005", "80  /p"),
          Row("http://u@/", "12005", "80  /"), Row("http://a:8x/", "12005", "8 a /"),
          Row("http://a:-1/", "12005", "0 a /"), Row("http://[::1]:81/x", "81 [::1] /x", "0 [ /x"),
          Row("http://[::1/", "12005", "0 [ /")}) {
        URL_COMPONENTS parts{};
        parts.dwStructSize = sizeof(parts);
        parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = ~DWORD{0};
        const std::wstring url = wideFromUtf8(row.asked);
        std::wstring found;
        if (::WinHttpCrackUrl(url.c_str(), 0, 0, &parts)) {
            found = std::to_wstring(parts.nPort) + L" " +
                    std::wstring(parts.lpszHostName, parts.dwHostNameLength) + L" " +
                    std::wstring(parts.lpszUrlPath, parts.dwUrlPathLength) +
                    std::wstring(parts.lpszExtraInfo, parts.dwExtraInfoLength);
        } else {
            found = std::to_wstring(::GetLastError());
        }
        EXPECT_EQ(found, wideFromUtf8(row.expected)) << row.asked;
        EXPECT_EQ(parts.nScheme == INTERNET_SCHEME_HTTPS, row.asked.starts_with("HTTPS"));
    }
}

TEST(Http, EndsBodiesWhereTheyEnd) {
    expectAnswers(
        {Row(ok + "Content-Length: 5\n\nhello", "200 5 hello"), Row(ok + "\nhello", "200 - hello"),
         Row(ok + "Content-Length: 0\n\n", "200 0 "),
         Row("HTTP/1.0 200 OK\n\nhello", "200 - hello"),
         Row(ok + "Content-Length: 50\n\ncut short", "200 50 cut short"),
         Row(ok + "Transfer-Encoding: chunked\n\n5;x=1\nhello\n1\n!\n0\nA: b\n\n", "200 - hello!"),
         Row(ok + "Transfer-Encoding: chunked\n\n5\ncut", "200 - cut"),
         Row(ok + "Content-Length: abc\n\nhello", "200 abc hello", "200 abc ")});
    EXPECT_EQ(answered(ok + "Content-Length: 5\n\nhello", "hold"), "200 5 hello");
}

TEST(Http, GivesTheStatusOfTheLastAnswer) {
    const std::string end = "Location: http://127.0.0.1:" + setting("WEB_PORT") +
                            "/chain/0\nConnection: close\nContent-Length: 0\n\n";
    expectAnswers(
        {Row("HTTP/1.1 199 Odd\n\n", "199 - "), Row("HTTP/1.1 204 None\n\n", "204 - "),
         Row("HTTP/1.1 299 Odd\n\nok", "299 - ok"), Row("HTTP/1.1 300 Many\n" + end, "300 0 "),
         Row("HTTP/1.1 503 Busy\n\nno", "503 - no"), Row("HTTP/1.1 301 Moved\n" + end, "200 3 end"),
         Row("HTTP/1.1 307 Moved\n" + end, "200 3 end"),
         Row("HTTP/1.1 305 Proxy\n" + end, "305 0 "),
         // Wine 8 follows neither 303 nor 308, takes "ftp" for a folder and misses
         // what comes behind 100.
         Row("HTTP/1.1 303 See\n" + end, "200 3 end", "303 0 "),
         Row("HTTP/1.1 308 Moved\n" + end, "200 3 end", "308 0 "),
         Row("HTTP/1.1 302 F\nConnection: close\nLocation: ftp://127.0.0.1/\n\n", "receive 12156",
             "receive 12152"),
         Row("HTTP/1.1 100 Continue\n\n" + ok + "\nok", "200 - ok", "receive 12152")});
    EXPECT_EQ(get("WEB_PORT", "/chain/10"), "200 3 end");
    EXPECT_EQ(get("WEB_PORT", "/chain/11"), "receive 12156");
    EXPECT_EQ(get("WEB_PORT", "/loop"), "receive 12156");
}

TEST(Http, FailsWithWindowsNumbers) {
    expectAnswers({Row("hello\n\n", "receive 12152"), Row("", "receive 12152")});
    EXPECT_EQ(get("1", "/"), "send 12029");
    EXPECT_EQ(get("WEB_PORT", "/", std::wstring(64, L'a') + L".invalid"), "send 12007");
    // Wine 8 has one number for every failed handshake, and takes its
    // authorities from its host alone.
    EXPECT_EQ(get("TLS_STRANGER_PORT", "/down"), onWindows ? "send 12157" : "send 12175");
    EXPECT_EQ(get("TLS13_PORT", "/down"), onWindows ? "send 12157" : "send 12175");
    EXPECT_EQ(get("TLS_PORT", "/down"), onWindows ? "send 12157" : "200 3 end");
    // for which Wine 8 tells now WinSock's number, now 12152
    const std::string broken = answered("", "reset");
    EXPECT_TRUE(broken == "receive 12030" || (onWindows && broken.starts_with("receive 1")))
        << broken;
}

TEST(Http, UndoesCodings) { // which Wine 8 leaves alone
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
                  "200 - " + (onWindows ? body : decoded))
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

TEST(Http, ShowsTheLastAnswersHeadAndAddress) {
    std::string head;
    get("WEB_PORT", "/chain/2", L"127.0.0.1", &head);
    EXPECT_TRUE(head.starts_with("HTTP/1.1 200 OK\r\n")) << head;
    EXPECT_NE(head.find("\r\nContent-Length: 3\r\n"), std::string::npos) << head;
    const std::string url = onWindows ? "" : "http://127.0.0.1:" + setting("WEB_PORT") + "/chain/0";
    EXPECT_TRUE(head.ends_with("\r\n\r\n" + url)) << head;
}

TEST(Http, GivesUpOnASilentServer) {
    const std::string cut = answered("HTTP/1.1 200 OK\nContent-Length: 50\n\nhello", "hold");
    // Wine 8 tells WinSock's number
    EXPECT_EQ(cut, onWindows ? "200 50 hello read 10060" : "200 50 hello read 12002");
    if (onWindows) {
        GTEST_SKIP() << "Wine 8 waits for the first byte without an end";
    }
    EXPECT_EQ(answered("HTTP/1.1 200 OK\nConte", "hold"), "receive 12002");
}
