#include "transfer.h"

#include "crypto.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <openssl/ssl.h>
#include <strings.h>
#include <utility>
#include <winhttp.h>

namespace ca::win32 {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long socketBufferSize = 128L * 1024; // what libcurl reads at once
constexpr std::size_t bodyBufferSize =
    512UL * 1024; // libcurl hands over up to 16 KiB at once and is paused when it is full
constexpr std::size_t decodedBufferSize = 64UL * 1024;  // a few times a CPU cache's first level
constexpr std::size_t maximumHeaderBytes = 64UL * 1024; // WinHTTP's default for the headers of one response
constexpr int maximumRedirects = 10;                    // WinHTTP's default
constexpr int longestWait = 1000;                       // ms; libcurl's own timers end a wait sooner

struct ResultRow {
    CURLcode result;
    DWORD error;
};

constexpr ResultRow resultTable[] = {
    {CURLE_UNSUPPORTED_PROTOCOL, ERROR_WINHTTP_INVALID_SERVER_RESPONSE}, // an answer that isn't HTTP
    {CURLE_URL_MALFORMAT, ERROR_WINHTTP_INVALID_URL},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_WINHTTP_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_WINHTTP_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_WINHTTP_CANNOT_CONNECT},
    {CURLE_WEIRD_SERVER_REPLY, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    {CURLE_WRITE_ERROR, ERROR_NOT_ENOUGH_MEMORY}, // only out of memory do the callbacks give up
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {CURLE_OPERATION_TIMEDOUT, ERROR_WINHTTP_TIMEOUT},
    {CURLE_BAD_FUNCTION_ARGUMENT, ERROR_WINHTTP_INVALID_SERVER_RESPONSE}, // a header field that can't be kept
    {CURLE_SSL_CONNECT_ERROR, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_GOT_NOTHING, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    {CURLE_SEND_ERROR, ERROR_WINHTTP_CONNECTION_ERROR},
    {CURLE_RECV_ERROR, ERROR_WINHTTP_CONNECTION_ERROR},
    {CURLE_PEER_FAILED_VERIFICATION, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_CIPHER, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_CACERT_BADFILE, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_INVALIDCERTSTATUS, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_PROXY, ERROR_WINHTTP_CANNOT_CONNECT},
};

DWORD errorFromResult(CURLcode result) {
    const auto* row = std::find_if(std::begin(resultTable), std::end(resultTable),
                                   [&](const ResultRow& candidate) { return candidate.result == result; });
    return row == std::end(resultTable) ? ERROR_WINHTTP_INTERNAL_ERROR : row->error;
}

void startCurl() {
    [[maybe_unused]] static const CURLcode started = [] {
        startOpenSsl();
        return ::curl_global_init(CURL_GLOBAL_DEFAULT);
    }();
}

// The host's authorities, read once per process and shared by all connections; each of them would otherwise parse some
// hundred certificates. Never freed.
CURLcode useAuthorities(CURL*, void* context, void*) {
    static X509_STORE* const store = [] {
        X509_STORE* made = ::X509_STORE_new();
        if (made != nullptr) {
            ::X509_STORE_set_default_paths(made);
        }
        return made;
    }();
    if (store == nullptr) {
        return CURLE_OUT_OF_MEMORY;
    }
    ::SSL_CTX_set1_cert_store(static_cast<SSL_CTX*>(context), store);
    return CURLE_OK;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isNamed(std::string_view text, std::string_view name) {
    return text.size() == name.size() && ::strncasecmp(text.data(), name.data(), name.size()) == 0;
}

// The address that `location` means when it comes from `base`, without user and password; empty unless it is http or
// https.
std::string resolve(const std::string& base, const std::string& location) {
    const std::unique_ptr<CURLU, decltype(&::curl_url_cleanup)> url(::curl_url(), &::curl_url_cleanup);
    char* text = nullptr;
    if (!url || ::curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_URL, location.c_str(), CURLU_URLENCODE) != CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_USER, nullptr, 0) != CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0) != CURLUE_OK ||
        ::curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
        return {};
    }
    const std::string resolved = text;
    ::curl_free(text);
    return resolved.starts_with("http://") || resolved.starts_with("https://") ? resolved : std::string();
}

curl_off_t bytesMoved(CURL* easy) {
    curl_off_t body = 0;
    long head = 0;
    ::curl_easy_getinfo(easy, CURLINFO_SIZE_DOWNLOAD_T, &body);
    ::curl_easy_getinfo(easy, CURLINFO_HEADER_SIZE, &head);
    return body + head;
}

} // namespace

Transfer::Transfer(TransferSettings chosen) : settings(std::move(chosen)) {
    startCurl();
}

Transfer::~Transfer() {
    stop();
    if (easy != nullptr) {
        ::curl_easy_cleanup(easy);
    }
    if (multi != nullptr) {
        ::curl_multi_cleanup(multi);
    }
    ::curl_slist_free_all(headers);
}

bool Transfer::fail(DWORD number) {
    failure = number;
    ended = true;
    return false;
}

