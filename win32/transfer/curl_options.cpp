#include "transfer/curl_options.h"

#include "transfer/authorities.h"

namespace ca::win32 {

namespace {

// The most that libcurl reads from a socket at once.
constexpr long socketPieceSize = 128L * 1024;

} // namespace

void setOptions(CURL* easy, const TransferSettings& settings) {
    const auto set = [easy](CURLoption option, auto value) {
        ::curl_easy_setopt(easy, option, value);
    };
    set(CURLOPT_NOSIGNAL, 1L);
    // A name server that never responds doesn't hold up the end of a request.
    set(CURLOPT_QUICK_EXIT, 1L);
    // Redirects aren't libcurl's: whether one is followed depends on WinHTTP's policy.
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    // Dots in a path are sent as they are.
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_FORBID_REUSE, 1L);
    // A request goes out in one piece, so there is nothing to delay.
    set(CURLOPT_TCP_NODELAY, 0L);
    set(CURLOPT_USERAGENT, settings.userAgent.c_str());
    set(CURLOPT_BUFFERSIZE, socketPieceSize);
    set(CURLOPT_CONNECTTIMEOUT_MS, settings.connectTimeout);
    // The size of a body is counted by the exchange: Windows takes a body cut short for a whole
    // one, and a length it can't read for none.
    set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
    // Codings are undone by the body, because libcurl keeps all that one read decodes to while it
    // is paused.
    set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    // A proxy's own response to CONNECT isn't the server's.
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    constexpr long oldest = CURL_SSLVERSION_TLSv1_2;
    constexpr long noNewer = CURL_SSLVERSION_MAX_TLSv1_2;
    set(CURLOPT_SSLVERSION, settings.onlyTls12 ? oldest | noNewer : oldest);
    if (!settings.proxyFromEnvironment) {
        // The empty text keeps libcurl from looking for one.
        set(CURLOPT_PROXY, "");
    }
    useHostAuthorities(easy);
}

RequestFields::RequestFields(DWORD decompression) {
    // By the bits of WINHTTP_DECOMPRESSION_FLAG_ALL.
    constexpr const char* encodings[] = {"", "Accept-Encoding: gzip", "Accept-Encoding: deflate",
                                         "Accept-Encoding: gzip, deflate"};
    // A field without a value takes libcurl's own "Accept" away.
    bool complete = add("Accept:") && add("Connection: Keep-Alive");
    if (complete && decompression != 0) {
        complete = add(encodings[decompression]);
    }
    if (!complete) {
        ::curl_slist_free_all(list_);
        list_ = nullptr;
    }
}

RequestFields::~RequestFields() {
    ::curl_slist_free_all(list_);
}

bool RequestFields::add(const char* field) {
    curl_slist* longer = ::curl_slist_append(list_, field);
    if (longer == nullptr) {
        return false;
    }
    list_ = longer;
    return true;
}

} // namespace ca::win32
