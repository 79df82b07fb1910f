// The certificate authorities that https connections trust.
#pragma once

#include <curl/curl.h>

namespace ca::win32 {

// Has the transfer check certificates against the host's authorities: OpenSSL's default places, or
// the ones that SSL_CERT_FILE and SSL_CERT_DIR name. They are read once per process and shared by
// all connections, since each would otherwise parse some hundred certificates of its own.
void useHostAuthorities(CURL* easy);

} // namespace ca::win32
