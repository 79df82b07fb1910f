// What the headers of an HTTP response say: the few fields that the transfer acts on.
#pragma once

#include "transfer/inflate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ca::win32 {

class ResponseHeaders {
public:
    // One line as it came, with its line end. A status line starts over: the headers before it
    // belonged to an interim response.
    void takeLine(std::string_view line);
    // The empty line has come, and the status is `code`.
    void finish(long code);

    // Whether the headers are complete and those of the final response.
    bool complete() const { return finished_; }
    long status() const { return status_; }
    // Every line as it came, the empty one included.
    const std::string& text() const { return text_; }
    // The field's value as it came, whether it is a number or not.
    const std::optional<std::string>& contentLength() const { return contentLength_; }
    Coding coding() const { return coding_; }
    // How many bytes the body has, if the headers tell; no byte beyond them belongs to it.
    std::optional<std::uint64_t> bodySize() const;
    // The Location of a redirect, empty for any other response.
    std::string_view redirect() const;

private:
    long status_ = 0;
    std::optional<std::string> contentLength_;
    std::string location_;
    std::string text_;
    Coding coding_ = Coding::none;
    bool chunked_ = false;
    bool finished_ = false;
};

// The address that `location` means in a response from `base`, without user and password; empty
// unless it is http or https.
std::string resolveLocation(const std::string& base, std::string_view location);

} // namespace ca::win32
