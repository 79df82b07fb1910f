// What the head of an HTTP response says: the few fields that the transfer acts on.
#pragma once

#include "http/inflate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ca::win32 {

class ResponseHead {
public:
    // One line as it came, with its line end. A status line begins anew: the one before
    // belonged to an interim answer.
    void takeLine(std::string_view line);
    // The empty line has come, and the status is `code`.
    void finish(long code);

    // Whether the head is whole and that of the answer proper.
    bool complete() const { return finished; }
    long status() const { return statusCode; }
    // Every line as it came, the empty one included.
    const std::string& text() const { return lines; }
    const std::optional<std::string>& contentLength() const { return lengthText; }
    Coding coding() const { return contentCoding; }
    // How many bytes the body has, if the head tells; no byte beyond them belongs to it.
    std::optional<std::uint64_t> bodySize() const;
    // The place that a redirect names, empty for any other answer.
    std::string_view redirect() const;

private:
    long statusCode = 0;
    std::optional<std::string> lengthText;
    std::string location;
    std::string lines;
    Coding contentCoding = Coding::none;
    bool chunked = false;
    bool finished = false;
};

// The address that `location` means when it comes from `base`, without user and password; empty
// unless it is http or https.
std::string resolveLocation(const std::string& base, std::string_view location);

} // namespace ca::win32
