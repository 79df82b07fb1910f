#include "publisher/text/shown.h"

#include "system/text.h"

#include <algorithm>

namespace ca::publisher {

std::string shown(std::string_view text) {
    std::string result(text);
    const bool whole = system::isUtf8(text);
    for (std::size_t at = 0; at < result.size(); ++at) {
        const auto byte = static_cast<unsigned char>(result[at]);
        // U+0080 to U+009F in UTF-8: some terminals obey these too.
        const bool isSecondControl =
            byte == 0xC2 && at + 1 < result.size() && (result[at + 1] & 0xE0) == 0x80;
        if (byte < 0x20 || byte == 0x7F || (!whole && byte >= 0x80)) {
            result[at] = '?';
        } else if (isSecondControl) {
            result.replace(at, 2, "?");
        }
    }
    return result;
}

std::string shownLines(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        (result += shown(line)) += '\n';
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return result;
}

} // namespace ca::publisher
