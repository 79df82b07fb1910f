#include "transfer/exchange.h"

#include "transfer/curl_result.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <winhttp.h>

namespace ca::win32 {

namespace {

using Clock = std::chrono::steady_clock;

// WinHTTP's default for the headers of one response.
constexpr std::size_t maximumHeaderBytes = 64UL * 1024;
// Milliseconds. libcurl's own timers end a wait sooner.
constexpr long longestWait = 1000;

// How long no byte has arrived.
class Silence {
public:
    // `limit` in milliseconds, 0 for none.
    Silence(CURL* easy, long limit) : easy_(easy), limit_(limit), moved_(bytesMoved()) {}

    void restart() { lastMove_ = Clock::now(); }

    // How long to wait for the next byte, in milliseconds; 0 when the limit is reached.
    int nextWait() {
        const curl_off_t moved = bytesMoved();
        if (moved != moved_) {
            moved_ = moved;
            restart();
        }
        if (limit_ <= 0) {
            return longestWait;
        }
        const auto quiet =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastMove_);
        return static_cast<int>(std::clamp<long>(limit_ - quiet.count(), 0, longestWait));
    }

private:
    curl_off_t bytesMoved() const {
        curl_off_t inBody = 0;
        long inHeaders = 0;
        ::curl_easy_getinfo(easy_, CURLINFO_SIZE_DOWNLOAD_T, &inBody);
        ::curl_easy_getinfo(easy_, CURLINFO_HEADER_SIZE, &inHeaders);
        return inBody + inHeaders;
    }

    CURL* const easy_;
    const long limit_;
    curl_off_t moved_;
    Clock::time_point lastMove_ = Clock::now();
};

} // namespace

Exchange::Exchange(const TransferSettings& settings)
    : settings_(settings), fields_(settings.decompression) {}

Exchange::~Exchange() {
    stop();
}

bool Exchange::fail(DWORD number) {
    failure_ = number;
    ended_ = true;
    return false;
}

// A new handle with all options: nothing of an earlier response is left in it.
bool Exchange::prepare() {
    if (!curl_.renew() || fields_.list() == nullptr) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    const auto set = [this](CURLoption option, auto value) {
        ::curl_easy_setopt(curl_.easy(), option, value);
    };
    setOptions(curl_.easy(), settings_);
    set(CURLOPT_HTTPHEADER, fields_.list());
    set(CURLOPT_HEADERFUNCTION, &Exchange::onHeaderLine);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &Exchange::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_PREREQFUNCTION, &Exchange::onSend);
    set(CURLOPT_PREREQDATA, static_cast<void*>(this));
    return true;
}

bool Exchange::start() {
    // A failure stays: nothing is read behind one.
    headers_ = {};
    body_ = {};
    headerBytes_ = 0;
    sent_ = false;
    paused_ = false;
    ended_ = false;
    if (!prepare()) {
        return false;
    }
    if (::curl_easy_setopt(curl_.easy(), CURLOPT_URL, settings_.url.c_str()) != CURLE_OK ||
        ::curl_multi_add_handle(curl_.multi(), curl_.easy()) != CURLM_OK) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return pump([this] { return sent_; });
}

void Exchange::stop() {
    if (curl_.easy() != nullptr) {
        ::curl_multi_remove_handle(curl_.multi(), curl_.easy());
    }
}

bool Exchange::receiveHeaders() {
    if (!pump([this] { return headers_.complete(); })) {
        return false;
    }
    // The server may have closed the connection in an orderly way before the empty line.
    return headers_.complete() || fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
}

// Moves the exchange on until `condition` holds or it has ended.
template <class Condition>
bool Exchange::pump(Condition condition) {
    Silence silence(curl_.easy(), settings_.receiveTimeout);
    while (!condition() && !ended_) {
        int running = 0;
        if (!perform(condition, running)) {
            return fail(ERROR_WINHTTP_INTERNAL_ERROR);
        }
        if (condition()) {
            return true;
        }
        if (running == 0) {
            return collectResult();
        }
        // Connecting has a time-out of its own.
        if (!sent_) {
            silence.restart();
        }
        const int wait = silence.nextWait();
        if (wait == 0) {
            return fail(ERROR_WINHTTP_TIMEOUT);
        }
        ::curl_multi_poll(curl_.multi(), nullptr, 0, wait, nullptr);
    }
    return true;
}

