// The one way in which this layer starts programs.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace ca::win32 {

// Starts `program` (a path with a "/") with `arguments`, of which the first is its name. It runs in
// a session of its own, with the signal handling of a fresh process and no open file but the three
// standard streams. `standardOutput`, a descriptor or -1, replaces the second of them; `folder` is
// where it starts, or empty for the caller's folder. Returns 0 and sets `child`, or returns an
// errno value and starts nothing. The child has to be waited for, or given to forgetChild.
int startChild(const std::string& program, const std::vector<std::string>& arguments,
               const std::string& folder, int standardOutput, pid_t& child);

// Has a thread wait for the end of a child that nobody asks about, so that it leaves no zombie.
void forgetChild(pid_t child);

} // namespace ca::win32
