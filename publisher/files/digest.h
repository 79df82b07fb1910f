// SHA-256 of bytes that come in pieces, computed by the launcher's own code.
#pragma once

#include "update/digest.h"

#include <cstddef>
#include <string>

namespace ca::publisher {

// One digest. Belongs to one thread. Throws Failure when the system's cryptography refuses.
class Digest {
public:
    Digest();

    void add(const void* data, std::size_t size);
    // 64 lower-case hexadecimal digits, as manifests carry them. The last call.
    std::string text();

private:
    update::Sha256 hash_;
};

} // namespace ca::publisher
