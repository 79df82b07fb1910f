#include "http/transfer.h"

#include "http/authorities.h"
#include "http/curl_result.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>
#include <winhttp.h>

namespace ca::win32 {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long socketPieceSize = 128L * 1024; // what libcurl reads at once
// WinHTTP's default for the head of one response
constexpr std::size_t maximumHeadBytes = 64UL * 1024;
constexpr int maximumRedirects = 10; // WinHTTP's default
constexpr int longestWait = 1000;    // ms; libcurl's own timers end a wait sooner

curl_off_t bytesMoved(CURL* easy) {
    curl_off_t inBody = 0;
    long inHead = 0;
    ::curl_easy_getinfo(easy, CURLINFO_SIZE_DOWNLOAD_T, &inBody);
    ::curl_easy_getinfo(easy, CURLINFO_HEADER_SIZE, &inHead);
    return inBody + inHead;
}

} // namespace

Transfer::Transfer(TransferSettings chosen) : settings(std::move(chosen)) {}

Transfer::~Transfer() {
    if (curl) {
        ::curl_multi_remove_handle(curl.multi, curl.easy);
    }
    ::curl_slist_free_all(fields);
}

bool Transfer::fail(DWORD number) {
    failure = number;
    ended = true;
    return false;
}

bool Transfer::configure() {
    const auto set = [this](CURLoption option, auto value) {
        ::curl_easy_setopt(curl.easy, option, value);
    };
    set(CURLOPT_NOSIGNAL, 1L);
    // a name server that never answers doesn't hold up the end of a request
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_TCP_NODELAY, 0L); // a request goes out in one piece, so there is nothing to delay
    set(CURLOPT_USERAGENT, settings.userAgent.c_str());
    set(CURLOPT_BUFFERSIZE, socketPieceSize);
    set(CURLOPT_CONNECTTIMEOUT_MS, settings.connectTimeout);
    // The size of a body is counted here: Windows takes a body cut short for a whole one, and a
    // length it can't read for none. Codings are undone here, because libcurl keeps all that one
    // read decodes to while it is paused.
    set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
    set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeaderLine);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_PREREQFUNCTION, &Transfer::onSend);
    set(CURLOPT_PREREQDATA, static_cast<void*>(this));
    set(CURLOPT_SSLVERSION,
        static_cast<long>(CURL_SSLVERSION_TLSv1_2) |
            (settings.onlyTls12 ? static_cast<long>(CURL_SSLVERSION_MAX_TLSv1_2) : 0L));
    if (!settings.proxyFromEnvironment) {
        set(CURLOPT_PROXY, "");
    }
    useHostAuthorities(curl.easy);
    return setHeaderFields();
}

// The fields that WinHTTP sends, and not libcurl's "Accept".
bool Transfer::setHeaderFields() {
    constexpr const char* encodings[] = {"", "Accept-Encoding: gzip", "Accept-Encoding: deflate",
                                         "Accept-Encoding: gzip, deflate"};
    for (const char* field :
         {"Accept:", "Connection: Keep-Alive", encodings[settings.decompression]}) {
        curl_slist* longer = *field == '\0' ? fields : ::curl_slist_append(fields, field);
        if (longer == nullptr) {
            return fail(ERROR_NOT_ENOUGH_MEMORY);
        }
        fields = longer;
    }
    ::curl_easy_setopt(curl.easy, CURLOPT_HTTPHEADER, fields);
    return true;
}

bool Transfer::start() {
    head = {};
    body = {};
    headBytes = 0;
    sent = paused = ended = false;
    if (::curl_easy_setopt(curl.easy, CURLOPT_URL, settings.url.c_str()) != CURLE_OK ||
        ::curl_multi_add_handle(curl.multi, curl.easy) != CURLM_OK) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return pump([this] { return sent; });
}

bool Transfer::send() {
    if (!curl) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return configure() && start();
}

bool Transfer::receive() {
    for (int redirects = 0; pump([this] { return head.complete(); }); ++redirects) {
        if (!head.complete()) {
            return fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
        }
        if (!isToBeFollowed()) {
            return true;
        }
        if (redirects == maximumRedirects) {
            return fail(ERROR_WINHTTP_REDIRECT_FAILED);
        }
        if (!follow()) {
            return false;
        }
    }
    return false;
}

bool Transfer::isToBeFollowed() const {
    if (head.redirect().empty() ||
        settings.redirectPolicy == WINHTTP_OPTION_REDIRECT_POLICY_NEVER) {
        return false;
    }
    return settings.redirectPolicy == WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS ||
           settings.url.starts_with("http:") ||
           !resolveLocation(settings.url, head.redirect()).starts_with("http:");
}

