// How the publisher's program fails: by a text for people that names the file
// and what to do about it.
#pragma once

#include <stdexcept>
#include <string>

namespace ca::publisher {

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws `what` with the calling thread's errno in words behind it.
[[noreturn]] void failWithReason(const std::string& what);

} // namespace ca::publisher
