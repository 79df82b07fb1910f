// How OpenSSL is started, and how its objects are freed.
#pragma once

#include <memory>
#include <openssl/evp.h>

namespace ca::win32 {

// Makes OpenSSL ready, without its exit handler: the launcher's main thread may leave the process
// while the job's thread is inside OpenSSL or libcurl, and what that thread uses must then stay.
// Call before any other use of the two. Cheap to repeat.
void startOpenSsl();

// SHA-256, fetched once per process and never freed. Null if OpenSSL has none.
const EVP_MD* sha256();

// A pointer to an object of OpenSSL's, which `freeFunction` frees.
template <auto freeFunction>
struct Free {
    template <class T>
    void operator()(T* object) const {
        freeFunction(object);
    }
};
template <class T, auto freeFunction>
using OpenSslPointer = std::unique_ptr<T, Free<freeFunction>>;

using KeyContext = OpenSslPointer<EVP_PKEY_CTX, ::EVP_PKEY_CTX_free>;

} // namespace ca::win32
