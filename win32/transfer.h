// One GET over libcurl, pulled: nothing moves unless a call below runs, so the memory in use is one buffer of fixed
// size, however long the body and however slow its reader.
#pragma once

#include "inflate.h"

#include <chrono>
#include <curl/curl.h>
#include <memory>
#include <optional>
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

// Used by one thread at a time. Every call blocks; after a failure error() is its Win32 or WinHTTP number.
class Transfer {
public:
    explicit Transfer(TransferSettings chosen);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer();

    // Connects and sends the request.
    bool send();
    // Waits for the final response's headers, following redirects.
    bool receive();
    // Waits until bytes of the body are there; empty at its end.
    bool available(std::span<const char>& bytes);
    // Drops bytes that available() showed.
    void consume(std::size_t count);

    long status() const { return response.status; }
    const std::optional<std::string>& contentLength() const { return response.lengthText; }
    DWORD error() const { return failure; }

private:
    struct Response {
        long status = 0;
        std::size_t headerBytes = 0;
        std::optional<std::string> lengthText;
        std::optional<curl_off_t> bytesLeft; // of a body whose length is known; nothing beyond it belongs to the body
        std::string location;
        Coding coding = Coding::none;
        bool chunked = false;
        bool complete = false; // headers are
    };

    bool start();
    bool configure();
    bool follow();
    bool isRedirect() const;
    template <class Condition>
    bool pump(Condition condition);
    bool collectResult();
    bool fail(DWORD number);
    void stop();

    void takeHeader(std::string_view line);
    void finishHeaders();
    std::size_t takeBody(std::string_view bytes);
    bool bodyEnded() const { return ended || response.bytesLeft == 0; }

    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onSend(void* self, char* address, char* localAddress, int port, int localPort);

    TransferSettings settings;
    CURL* easy = nullptr;
    CURLM* multi = nullptr;
    curl_slist* headers = nullptr;
    Response response;
    std::unique_ptr<Inflater> inflater;
    std::unique_ptr<char[]> received; // the body as it came
    std::unique_ptr<char[]> decoded;
    std::size_t receivedBegin = 0;
    std::size_t receivedEnd = 0;
    std::size_t decodedBegin = 0;
    std::size_t decodedEnd = 0;
    DWORD failure = ERROR_SUCCESS;
    bool sent = false;
    bool paused = false; // libcurl holds bytes back until there is room
    bool ended = false;  // libcurl is done with the transfer
};

} // namespace ca::win32
