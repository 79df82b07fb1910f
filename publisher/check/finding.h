// What a check has found.
#pragma once

#include <string>

namespace ca::publisher {

// A problem keeps players from playing on what is offered, or will with the next release; advice
// doesn't. Holds text as the channel has it, whoever that is: see shown().
struct Finding {
    bool isProblem = true;
    std::string where; // an address, a path, or a manifest's field
    std::string what;
};

} // namespace ca::publisher
