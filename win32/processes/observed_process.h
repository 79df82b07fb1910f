// What a handle of OpenProcess points at.
#pragma once

#include "files/descriptor.h"
#include "handle.h"

namespace ca::win32 {

// A process that may not be this one's child. The descriptor stays with the process, so that its
// number never means another one.
class ObservedProcess : public Object {
public:
    ObservedProcess(Descriptor descriptor, DWORD id)
        : descriptor_(std::move(descriptor)), id_(id) {}

    int descriptor() const { return descriptor_.get(); }
    DWORD id() const { return id_; }

private:
    const Descriptor descriptor_;
    const DWORD id_;
};

} // namespace ca::win32
