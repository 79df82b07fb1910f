#include "transfer/curl_result.h"

#include <algorithm>
#include <iterator>
#include <winhttp.h>

namespace ca::win32 {

namespace {

struct ResultRow {
    CURLcode result;
    DWORD error;
};

// A result that isn't here comes from a mistake in this layer: ERROR_WINHTTP_INTERNAL_ERROR.
constexpr ResultRow resultTable[] = {
    // Also for a response that isn't HTTP.
    {CURLE_UNSUPPORTED_PROTOCOL, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    {CURLE_URL_MALFORMAT, ERROR_WINHTTP_INVALID_URL},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_WINHTTP_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_WINHTTP_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_WINHTTP_CANNOT_CONNECT},
    {CURLE_WEIRD_SERVER_REPLY, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    // The callbacks give up when they are out of memory. Any other reason they keep themselves.
    {CURLE_WRITE_ERROR, ERROR_NOT_ENOUGH_MEMORY},
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {CURLE_OPERATION_TIMEDOUT, ERROR_WINHTTP_TIMEOUT},
    // A header field that can't be kept.
    {CURLE_BAD_FUNCTION_ARGUMENT, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    {CURLE_SSL_CONNECT_ERROR, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_GOT_NOTHING, ERROR_WINHTTP_INVALID_SERVER_RESPONSE},
    {CURLE_SEND_ERROR, ERROR_WINHTTP_CONNECTION_ERROR},
    {CURLE_RECV_ERROR, ERROR_WINHTTP_CONNECTION_ERROR},
    {CURLE_PEER_FAILED_VERIFICATION, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_CIPHER, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_CACERT_BADFILE, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_SSL_INVALIDCERTSTATUS, ERROR_WINHTTP_SECURE_FAILURE},
    {CURLE_PROXY, ERROR_WINHTTP_CANNOT_CONNECT},
};

} // namespace

DWORD errorFromResult(CURLcode result) {
    const auto* row =
        std::find_if(std::begin(resultTable), std::end(resultTable),
                     [&](const ResultRow& candidate) { return candidate.result == result; });
    return row == std::end(resultTable) ? ERROR_WINHTTP_INTERNAL_ERROR : row->error;
}

} // namespace ca::win32
