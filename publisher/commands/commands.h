// The program's commands: what each takes, does and prints. One source a command.
#pragma once

#include <CLI/App.hpp>
#include <CLI/CLI.hpp>

namespace ca::publisher {

// Each adds its command. A command runs while the command line is parsed, and throws Failure.
void addKeys(CLI::App& program);
void addRelease(CLI::App& program);
void addDiff(CLI::App& program);
// `status` is the program's exit status, which a check that finds a problem raises to 1.
void addCheck(CLI::App& program, int& status);
void addServe(CLI::App& program);

// What commands have in common: the help of --passphrase-file, and --jobs, which is the number of
// processors unless it is given.
inline constexpr const char* passphraseHelp =
    "File whose first line is the passphrase (else COLDANCHOR_PASSPHRASE, else a prompt)";
void addJobs(CLI::App& command, unsigned& threads, const char* help);

} // namespace ca::publisher
