// The pair of libcurl's handles that one transfer needs.
#pragma once

#include <curl/curl.h>

namespace ca::win32 {

// Takes a pair that an earlier transfer left behind, or makes one, and leaves it behind for a later
// one. What stays in it from transfer to transfer is memory, resolved names (a minute) and TLS
// sessions, but no connection and no option. Any thread. Up to four pairs that nobody uses are kept
// until the process ends.
class CurlHandles {
public:
    CurlHandles();
    CurlHandles(const CurlHandles&) = delete;
    CurlHandles& operator=(const CurlHandles&) = delete;
    // The easy handle must not be in the multi handle any more.
    ~CurlHandles();

    // False if there was no memory for them.
    explicit operator bool() const { return easy_ != nullptr && multi_ != nullptr; }

    CURL* easy() const { return easy_; }
    CURLM* multi() const { return multi_; }

private:
    CURL* easy_ = nullptr;
    CURLM* multi_ = nullptr;
};

} // namespace ca::win32