// The body of the answer that redirects isn't waited for: its connection ends here.
bool Transfer::follow() {
    settings.url = resolveLocation(settings.url, head.redirect());
    if (settings.url.empty()) {
        return fail(ERROR_WINHTTP_REDIRECT_FAILED);
    }
    ::curl_multi_remove_handle(curl.multi, curl.easy);
    return start();
}

// Moves the transfer on until `condition` holds or it has ended. False if it failed.
template <class Condition>
bool Transfer::pump(Condition condition) {
    curl_off_t moved = bytesMoved(curl.easy);
    Clock::time_point lastMove = Clock::now();
    while (!condition() && !ended) {
        int running = 0;
        // Twice before the request is out: a near server has taken the connection by then,
        // and waiting costs more.
        for (int tries = sent ? 1 : 2; tries > 0 && !condition(); --tries) {
            if (::curl_multi_perform(curl.multi, &running) != CURLM_OK) {
                return fail(ERROR_WINHTTP_INTERNAL_ERROR);
            }
        }
        if (condition()) {
            return true;
        }
        if (running == 0) {
            return collectResult();
        }
        const curl_off_t movedNow = bytesMoved(curl.easy);
        if (moved != movedNow || !sent) {
            moved = movedNow;
            lastMove = Clock::now();
        }
        int wait = longestWait;
        if (settings.receiveTimeout > 0) {
            const auto quiet =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastMove)
                    .count();
            if (quiet >= settings.receiveTimeout) {
                return fail(ERROR_WINHTTP_TIMEOUT);
            }
            wait = static_cast<int>(std::min<long>(longestWait, settings.receiveTimeout - quiet));
        }
        ::curl_multi_poll(curl.multi, nullptr, 0, wait, nullptr);
    }
    return true;
}

bool Transfer::collectResult() {
    ended = true;
    int left = 0;
    const CURLMsg* message = ::curl_multi_info_read(curl.multi, &left);
    const CURLcode result = message == nullptr ? CURLE_OK : message->data.result;
    if (result == CURLE_OK || (result == CURLE_PARTIAL_FILE && head.complete())) {
        return true;
    }
    return failure == ERROR_SUCCESS ? fail(errorFromResult(result)) : false;
}

bool Transfer::resume() {
    paused = false;
    // which may hand over bytes at once
    const CURLcode result = ::curl_easy_pause(curl.easy, CURLPAUSE_CONT);
    return result == CURLE_OK || fail(errorFromResult(result));
}

bool Transfer::available(std::span<const char>& bytes) {
    for (;;) {
        bool sound = true;
        bytes = body.front(sound);
        if (!bytes.empty()) {
            return true;
        }
        if (!sound) {
            return fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
        }
        if (failure != ERROR_SUCCESS) {
            return false;
        }
        if (!paused && (ended || body.whole())) {
            return true;
        }
        if (!paused || resume()) {
            // a failure shows behind the bytes before it
            pump([this] { return body.holds() || body.whole(); });
        }
    }
}

void Transfer::takeHeaderLine(std::string_view line) {
    if (line != "\r\n" && line != "\n") {
        head.takeLine(line);
        return;
    }
    long status = 0;
    ::curl_easy_getinfo(curl.easy, CURLINFO_RESPONSE_CODE, &status);
    head.finish(status);
    if (head.complete()) {
        const DWORD flag = head.coding() == Coding::gzip ? WINHTTP_DECOMPRESSION_FLAG_GZIP
                                                         : WINHTTP_DECOMPRESSION_FLAG_DEFLATE;
        body = Body(head.bodySize(),
                    (settings.decompression & flag) != 0 ? head.coding() : Coding::none);
    }
}

// libcurl is C: nothing may be thrown through it. 0 bytes taken ends the transfer.
std::size_t Transfer::onHeaderLine(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    if (transfer.head.complete()) {
        return size * count; // the trailer of a chunked body
    }
    transfer.headBytes += size * count;
    if (transfer.headBytes > maximumHeadBytes) {
        transfer.failure = ERROR_WINHTTP_HEADER_SIZE_OVERFLOW;
        return 0;
    }
    try {
        transfer.takeHeaderLine({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return size * count;
}

std::size_t Transfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        transfer.paused = !transfer.body.take({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return transfer.paused ? CURL_WRITEFUNC_PAUSE : size * count;
}

int Transfer::onSend(void* self, char*, char*, int, int) {
    static_cast<Transfer*>(self)->sent = true;
    return CURL_PREREQFUNC_OK;
}

} // namespace ca::win32
