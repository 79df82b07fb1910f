#include "publisher/rules/version_rules.h"

#include "publisher/text/shown.h"

#include <algorithm>

namespace ca::publisher {

namespace {

constexpr std::size_t longestVersion = 64;       // characters; it is a folder's name too
constexpr std::size_t longestComparedNumber = 9; // digits: launchers compare in 32 bits

bool isPlain(char c) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool isDigit = c >= '0' && c <= '9';
    return isLetter || isDigit || c == '.' || c == '-' || c == '+';
}

// Launchers would take an empty number for a zero.
bool areNumbers(std::string_view numbers) {
    return !numbers.empty() && numbers.front() != '.' && numbers.back() != '.' &&
           numbers.find("..") == std::string_view::npos;
}

// Launchers ignore what follows the numbers: it has to look like something that may be ignored.
bool isSuffix(std::string_view suffix) {
    const bool hasSign = suffix.starts_with('-') || suffix.starts_with('+');
    return suffix.empty() || (hasSign && suffix.size() > 1);
}

bool hasLongNumber(std::string_view numbers) {
    while (!numbers.empty()) {
        const std::string_view number = numbers.substr(0, numbers.find('.'));
        if (number.size() > longestComparedNumber) {
            return true;
        }
        numbers.remove_prefix(std::min(number.size() + 1, numbers.size()));
    }
    return false;
}

} // namespace

std::string versionRefusal(std::string_view version) {
    const std::string quoted = "\"" + shown(version) + "\"";
    const std::size_t end = std::min(version.find_first_not_of("0123456789."), version.size());
    const std::string_view numbers = version.substr(0, end);
    const std::string_view suffix = version.substr(end);
    if (!areNumbers(numbers)) {
        return quoted + " isn't made of numbers with dots between them, such as 1.4.2";
    }
    if (!isSuffix(suffix)) {
        return quoted + " has something behind its numbers that doesn't begin with '-' or '+'";
    }
    if (version.size() > longestVersion || !std::all_of(suffix.begin(), suffix.end(), isPlain)) {
        return quoted + " is longer than 64 characters or holds others than letters, digits, '.', "
                        "'-' and '+'";
    }
    if (hasLongNumber(numbers)) {
        return quoted + " has a number of more than nine digits, which launchers can't compare";
    }
    return {};
}

} // namespace ca::publisher
