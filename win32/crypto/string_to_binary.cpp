#include "last_error.h"

#include <cstring>
#include <string_view>
#include <vector>
#include <wincrypt.h>

namespace {

using namespace ca::win32;

constexpr int noDigit = -1;

int digitOf(char character) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t place = digits.find(character);
    return place == std::string_view::npos ? noDigit : static_cast<int>(place);
}

// The text between the marker lines; false without both of them.
bool findBody(std::string_view text, std::string_view& body) {
    constexpr std::string_view begin = "-----BEGIN ";
    constexpr std::string_view end = "-----END ";
    constexpr std::string_view dashes = "-----";
    const std::size_t label = text.find(begin);
    if (label == std::string_view::npos) {
        return false;
    }
    // The label between the two runs of dashes may be anything, also nothing.
    const std::size_t close = text.find(dashes, label + begin.size());
    if (close == std::string_view::npos) {
        return false;
    }
    const std::size_t first = close + dashes.size();
    const std::size_t last = text.find(end, first);
    if (last == std::string_view::npos) {
        return false;
    }
    body = text.substr(first, last - first);
    return true;
}

bool isWhitespace(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

// As lenient as Windows: the padding may be missing, the text behind it doesn't count, and a digit
// left over at the end makes a byte of the bits it has.
bool decode(std::string_view body, std::vector<BYTE>& bytes) {
    unsigned bits = 0;
    int bitCount = 0;
    for (const char character : body) {
        if (character == '=') {
            break;
        }
        if (isWhitespace(character)) {
            continue;
        }
        const int digit = digitOf(character);
        if (digit == noDigit) {
            return false;
        }
        // The bits of bytes that are complete leave at the top.
        bits = (bits << 6U) | static_cast<unsigned>(digit);
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<BYTE>(bits >> static_cast<unsigned>(bitCount)));
        }
    }
    if (bitCount == 6) {
        bytes.push_back(static_cast<BYTE>(bits << 2U));
    }
    return !bytes.empty();
}

} // namespace

BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD format, BYTE* binary, DWORD* size,
                          DWORD* skip, DWORD* usedFormat) {
    if (text == nullptr || format != CRYPT_STRING_BASE64HEADER || size == nullptr ||
        skip != nullptr || usedFormat != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::string_view given =
        length == 0 ? std::string_view(text) : std::string_view(text, length);
    std::string_view body;
    std::vector<BYTE> bytes;
    if (!findBody(given, body) || !decode(body, bytes)) {
        return fail(ERROR_INVALID_DATA);
    }
    // Without a buffer the caller asks for the size alone, and `*size` needn't hold anything.
    const bool fits = binary == nullptr || *size >= bytes.size();
    *size = static_cast<DWORD>(bytes.size());
    if (!fits) {
        return fail(ERROR_MORE_DATA);
    }
    if (binary != nullptr) {
        std::memcpy(binary, bytes.data(), bytes.size());
    }
    return TRUE;
}
