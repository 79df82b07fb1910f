#include "processes/argument_rules.h"

#include <algorithm>

namespace ca::win32 {

namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}

std::string takeProgram(std::string_view& line) {
    std::string program;
    bool quoted = false;
    while (!line.empty() && (quoted || !isBlank(line.front()))) {
        if (line.front() == '"') {
            quoted = !quoted;
        } else {
            program += line.front();
        }
        line.remove_prefix(1);
    }
    return program;
}

std::string takeArgument(std::string_view& line) {
    std::string argument;
    bool quoted = false;
    while (!line.empty() && (quoted || !isBlank(line.front()))) {
        const std::size_t slashes = std::min(line.find_first_not_of('\\'), line.size());
        const bool beforeQuote = slashes < line.size() && line[slashes] == '"';
        argument.append(beforeQuote ? slashes / 2 : slashes, '\\');
        line.remove_prefix(slashes);
        if (!beforeQuote) {
            if (slashes == 0) {
                argument += line.front();
                line.remove_prefix(1);
            }
            continue;
        }
        line.remove_prefix(1);
        if (slashes % 2 != 0) {
            argument += '"';
        } else if (quoted && line.starts_with('"')) {
            argument += '"';
            line.remove_prefix(1);
        } else {
            quoted = !quoted;
        }
    }
    return argument;
}

void skipBlanks(std::string_view& line) {
    while (!line.empty() && isBlank(line.front())) {
        line.remove_prefix(1);
    }
}

} // namespace

std::vector<std::string> splitCommandLine(std::string_view line, bool programFirst) {
    std::vector<std::string> arguments;
    if (programFirst) {
        arguments.push_back(takeProgram(line));
    }
    for (skipBlanks(line); !line.empty(); skipBlanks(line)) {
        arguments.push_back(takeArgument(line));
    }
    return arguments;
}

std::string quoteArgument(std::string_view argument) {
    if (!argument.empty() && argument.find_first_of(" \t\"") == std::string_view::npos) {
        return std::string(argument);
    }
    std::string quoted = "\"";
    std::size_t slashes = 0;
    for (const char character : argument) {
        if (character == '"') {
            // double those before it, and one for the quote itself
            quoted.append(slashes + 1, '\\');
        }
        slashes = character == '\\' ? slashes + 1 : 0;
        quoted += character;
    }
    return quoted.append(slashes, '\\') + '"';
}

} // namespace ca::win32
