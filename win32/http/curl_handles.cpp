#include "http/curl_handles.h"

#include "crypto/openssl.h"

#include <mutex>
#include <utility>
#include <vector>

namespace ca::win32 {

namespace {

constexpr std::size_t mostIdlePairs = 4;

struct Idle {
    std::mutex mutex;
    std::vector<std::pair<CURL*, CURLM*>> pairs;
};

Idle& idle() {
    static Idle& kept = *new Idle; // never destroyed: a transfer may end while the process does
    return kept;
}

void startCurl() {
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
            std::tie(easy, multi) = idle().pairs.back();
            idle().pairs.pop_back();
            return;
        }
    }
    easy = ::curl_easy_init();
    multi = ::curl_multi_init();
}

CurlHandles::~CurlHandles() {
    if (*this) {
        ::curl_easy_reset(easy);
        const std::lock_guard lock(idle().mutex);
        if (idle().pairs.size() < mostIdlePairs) {
            idle().pairs.emplace_back(easy, multi);
            return;
        }
    }
    if (easy != nullptr) {
        ::curl_easy_cleanup(easy);
    }
    if (multi != nullptr) {
        ::curl_multi_cleanup(multi);
    }
}

} // namespace ca::win32
