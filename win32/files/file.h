// What a handle of CreateFileW points at.
#pragma once

#include "files/descriptor.h"
#include "handle.h"

#include <string>

namespace ca::win32 {

class File : public Object {
public:
    // `removedPath` is the name to remove when the file is closed; empty for none.
    File(Descriptor descriptor, std::string removedPath);
    ~File() override;

    int descriptor() const { return descriptor_.get(); }

private:
    const Descriptor descriptor_;
    const std::string removedPath_;
};

// The Win32 number of errno after a read or a write.
DWORD errorOfTransfer(int number);

} // namespace ca::win32
