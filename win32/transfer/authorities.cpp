#include "transfer/authorities.h"

#include <openssl/ssl.h>

namespace ca::win32 {

namespace {

X509_STORE* makeStore() {
    X509_STORE* store = ::X509_STORE_new();
    if (store != nullptr) {
        ::X509_STORE_set_default_paths(store);
    }
    return store;
}

CURLcode useStore(CURL*, void* context, void*) {
    // Never freed: a transfer may be under way while the process ends.
    static X509_STORE* const store = makeStore();
    if (store == nullptr) {
        return CURLE_OUT_OF_MEMORY;
    }
    ::SSL_CTX_set1_cert_store(static_cast<SSL_CTX*>(context), store);
    return CURLE_OK;
}

} // namespace

void useHostAuthorities(CURL* easy) {
    // A libcurl on another TLS library refuses the function. It then reads authorities by itself.
    if (::curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &useStore) == CURLE_OK) {
        ::curl_easy_setopt(easy, CURLOPT_CAINFO, nullptr);
        ::curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    }
}

} // namespace ca::win32
