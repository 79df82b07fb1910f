// One request and its response over libcurl, pulled: nothing moves unless a call below runs, so the
// memory in use is one buffer of fixed size, however long the body and however slow its reader.
#pragma once

#include "transfer/body.h"
#include "transfer/curl_handles.h"
#include "transfer/curl_options.h"
#include "transfer/response_headers.h"

namespace ca::win32 {

// Used by one thread at a time. Every call blocks, and returns false on failure. error() is then
// the Win32 or WinHTTP number, and the exchange has ended.
class Exchange {
public:
    // Keeps a reference to `settings`.
    explicit Exchange(const TransferSettings& settings);
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    ~Exchange();

    // Connects and sends the request for the URL in the settings.
    bool start();
    // Breaks the exchange off, so that the next may start.
    void stop();

    // Waits for the final response's headers.
    bool receiveHeaders();
    // Waits until bytes of the body are there; empty at its end.
    bool available(std::span<const char>& bytes);
    // Drops bytes that available() showed.
    void consume(std::size_t count) { body_.drop(count); }

    const ResponseHeaders& headers() const { return headers_; }
    DWORD error() const { return failure_; }
    // Ends the exchange with this error; returns false.
    bool fail(DWORD number);

private:
    bool prepare();
    template <class Condition>
    bool pump(Condition condition);
    template <class Condition>
    bool perform(Condition condition, int& running);
    bool collectResult();
    bool resume();

    void takeHeaderLine(std::string_view line);
    static std::size_t onHeaderLine(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onSend(void* self, char* address, char* localAddress, int port, int localPort);

    const TransferSettings& settings_;
    const RequestFields fields_;
    CurlHandles curl_;
    ResponseHeaders headers_;
    Body body_;
    std::size_t headerBytes_ = 0;
    DWORD failure_ = ERROR_SUCCESS;
    bool sent_ = false;
    bool paused_ = false; // libcurl holds bytes back until there is room
    bool ended_ = false;  // libcurl is done with the transfer
};

} // namespace ca::win32
