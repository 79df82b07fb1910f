#include "contract.h"

#include <winhttp.h>

using namespace ca::test;

namespace {

struct Target {
    std::wstring host;
    std::wstring path;
    INTERNET_PORT port = 0;
    INTERNET_SCHEME scheme = 0;
};

DWORD crack(const std::string& url, Target& target) {
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof(parts);
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = ~DWORD{0};
    const std::wstring wide = wideFromUtf8(url);
    if (!::WinHttpCrackUrl(wide.c_str(), 0, 0, &parts))
        return ::GetLastError();
    const std::wstring extra(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    target = {{parts.lpszHostName, parts.dwHostNameLength},
              {parts.lpszUrlPath, parts.dwUrlPathLength},
              parts.nPort,
              parts.nScheme};
    target.path += extra;
    return 0;
}

std::string failed(const char* step) {
    return step + (" " + std::to_string(::GetLastError()));
}

std::string readBody(HINTERNET request) {
    std::string body;
    DWORD count = 0;
    while (::WinHttpQueryDataAvailable(request, &count)) {
        if (count == 0)
            return body;
        const std::size_t before = body.size();
        body.resize(before + count);
        if (!::WinHttpReadData(request, body.data() + before, count, &count))
            break;
        body.resize(before + count);
    }
    return body + " " + failed("read");
}

std::string exchange(HINTERNET request) {
    DWORD number = WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS;
    EXPECT_TRUE(::WinHttpSetOption(request, WINHTTP_OPTION_REDIRECT_POLICY, &number, sizeof(number)));
    number = WINHTTP_DECOMPRESSION_FLAG_ALL; // an option that Wine 8 doesn't know
    EXPECT_EQ(::WinHttpSetOption(request, WINHTTP_OPTION_DECOMPRESSION, &number, sizeof(number)) != 0, !onWindows);
    EXPECT_TRUE(!::WinHttpSetOption(request, 9999, &number, sizeof(number)) &&
                ::GetLastError() == ERROR_WINHTTP_INVALID_OPTION);
    if (!::WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, 0))
        return failed("send");
    if (!::WinHttpReceiveResponse(request, nullptr))
        return failed("receive");
    DWORD size = sizeof(number);
    if (!::WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, nullptr, &number, &size,
                               nullptr))
        return failed("status");
    wchar_t length[64] = L"-";
    size = sizeof(length);
    EXPECT_TRUE(::WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH, nullptr, length, &size, nullptr) ||
                ::GetLastError() == ERROR_WINHTTP_HEADER_NOT_FOUND);
    return std::to_string(number) + " " + utf8FromPath(pathFromWide(length)) + " " + readBody(request);
}

// "status length body", with "-" for no Content-Length, or the step that failed and the number.
std::string get(const std::string& url) {
    Target target;
    EXPECT_EQ(crack(url, target), 0U) << url;
    const HINTERNET session = ::WinHttpOpen(L"Contract/1", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    EXPECT_TRUE(::WinHttpSetTimeouts(session, 4000, 4000, 2000, 2000));
    DWORD protocol = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    EXPECT_TRUE(::WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocol, sizeof(protocol)));
    const HINTERNET connection = ::WinHttpConnect(session, target.host.c_str(), target.port, 0);
    const DWORD flags = target.scheme == INTERNET_SCHEME_HTTPS ? WINHTTP_FLAG_SECURE : 0;
    const HINTERNET request =
        ::WinHttpOpenRequest(connection, L"GET", target.path.c_str(), nullptr, nullptr, nullptr, flags);
    std::string result = exchange(request);
    for (const HINTERNET handle : {request, connection, session})
        EXPECT_TRUE(::WinHttpCloseHandle(handle));
    return result;
}

std::string at(const char* port, const std::string& path) {
    return (std::string(port).starts_with("TLS") ? "https://127.0.0.1:" : "http://127.0.0.1:") + setting(port) + path;
}

// The address at which the answer waits; "\n" in it stands for CR LF.
std::string raw(const std::string& answer, const std::string& verb = "raw") {
    std::string url = at("RAW_PORT", "/" + verb + "/");
    for (const char character : answer)
        for (const char byte : character == '\n' ? std::string("\r\n") : std::string(1, character))
            url += {'%', "0123456789ABCDEF"[byte >> 4 & 15], "0123456789ABCDEF"[byte & 15]};
    return url;
}

// For where both agree, and where Wine 8 is known to answer otherwise.
struct Row {
    Row(std::string address, std::string answer) : Row(address, answer, answer) {}
    Row(std::string address, std::string answer, std::string wine)
        : url(std::move(address)), expected(onWindows ? wine : answer) {}
    std::string url;
    std::string expected;
};

