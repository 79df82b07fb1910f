#include "http/handles.h"

namespace ca::win32 {

Request* requestAt(HINTERNET handle, Request::Stage stage) {
    // The calls on a request have one order: open, send, receive, read.
    auto* request = internetObjectOf<Request>(handle);
    if (request != nullptr && request->stage != stage) {
        fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
        return nullptr;
    }
    return request;
}

} // namespace ca::win32

using namespace ca::win32;

BOOL WinHttpCloseHandle(HINTERNET handle) {
    if (handle == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    // A request's transfer ends with it, wherever it is.
    delete static_cast<Object*>(handle);
    return TRUE;
}