void Transfer::stop() {
    if (easy != nullptr && multi != nullptr) {
        ::curl_multi_remove_handle(multi, easy);
    }
}

bool Transfer::configure() {
    const auto set = [this](CURLoption option, auto value) { ::curl_easy_setopt(easy, option, value); };
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L); // a name server that never answers doesn't hold up the end of a request
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_USERAGENT, settings.userAgent.c_str());
    set(CURLOPT_BUFFERSIZE, socketBufferSize);
    set(CURLOPT_CONNECTTIMEOUT_MS, settings.connectTimeout);
    // The length of a body is counted here: Windows takes a body cut short for a whole one, and a length it can't read
    // for none. Codings are undone here, because libcurl keeps all that one read decodes to while it is paused.
    set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
    set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_PREREQFUNCTION, &Transfer::onSend);
    set(CURLOPT_PREREQDATA, static_cast<void*>(this));
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2) |
                                (settings.onlyTls12 ? static_cast<long>(CURL_SSLVERSION_MAX_TLSv1_2) : 0L));
    if (!settings.proxyFromEnvironment) {
        set(CURLOPT_PROXY, "");
    }
    // A libcurl on another TLS library refuses the function, and then reads the authorities by itself.
    if (::curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &useAuthorities) == CURLE_OK) {
        set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
    std::string encodings = "Accept-Encoding: ";
    encodings += (settings.decompression & WINHTTP_DECOMPRESSION_FLAG_GZIP) != 0 ? "gzip" : "";
    encodings += settings.decompression == WINHTTP_DECOMPRESSION_FLAG_ALL ? ", " : "";
    encodings += (settings.decompression & WINHTTP_DECOMPRESSION_FLAG_DEFLATE) != 0 ? "deflate" : "";
    // The header fields that WinHTTP sends, and not libcurl's "Accept".
    for (const char* line :
         {"Accept:", "Connection: Keep-Alive", settings.decompression == 0 ? "" : encodings.c_str()}) {
        curl_slist* longer = *line == '\0' ? headers : ::curl_slist_append(headers, line);
        if (longer == nullptr) {
            return fail(ERROR_NOT_ENOUGH_MEMORY);
        }
        headers = longer;
    }
    set(CURLOPT_HTTPHEADER, headers);
    return true;
}

bool Transfer::start() {
    response = {};
    sent = false;
    if (::curl_easy_setopt(easy, CURLOPT_URL, settings.url.c_str()) != CURLE_OK ||
        ::curl_multi_add_handle(multi, easy) != CURLM_OK) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return pump([this] { return sent; });
}

bool Transfer::send() {
    easy = ::curl_easy_init();
    multi = ::curl_multi_init();
    if (easy == nullptr || multi == nullptr) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return configure() && start();
}

