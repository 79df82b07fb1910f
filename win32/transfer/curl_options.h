// How libcurl is told to behave like WinHTTP.
#pragma once

#include "transfer/transfer_settings.h"

#include <curl/curl.h>

namespace ca::win32 {

// Sets every option that doesn't depend on who receives the response. The URL isn't among them: it
// changes with each redirect.
void setOptions(CURL* easy, const TransferSettings& settings);

// The header fields of a request that libcurl wouldn't send by itself, or not as WinHTTP does.
class RequestFields {
public:
    explicit RequestFields(DWORD decompression);
    RequestFields(const RequestFields&) = delete;
    RequestFields& operator=(const RequestFields&) = delete;
    ~RequestFields();

    // For CURLOPT_HTTPHEADER, while this object lives. Null if there was no memory.
    curl_slist* list() const { return list_; }

private:
    bool add(const char* field);

    curl_slist* list_ = nullptr;
};

} // namespace ca::win32