// A row names an address, or else an answer to be sent.
void expectAnswers(std::initializer_list<Row> rows) {
    for (const Row& row : rows)
        EXPECT_EQ(get(row.url.starts_with("http") ? row.url : raw(row.url)), row.expected) << row.url;
}

} // namespace

TEST(Url, IsTakenApartOrRefused) { // into port, host and path, or with an error
    for (const Row& row :
         {Row("http://a", "80 a "), Row("HTTPS://A.b/", "443 A.b /"), Row("http://a:8080/p?q=1", "8080 a /p?q=1"),
          Row("http://a/p?q#f", "80 a /p?q#f"), Row("http://a/p#f?q", "80 a /p#f?q"),
          Row("http://u:p@a/x@y", "80 a /x@y"), Row("http://a:/", "80 a /"), Row("http://a:0/", "0 a /"),
          Row("http://a:65535/", "65535 a /"), Row("http://a/b c/../%41%zz", "80 a /b c/../%41%zz"),
          Row("http://a:65536/", "12005"), Row("http://", "12005"), Row("http:/a", "12005"), Row("http:a", "12005"),
          Row("", "12006"), Row("a/b", "12006"), Row("//a/b", "12006"), Row("ftp://a/", "12006"),
          Row("httpx://a/", "12006"), Row(" http://a/", "12006"),
          // Wine 8 takes a query for a part of the host, lets empty hosts and wrong ports pass, and knows no brackets.
          Row("http://a?q", "80 a ?q", "80 a?q "), Row("http:///p", "12005", "80  /p"),
          Row("http://u@/", "12005", "80  /"), Row("http://a:8x/", "12005", "8 a /"),
          Row("http://a:-1/", "12005", "0 a /"), Row("http://[::1]:81/x", "81 [::1] /x", "0 [ /x"),
          Row("http://[::1/", "12005", "0 [ /")}) {
        Target target;
        const DWORD error = crack(row.url, target);
        const std::wstring parts = std::to_wstring(target.port) + L" " + target.host + L" " + target.path;
        EXPECT_EQ(error == 0 ? parts : std::to_wstring(error), wideFromUtf8(row.expected)) << row.url;
        EXPECT_EQ(target.scheme == INTERNET_SCHEME_HTTPS, row.url.starts_with("HTTPS"));
    }
}

const std::string ok = "HTTP/1.1 200 OK\nConnection: close\n";

TEST(Http, EndsBodiesWhereTheyEnd) {
    expectAnswers({Row(ok + "Content-Length: 5\n\nhello", "200 5 hello"), Row(ok + "\nhello", "200 - hello"),
                   Row(ok + "Content-Length: 0\n\n", "200 0 "), Row("HTTP/1.0 200 OK\n\nhello", "200 - hello"),
                   Row(ok + "Content-Length: 50\n\ncut short", "200 50 cut short"),
                   Row(ok + "Transfer-Encoding: chunked\n\n5;x=1\nhello\n1\n!\n0\nA: b\n\n", "200 - hello!"),
                   Row(ok + "Transfer-Encoding: chunked\n\n5\ncut", "200 - cut"),
                   Row(raw(ok + "Content-Length: 5\n\nhello", "hold"), "200 5 hello"),
                   Row(ok + "Content-Length: abc\n\nhello", "200 abc hello", "200 abc ")});
}

TEST(Http, GivesTheStatusOfTheLastAnswer) {
    const std::string end = "Location: /chain/0/x\nConnection: close\nContent-Length: 0\n\n";
    const auto to = [](const std::string& place) {
        return "HTTP/1.1 302 F\nConnection: close\nLocation: " + place + "\n\n";
    };
    expectAnswers({Row("HTTP/1.1 199 Odd\n\n", "199 - "), Row("HTTP/1.1 204 None\n\n", "204 - "),
                   Row("HTTP/1.1 299 Odd\n\nok", "299 - ok"), Row("HTTP/1.1 300 Many\n" + end, "300 0 "),
                   Row("HTTP/1.1 503 Busy\n\nno", "503 - no"), Row("HTTP/1.1 301 Moved\n" + end, "200 3 end"),
                   Row("HTTP/1.1 307 Moved\n" + end, "200 3 end"), Row("HTTP/1.1 305 Proxy\n" + end, "305 0 "),
                   Row(to(at("RAW_PORT", "/chain/0/x")), "200 3 end"), Row(at("RAW_PORT", "/chain/10/x"), "200 3 end"),
                   Row(at("RAW_PORT", "/chain/11/x"), "receive 12156"), Row(at("WEB_PORT", "/loop"), "receive 12156"),
                   // Wine 8 follows neither 303 nor 308, takes "ftp" for a folder and misses what comes behind 100.
                   Row("HTTP/1.1 303 See\n" + end, "200 3 end", "303 0 "),
                   Row("HTTP/1.1 308 Moved\n" + end, "200 3 end", "308 0 "),
                   Row(to("ftp://127.0.0.1/"), "receive 12156", "receive 12152"),
                   Row("HTTP/1.1 100 Continue\n\n" + ok + "\nok", "200 - ok", "receive 12152")});
}