// Has libcurl do what can be done without waiting.
template <class Condition>
bool Exchange::perform(Condition condition, int& running) {
    // Twice before the request is out: a near server has taken the connection by then, and waiting
    // costs more.
    for (int tries = sent_ ? 1 : 2; tries > 0 && !condition(); --tries) {
        if (::curl_multi_perform(curl_.multi(), &running) != CURLM_OK) {
            return false;
        }
    }
    return true;
}

bool Exchange::collectResult() {
    ended_ = true;
    int left = 0;
    const CURLMsg* message = ::curl_multi_info_read(curl_.multi(), &left);
    const CURLcode result = message == nullptr ? CURLE_OK : message->data.result;
    // A chunked body cut short ends like any other, as one shorter than its Content-Length does.
    if (result == CURLE_OK || (result == CURLE_PARTIAL_FILE && headers_.complete())) {
        return true;
    }
    // A callback that gave up knows more than libcurl.
    return failure_ == ERROR_SUCCESS ? fail(errorFromResult(result)) : false;
}

bool Exchange::resume() {
    paused_ = false;
    // It may hand over bytes at once, and pause again.
    const CURLcode result = ::curl_easy_pause(curl_.easy(), CURLPAUSE_CONT);
    return result == CURLE_OK || fail(errorFromResult(result));
}

bool Exchange::available(std::span<const char>& bytes) {
    for (;;) {
        bool sound = true;
        bytes = body_.front(sound);
        if (!bytes.empty()) {
            return true;
        }
        if (!sound) {
            return fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
        }
        if (failure_ != ERROR_SUCCESS) {
            return false;
        }
        if (!paused_ && (ended_ || body_.whole())) {
            return true;
        }
        if (!paused_ || resume()) {
            // A failure isn't returned before the bytes that came before it have been read.
            pump([this] { return body_.holds() || body_.whole(); });
        }
    }
}

void Exchange::takeHeaderLine(std::string_view line) {
    if (line != "\r\n" && line != "\n") {
        headers_.takeLine(line);
        return;
    }
    long status = 0;
    ::curl_easy_getinfo(curl_.easy(), CURLINFO_RESPONSE_CODE, &status);
    headers_.finish(status);
    if (!headers_.complete()) {
        return;
    }
    // A coding that nobody asked to be undone reaches the reader as it came.
    const DWORD flag = headers_.coding() == Coding::gzip ? WINHTTP_DECOMPRESSION_FLAG_GZIP
                                                         : WINHTTP_DECOMPRESSION_FLAG_DEFLATE;
    const bool undone = (settings_.decompression & flag) != 0;
    body_ = Body(headers_.bodySize(), undone ? headers_.coding() : Coding::none);
}

// libcurl is C: nothing may be thrown through it. 0 bytes taken ends the transfer.
std::size_t Exchange::onHeaderLine(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    // The trailer of a chunked body comes here too, and counts: libcurl keeps all of it.
    exchange.headerBytes_ += size * count;
    if (exchange.headerBytes_ > maximumHeaderBytes) {
        exchange.failure_ = ERROR_WINHTTP_HEADER_SIZE_OVERFLOW;
        return 0;
    }
    if (exchange.headers_.complete()) {
        return size * count;
    }
    try {
        exchange.takeHeaderLine({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return size * count;
}

std::size_t Exchange::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    try {
        exchange.paused_ = !exchange.body_.take({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return exchange.paused_ ? CURL_WRITEFUNC_PAUSE : size * count;
}

// libcurl calls it when the connection is made and the request is about to be sent.
int Exchange::onSend(void* self, char*, char*, int, int) {
    static_cast<Exchange*>(self)->sent_ = true;
    return CURL_PREREQFUNC_OK;
}

} // namespace ca::win32
