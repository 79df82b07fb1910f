// One GET over libcurl, pulled: nothing moves unless a call below runs, so the memory in use is one
// buffer of fixed size, however long the body and however slow its reader.
#pragma once

#include "http/body.h"
#include "http/curl_handles.h"
#include "http/response_headers.h"

#include <curl/curl.h>
#include <memory>
#include <string>
#include <windows.h>

namespace ca::win32 {

// What a request was told before it was sent. Time-outs in milliseconds, 0 for none.
struct TransferSettings {
    std::string url; // http or https, in printable ASCII except for the host
    std::string userAgent;
    long connectTimeout = 0; // resolving, connecting and the TLS handshake together
    long receiveTimeout = 0; // without one byte
    DWORD redirectPolicy = 0;
    DWORD decompression = 0;
    bool proxyFromEnvironment = true;
    bool onlyTls12 = false;
};

// Used by one thread at a time. Every call blocks; after a failure error() is its
// Win32 or WinHTTP number.
class Transfer {
public:
    explicit Transfer(TransferSettings chosen);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer();

    // Connects and sends the request.
    bool send();
    // Waits for the final response's head, following redirects.
    bool receive();
    // Waits until bytes of the body are there; empty at its end.
    bool available(std::span<const char>& bytes);
    // Drops bytes that available() showed.
    void consume(std::size_t count) { body.drop(count); }

    const ResponseHead& response() const { return head; }
    // Where the response came from.
    const std::string& url() const { return settings.url; }
    DWORD error() const { return failure; }

private:
    bool configure();
    bool setHeaderFields();
    bool start();
    bool isToBeFollowed() const;
    bool follow();
    template <class Condition>
    bool pump(Condition condition);
    bool collectResult();
    bool resume();
    bool fail(DWORD number);

    void takeHeaderLine(std::string_view line);
    static std::size_t onHeaderLine(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onSend(void* self, char* address, char* localAddress, int port, int localPort);

    TransferSettings settings;
    CurlHandles curl;
    curl_slist* fields = nullptr;
    ResponseHead head;
    Body body;
    std::size_t headBytes = 0;
    DWORD failure = ERROR_SUCCESS;
    bool sent = false;
    bool paused = false; // libcurl holds bytes back until there is room
    bool ended = false;  // libcurl is done with the transfer
};

} // namespace ca::win32
