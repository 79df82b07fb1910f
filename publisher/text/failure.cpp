#include "publisher/text/failure.h"

#include <cerrno>
#include <system_error>

namespace ca::publisher {

void failWithReason(const std::string& what) {
    const int number = errno;
    throw Failure(what + ": " + std::generic_category().message(number));
}

} // namespace ca::publisher
