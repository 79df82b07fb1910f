// The program's commands: what each takes, does and prints.
#pragma once

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>

namespace ca::publisher {

// Adds all of them. `status` is the program's exit status, which a command that finds
// something wrong raises to 1.
// A command runs while the command line is parsed, and throws Failure.
void addCommands(CLI::App& program, int& status);

} // namespace ca::publisher
