#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

using namespace ca::win32;

HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass,
                      DWORD flags) {
    // The other access types are for a proxy that the caller names.
    if (accessType > WINHTTP_ACCESS_TYPE_NO_PROXY || proxyName != nullptr ||
        proxyBypass != nullptr || flags != 0) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::optional<std::string> agent = toUtf8(userAgent == nullptr ? L"" : userAgent);
    if (!agent) {
        return nullptr;
    }
    auto session = std::make_unique<Session>();
    session->userAgent = *agent;
    session->proxyFromEnvironment = accessType == WINHTTP_ACCESS_TYPE_DEFAULT_PROXY;
    return handleOf(std::move(session));
}