bool Transfer::receive() {
    for (int redirects = 0; pump([this] { return response.complete; }); ++redirects) {
        if (!response.complete) {
            return fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
        }
        if (!isRedirect()) {
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

bool Transfer::isRedirect() const {
    switch (response.status) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        break;
    default:
        return false;
    }
    const bool intoTheOpen =
        settings.url.starts_with("https:") && !resolve(settings.url, response.location).starts_with("https:");
    return !response.location.empty() && settings.redirectPolicy != WINHTTP_OPTION_REDIRECT_POLICY_NEVER &&
           (!intoTheOpen || settings.redirectPolicy == WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS);
}

// The body of the answer that redirects isn't waited for: its connection ends here.
bool Transfer::follow() {
    settings.url = resolve(settings.url, response.location);
    if (settings.url.empty()) {
        return fail(ERROR_WINHTTP_REDIRECT_FAILED);
    }
    stop();
    receivedBegin = receivedEnd = 0;
    paused = ended = false;
    return start();
}

// Moves the transfer on until `condition` holds or it has ended. False if it failed.
template <class Condition>
bool Transfer::pump(Condition condition) {
    curl_off_t moved = bytesMoved(easy);
    Clock::time_point lastMove = Clock::now();
    while (!condition() && !ended) {
        int running = 0;
        if (::curl_multi_perform(multi, &running) != CURLM_OK) {
            return fail(ERROR_WINHTTP_INTERNAL_ERROR);
        }
        if (condition()) {
            return true;
        }
        if (running == 0) {
            return collectResult();
        }
        const curl_off_t movedNow = bytesMoved(easy);
        if (moved != movedNow || !sent) {
            moved = movedNow;
            lastMove = Clock::now();
        }
        int wait = longestWait;
        if (settings.receiveTimeout > 0) {
            const auto quiet = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastMove).count();
            if (quiet >= settings.receiveTimeout) {
                return fail(ERROR_WINHTTP_TIMEOUT);
            }
            wait = static_cast<int>(std::min<long>(longestWait, settings.receiveTimeout - quiet));
        }
        ::curl_multi_poll(multi, nullptr, 0, wait, nullptr);
    }
    return true;
}

bool Transfer::collectResult() {
    ended = true;
    int left = 0;
    const CURLMsg* message = ::curl_multi_info_read(multi, &left);
    const CURLcode result = message == nullptr ? CURLE_OK : message->data.result;
    if (result == CURLE_OK || (result == CURLE_PARTIAL_FILE && response.complete)) {
        return true;
    }
    return failure == ERROR_SUCCESS ? fail(errorFromResult(result)) : false;
}

bool Transfer::available(std::span<const char>& bytes) {
    for (;;) {
        if (inflater == nullptr) {
            bytes = {received.get() + receivedBegin, receivedEnd - receivedBegin};
        } else {
            if (decodedBegin == decodedEnd) {
                std::span<const char> input(received.get() + receivedBegin, receivedEnd - receivedBegin);
                bool sound = true;
                decodedBegin = 0;
                decodedEnd = inflater->decode(input, {decoded.get(), decodedBufferSize}, sound);
                receivedBegin = receivedEnd - input.size();
                if (!sound && decodedEnd == 0) {
                    return fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
                }
            }
            bytes = {decoded.get() + decodedBegin, decodedEnd - decodedBegin};
        }
        if (!bytes.empty()) {
            return true;
        }
        receivedBegin = receivedEnd = 0;
        if (failure != ERROR_SUCCESS) {
            return false;
        }
        if (bodyEnded() && !paused) {
            return true;
        }
        if (paused) {
            paused = false;
            const CURLcode resumed = ::curl_easy_pause(easy, CURLPAUSE_CONT);
            if (resumed != CURLE_OK) {
                return fail(errorFromResult(resumed));
            }
        }
        if (!pump([this] { return receivedEnd > 0 || bodyEnded(); }) && receivedEnd == 0) {
            return false;
        }
    }
}

void Transfer::consume(std::size_t count) {
    (inflater == nullptr ? receivedBegin : decodedBegin) += count;
}

void Transfer::takeHeader(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        const std::size_t bytesBefore = response.headerBytes;
        response = {};
        response.headerBytes = bytesBefore;
    }
    if (trimmed(line).empty()) {
        finishHeaders();
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (isNamed(name, "Content-Length")) {
        response.lengthText = value;
    } else if (isNamed(name, "Content-Encoding")) {
        response.coding = codingNamed(value);
    } else if (isNamed(name, "Transfer-Encoding")) {
        response.chunked = true;
    } else if (isNamed(name, "Location")) {
        response.location = value;
    }
}

void Transfer::finishHeaders() {
    ::curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &response.status);
    // Continue, Processing and Early Hints come before the answer proper. Any other 1xx is one, without a body.
    if (response.status == 100 || response.status == 102 || response.status == 103) {
        return;
    }
    response.complete = true;
    const std::string_view length = response.lengthText ? std::string_view(*response.lengthText) : std::string_view();
    curl_off_t number = 0;
    const auto parsed = std::from_chars(length.data(), length.data() + length.size(), number);
    if (response.status < 200) {
        response.bytesLeft = 0;
    } else if (!response.chunked && !length.empty() && parsed.ec == std::errc() && number >= 0 &&
               parsed.ptr == length.data() + length.size()) {
        response.bytesLeft = number;
    }
    const DWORD flag =
        response.coding == Coding::gzip ? WINHTTP_DECOMPRESSION_FLAG_GZIP : WINHTTP_DECOMPRESSION_FLAG_DEFLATE;
    if (response.coding != Coding::none && (settings.decompression & flag) != 0) {
        inflater = std::make_unique<Inflater>(response.coding);
        decoded = std::make_unique_for_overwrite<char[]>(decodedBufferSize);
    } else {
        inflater = nullptr;
    }
}

std::size_t Transfer::takeBody(std::string_view bytes) {
    const std::size_t handed = bytes.size();
    if (response.bytesLeft) {
        bytes = bytes.substr(
            0, static_cast<std::size_t>(std::min<curl_off_t>(*response.bytesLeft, static_cast<curl_off_t>(handed))));
    }
    if (received == nullptr) {
        received = std::make_unique_for_overwrite<char[]>(bodyBufferSize);
    }
    if (receivedEnd + bytes.size() > bodyBufferSize) {
        paused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    std::memcpy(received.get() + receivedEnd, bytes.data(), bytes.size());
    receivedEnd += bytes.size();
    if (response.bytesLeft) {
        *response.bytesLeft -= static_cast<curl_off_t>(bytes.size());
    }
    return handed;
}

// libcurl is C: nothing may be thrown through it. 0 bytes taken ends the transfer.
std::size_t Transfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    if (transfer.response.complete) {
        return size * count; // the trailer of a chunked body
    }
    transfer.response.headerBytes += size * count;
    if (transfer.response.headerBytes > maximumHeaderBytes) {
        transfer.failure = ERROR_WINHTTP_HEADER_SIZE_OVERFLOW;
        return 0;
    }
    try {
        transfer.takeHeader({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return size * count;
}

std::size_t Transfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    try {
        return static_cast<Transfer*>(self)->takeBody({bytes, size * count});
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int Transfer::onSend(void* self, char*, char*, int, int) {
    static_cast<Transfer*>(self)->sent = true;
    return CURL_PREREQFUNC_OK;
}

} // namespace ca::win32
