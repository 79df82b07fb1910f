#include "transfer/curl_handles.h"

#include "crypto/openssl.h"

#include <mutex>
#include <utility>
#include <vector>

namespace ca::win32 {

namespace {

// One transfer at a time is usual: the launcher has one job.
constexpr std::size_t mostIdlePairs = 4;

struct Idle {
    std::mutex mutex;
    std::vector<std::pair<CURL*, CURLM*>> pairs;
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
        if (!idle().pairs.empty()) {
            std::tie(easy_, multi_) = idle().pairs.back();
            idle().pairs.pop_back();
            return;
        }
    }
    easy_ = ::curl_easy_init();
    multi_ = ::curl_multi_init();
}

CurlHandles::~CurlHandles() {
    if (*this) {
        // Options and callbacks go; what makes a later transfer faster stays.
        ::curl_easy_reset(easy_);
        const std::lock_guard lock(idle().mutex);
        if (idle().pairs.size() < mostIdlePairs) {
            idle().pairs.emplace_back(easy_, multi_);
            return;
        }
    }
    // Enough pairs are kept already, or one half of this one is missing.
    if (easy_ != nullptr) {
        ::curl_easy_cleanup(easy_);
    }
    if (multi_ != nullptr) {
        ::curl_multi_cleanup(multi_);
    }
}

} // namespace ca::win32
