#include "update/manifest_fields.h"

#include <algorithm>

namespace ca::update {

namespace {

// Where the text goes on behind the first `key` in quotes. Comparing one byte more before the whole
// key spares most of the comparisons, since quotes are many.
std::size_t endOfKey(std::string_view text, std::string_view key) {
    for (std::size_t at = text.find('"'); at != std::string_view::npos;
         at = text.find('"', at + 1)) {
        const std::string_view rest = text.substr(at + 1);
        if (rest.starts_with(key.front()) && rest.starts_with(key) &&
            rest.substr(key.size()).starts_with('"')) {
            return at + key.size() + 2;
        }
    }
    return std::string_view::npos;
}

// The text from the value of `key` on; empty when the key is absent.
std::string_view findValue(std::string_view text, std::string_view key) {
    const std::size_t colon = text.find(':', endOfKey(text, key));
    if (colon == std::string_view::npos) {
        return {};
    }
    const std::size_t value = text.find_first_not_of(" \t\n\v\f\r", colon + 1);
    return value == std::string_view::npos ? std::string_view{} : text.substr(value);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

char unescape(char c) {
    switch (c) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c;
    }
}

} // namespace

std::int64_t extractManifestInt(std::string_view text, std::string_view key,
                                std::int64_t fallback) {
    std::string_view value = findValue(text, key);
    const bool negative = value.starts_with('-');
    if (negative) {
        value.remove_prefix(1);
    }
    if (value.empty() || !isDigit(value.front())) {
        return fallback;
    }
    std::uint64_t number = 0; // unsigned, because its overflow is defined
    for (; !value.empty() && isDigit(value.front()); value.remove_prefix(1)) {
        number = number * 10 + static_cast<std::uint64_t>(value.front() - '0');
    }
    return static_cast<std::int64_t>(negative ? 0 - number : number);
}

bool extractManifestBool(std::string_view text, std::string_view key) {
    return findValue(text, key).starts_with("true");
}

std::string extractManifestString(std::string_view text, std::string_view key) {
    const std::string_view value = findValue(text, key);
    if (!value.starts_with('"')) {
        return {};
    }
    std::string_view rest = value.substr(1, endOfManifestString(value, 0) - 1);
    std::string result;
    for (;;) {
        const std::size_t plain = std::min(rest.find('\\'), rest.size());
        result.append(rest.substr(0, plain));
        rest.remove_prefix(plain);
        if (rest.size() < 2) {
            return result;
        }
        result += unescape(rest[1]);
        rest.remove_prefix(2);
    }
}

// Looks for quotes alone and then back, because one byte is found many times
// faster than any of two.
std::size_t endOfManifestString(std::string_view text, std::size_t quote) {
    std::size_t at = text.find('"', quote + 1);
    for (; at != std::string_view::npos; at = text.find('"', at + 1)) {
        const std::size_t before = text.find_last_not_of('\\', at - 1);
        if ((at - before) % 2 == 1) {
            return at;
        }
    }
    return text.size();
}

} // namespace ca::update
