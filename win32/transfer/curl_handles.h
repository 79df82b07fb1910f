// The pair of libcurl's handles that one request needs.
#pragma once

#include <curl/curl.h>

namespace ca::win32 {

// The easy handle is new for every request: libcurl 7.88 keeps a pointer to the last header field
// of the response before, and a first field that begins with a space is written through it. The
// multi handle comes from an earlier transfer, with the names that it has resolved (for a minute),
// and is left behind for a later one; up to four that nobody uses are kept until the process ends.
// Any thread.
class CurlHandles {
public:
    CurlHandles();
    CurlHandles(const CurlHandles&) = delete;
    CurlHandles& operator=(const CurlHandles&) = delete;
    // The easy handle must not be in the multi handle any more.
    ~CurlHandles();

    // Replaces the easy handle by a new one, without options. False if there is no memory for it,
    // or was none for the multi handle; the easy handle is null then.
    bool renew();

    CURL* easy() const { return easy_; }
    CURLM* multi() const { return multi_; }

private:
    CURL* easy_ = nullptr;
    CURLM* multi_ = nullptr;
};

} // namespace ca::win32