TEST(Http, FailsWithWindowsNumbers) {
    // Wine 8 has one number for every failed handshake, and takes its authorities from its host alone.
    expectAnswers({Row("hello\n\n", "receive 12152"), Row("", "receive 12152"),
                   Row("http://127.0.0.1:1/", "send 12029"),
                   Row("http://" + std::string(64, 'a') + ".invalid/", "send 12007"),
                   Row(at("TLS_STRANGER_PORT", "/"), "send 12175", "send 12157"),
                   Row(at("TLS13_PORT", "/down"), "send 12175", "send 12157"),
                   Row(at("TLS_PORT", "/down"), "200 3 end", "send 12157")});
    const std::string broken = get(raw("", "reset")); // for which Wine 8 tells now WinSock's number, now 12152
    EXPECT_TRUE(broken == "receive 12030" || (onWindows && broken.starts_with("receive 1"))) << broken;
}

TEST(Http, UndoesCodings) { // which Wine 8 leaves alone
    const std::string gzip("\x1f\x8b\x08\0\0\0\0\0\0\3\xcb\x48\xcd\xc9\xc9\7\0\x86\xa6\x10\x36\5\0\0\0", 25);
    const std::string bare("\xcb\x48\xcd\xc9\xc9\7\0", 7);
    const std::string zlib = "\x78\x9c" + bare + std::string("\6\x2c\2\x15", 4);
    expectAnswers(
        {Row(ok + "Content-Encoding: gzip\nContent-Length: 25\n\n" + gzip, "200 25 hello", "200 25 " + gzip),
         Row(ok + "Content-Encoding: gzip\n\n" + gzip + gzip, "200 - hellohello", "200 - " + gzip + gzip),
         Row(ok + "Content-Encoding: gzip\n\n" + gzip.substr(0, 14), "200 - hel", "200 - " + gzip.substr(0, 14)),
         Row(ok + "Content-Encoding: deflate\n\n" + zlib, "200 - hello", "200 - " + zlib),
         Row(ok + "Content-Encoding: deflate\n\n" + bare, "200 - hello", "200 - " + bare),
         Row(ok + "Content-Encoding: gzip\n\nhello", "200 -  read 12152", "200 - hello"),
         Row(ok + "Content-Encoding: br\n\nhello", "200 - hello")});
}

TEST(Http, ReadsLongBodiesFromARealServer) {
    std::string numbers;
    for (int number = 1; number <= 300000; ++number)
        numbers += std::to_string(number) + "\n";
    const std::string whole = std::to_string(numbers.size()) + " " + numbers;
    EXPECT_TRUE(get(at("WEB_PORT", "/plain/numbers.txt")) == "200 " + whole);
    EXPECT_TRUE(get(at("WEB_PORT", "/packed/numbers.txt")) == "200 " + (onWindows ? whole : "- " + numbers));
}

TEST(Http, SendsThePathEscapedAndFewHeaderFields) {
    const std::string sent = get(at("RAW_PORT", "/echo/ x/é€/%41%zz/../a//b;~!$&'()*+,=:@?q=\"1\"<>\\^`{|}[]"));
    for (const char* text :
         {" /echo/%20x/%C3%A9%E2%82%AC/%41%zz/../a//b;~!$&'()*+,=:@?q=%221%22%3C%3E%5C%5E%60%7B%7C%7D%5B%5D "
          "HTTP/1.1\r\n",
          "\r\nUser-Agent: Contract/1\r\n", "\r\nConnection: Keep-Alive\r\n", "\r\nHost: 127.0.0.1:"})
        EXPECT_NE(sent.find(text), std::string::npos) << text << sent;
    EXPECT_EQ(sent.find("\r\nAccept: "), std::string::npos) << sent;
    EXPECT_EQ(sent.find("\r\nAccept-Encoding: gzip, deflate\r\n") == std::string::npos, onWindows) << sent;
}

TEST(Http, GivesUpOnASilentServer) {
    const std::string cut = get(raw("HTTP/1.1 200 OK\nContent-Length: 50\n\nhello", "hold"));
    EXPECT_EQ(cut, onWindows ? "200 50 hello read 10060" : "200 50 hello read 12002"); // Wine 8 tells WinSock's number
    if (onWindows)
        GTEST_SKIP() << "Wine 8 waits for the first byte without an end";
    EXPECT_EQ(get(raw("HTTP/1.1 200 OK\nConte", "hold")), "receive 12002");
}
