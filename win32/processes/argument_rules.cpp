#include "processes/argument_rules.h"

#include <algorithm>

namespace ca::win32 {

namespace {

bool isSpace(char character) {
    return character == ' ' || character == '\t';
}

// No backslash escapes anything here: a program's name is a path.
std::string takeProgram(std::string_view& line) {
    std::string program;
    bool quoted = false;
    while (!line.empty() && (quoted || !isSpace(line.front()))) {
        if (line.front() == '"') {
            quoted = !quoted;
        } else {
            program += line.front();
        }
        line.remove_prefix(1);
    }
    return program;
}

// `line` begins behind a quote. An escaped one is a character; so is the first of two between
// quotes, which end nothing.
void takeQuote(std::string_view& line, bool escaped, bool& quoted, std::string& argument) {
    if (escaped) {
        argument += '"';
    } else if (quoted && line.starts_with('"')) {
        argument += '"';
        line.remove_prefix(1);
    } else {
        quoted = !quoted;
    }
}

std::string takeArgument(std::string_view& line) {
    std::string argument;
    bool quoted = false;
    while (!line.empty() && (quoted || !isSpace(line.front()))) {
        const std::size_t slashes = std::min(line.find_first_not_of('\\'), line.size());
        const bool beforeQuote = slashes < line.size() && line[slashes] == '"';
        // Only before a quote does a backslash escape anything.
        argument.append(beforeQuote ? slashes / 2 : slashes, '\\');
        line.remove_prefix(slashes);
        if (beforeQuote) {
            line.remove_prefix(1);
            takeQuote(line, slashes % 2 != 0, quoted, argument);
        } else if (slashes == 0) {
            argument += line.front();
            line.remove_prefix(1);
        }
    }
    return argument;
}

void skipSpaces(std::string_view& line) {
    while (!line.empty() && isSpace(line.front())) {
        line.remove_prefix(1);
    }
}

} // namespace

std::vector<std::string> splitCommandLine(std::string_view line, bool programFirst) {
    std::vector<std::string> arguments;
    if (programFirst) {
        arguments.push_back(takeProgram(line));
    }
    for (skipSpaces(line); !line.empty(); skipSpaces(line)) {
        arguments.push_back(takeArgument(line));
    }
    return arguments;
}

std::string quoteArgument(std::string_view argument) {
    if (!argument.empty() && argument.find_first_of(" \t\"") == std::string_view::npos) {
        return std::string(argument);
    }
    std::string quoted = "\"";
    // How many came directly before.
    std::size_t slashes = 0;
    for (const char character : argument) {
        if (character == '"') {
            // The backslashes before it are doubled, and one more escapes the quote itself.
            quoted.append(slashes + 1, '\\');
        }
        slashes = character == '\\' ? slashes + 1 : 0;
        quoted += character;
    }
    // Those at the end come before the closing quote.
    return quoted.append(slashes, '\\') + '"';
}

} // namespace ca::win32
