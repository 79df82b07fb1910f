// What a HANDLE or a HINTERNET points at.
#pragma once

#include "last_error.h"

#include <memory>
#include <windows.h>

namespace ca::win32 {

// An object that the launcher holds by a handle. Deleted by the call that closes the handle, which
// frees what the object holds.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;
};

// Hands an object over to its handle.
inline HANDLE handleOf(std::unique_ptr<Object> object) {
    return object.release();
}

// The object behind a handle. Null with ERROR_INVALID_HANDLE if the handle is none, and with
// `otherKind` if it is another kind's. The object stays the handle's.
template <class Kind>
Kind* objectOf(HANDLE handle, DWORD otherKind = ERROR_INVALID_HANDLE) {
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* object = dynamic_cast<Kind*>(static_cast<Object*>(handle));
    if (object == nullptr) {
        fail(otherKind);
    }
    return object;
}

} // namespace ca::win32
