#include "http/handles.h"

namespace ca::win32 {

Request* requestAt(HINTERNET handle, Request::Stage stage) {
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
    delete static_cast<Object*>(handle);
    return TRUE;
}
