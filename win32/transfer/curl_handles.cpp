#include "transfer/curl_handles.h"

#include "crypto/openssl.h"

#include <mutex>
#include <vector>

namespace ca::win32 {

namespace {

// One transfer at a time is usual: the launcher has one job.
constexpr std::size_t mostIdle = 4;

struct Idle {
    // Now, because giving a handle back must not fail.
    Idle() { multis.reserve(mostIdle); }

    std::mutex mutex;
    std::vector<CURLM*> multis;
};

Idle& idle() {
    // Never destroyed: a transfer may end while the process does.
    static Idle& kept = *new Idle;
    return kept;
}

void startCurl() {
    // libcurl would start OpenSSL with its exit handler.
    [[maybe_unused]] static const CURLcode started = [] {
        startOpenSsl();
        return ::curl_global_init(CURL_GLOBAL_DEFAULT);
    }();
}

} // namespace

CurlHandles::CurlHandles() {
    startCurl();
    {
        const std::lock_guard lock(idle().mutex);
        if (!idle().multis.empty()) {
            multi_ = idle().multis.back();
            idle().multis.pop_back();
            return;
        }
    }
    multi_ = ::curl_multi_init();
}

CurlHandles::~CurlHandles() {
    ::curl_easy_cleanup(easy_); // null is fine, for the other call too
    {
        const std::lock_guard lock(idle().mutex);
        if (multi_ != nullptr && idle().multis.size() < mostIdle) {
            idle().multis.push_back(multi_);
            return;
        }
    }
    ::curl_multi_cleanup(multi_);
}

bool CurlHandles::renew() {
    ::curl_easy_cleanup(easy_);
    easy_ = multi_ != nullptr ? ::curl_easy_init() : nullptr;
    return easy_ != nullptr;
}

} // namespace ca::win32
