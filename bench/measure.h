// Measuring: the same work done by several contestants in turn, so that whatever else the machine
// does hits all of them.
#pragma once

#include "shared/process.h"

#include <functional>
#include <string>
#include <vector>

namespace ca::bench {

// Does the work once and gives what it cost: seconds, or MiB.
using Contestant = std::function<double()>;

// Each contestant in turn, and all of that `rounds` times. Gives the median cost of each.
std::vector<double> alternate(const std::vector<Contestant>& contestants, int rounds);

double secondsOf(const std::function<void()>& work);

using Command = std::vector<std::string>;

// Runs a program to its end, start and exit included. Both throw std::runtime_error
// unless the exit status is 0.
double secondsOfProgram(const Command& command, const kit::ProcessOptions& options);

// The most memory, in MiB, that the program ever had resident. Writes a file
// into the working folder.
double peakOfProgram(const Command& command, const kit::ProcessOptions& options);

} // namespace ca::bench
