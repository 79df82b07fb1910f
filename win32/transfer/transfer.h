// One GET from the first request to the last byte, with the redirects between.
#pragma once

#include "transfer/exchange.h"

namespace ca::win32 {

// Used by one thread at a time. Every call blocks, and returns false on failure; error() is then
// the Win32 or WinHTTP number.
class Transfer {
public:
    explicit Transfer(TransferSettings settings);

    // Connects and sends the request.
    bool send();
    // Waits for the final response's headers, following redirects.
    bool receive();
    // Waits until bytes of the body are there; empty at its end.
    bool available(std::span<const char>& bytes) { return exchange_.available(bytes); }
    // Drops bytes that available() showed.
    void consume(std::size_t count) { exchange_.consume(count); }

    const ResponseHeaders& response() const { return exchange_.headers(); }
    // Where the response came from.
    const std::string& url() const { return settings_.url; }
    DWORD error() const { return exchange_.error(); }

private:
    bool isToBeFollowed() const;
    bool follow();

    TransferSettings settings_;
    Exchange exchange_;
};

} // namespace ca::win32
