// What a check has found.
#pragma once

#include <string>
#include <vector>

namespace ca::publisher {

// A problem keeps players from playing on what is offered, or will with the next release; advice
// doesn't. Holds text as the channel has it, whoever that is: see shown().
struct Finding {
    bool isProblem = true;
    std::string where; // an address, a path, or a manifest's field
    std::string what;
};

// Problems first, then in the order of `where`. The same advice about many places is one finding,
// whose `where` is the first of them and "and 5 more"; every problem stays one of its own.
// Pure; any thread.
std::vector<Finding> grouped(std::vector<Finding> findings);

} // namespace ca::publisher
