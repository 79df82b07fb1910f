#include "publisher/rules/version_rules.h"

#include "publisher/text/shown.h"

#include <algorithm>

namespace ca::publisher {

std::string versionRefusal(std::string_view version) {
    const std::string quoted = "\"" + shown(version) + "\"";
    const std::size_t end = std::min(version.find_first_not_of("0123456789."), version.size());
    const std::string_view numbers = version.substr(0, end);
    const std::string_view suffix = version.substr(end);
    if (numbers.empty() || numbers.front() == '.' || numbers.back() == '.' ||
        numbers.find("..") != numbers.npos) {
        return quoted + " isn't made of numbers with dots between them, such as 1.4.2";
    }
    if (!suffix.empty() && (suffix.size() == 1 || (suffix[0] != '-' && suffix[0] != '+'))) {
        return quoted + " has something behind its numbers that doesn't begin with '-' or '+'";
    }
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '.' || c == '-' || c == '+';
    };
    if (version.size() > 64 || !std::all_of(suffix.begin(), suffix.end(), isPlain)) {
        return quoted + " is longer than 64 characters or holds others than letters, digits, '.', "
                        "'-' and '+'";
    }
    for (std::string_view rest = numbers; !rest.empty();) {
        const std::string_view number = rest.substr(0, rest.find('.'));
        if (number.size() > 9) {
            return quoted + " has a number of more than nine digits, which launchers can't compare";
        }
        rest.remove_prefix(std::min(number.size() + 1, rest.size()));
    }
    return {};
}

} // namespace ca::publisher
