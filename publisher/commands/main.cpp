// coldanchor-publish: from a folder with the game to a live, signed channel. Exit status 0 if all
// is well, 1 if something is wrong with what was given or found, 2 for a command line that can't be
// understood.
#include "publisher/commands/commands.h"
#include "publisher/text/failure.h"
#include "publisher/text/shown.h"

#include <iostream>

int main(int count, char** arguments) {
    CLI::App program("Makes, signs, checks and publishes the update channel of Cold Anchor.",
                     "coldanchor-publish");
    int status = 0;
    try {
        program.require_subcommand(1);
        ca::publisher::addKeys(program);
        ca::publisher::addRelease(program);
        ca::publisher::addDiff(program);
        ca::publisher::addCheck(program, status);
        ca::publisher::addServe(program);
        program.parse(count, arguments);
        // Else a full disk would go unnoticed by whoever reads the output from a file.
        if (!std::cout.flush()) {
            ca::publisher::failWithReason("can't write to the standard output");
        }
        return status;
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : 2;
    } catch (const std::exception& error) {
        std::cerr << ca::publisher::shownLines(error.what());
        return 1;
    }
}
