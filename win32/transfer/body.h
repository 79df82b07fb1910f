// The body of a response on its way from libcurl to the reader, in memory of fixed size.
#pragma once

#include "transfer/inflate.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace ca::win32 {

class Body {
public:
    Body() = default;
    // `size` is the number of bytes to come, if it is known; `coding` is undone.
    Body(std::optional<std::uint64_t> size, Coding coding);

    // Keeps bytes that have come, but none beyond the body's size. False, and none kept, if there
    // is no room. Throws std::bad_alloc.
    bool take(std::span<const char> bytes);

    // Bytes for the reader, valid until the next call; empty if more have to come first. False in
    // `sound`: they can't be decoded.
    std::span<const char> front(bool& sound);
    // Drops bytes that front() showed.
    void drop(std::size_t count);

    // Whether all bytes of a body of known size have come.
    bool whole() const { return bytesLeft_ == 0; }
    // Whether take() has kept bytes that front() hasn't used up.
    bool holds() const { return receivedBegin_ < receivedEnd_; }

private:
    std::optional<std::uint64_t> bytesLeft_;
    std::unique_ptr<Inflater> inflater_;
    std::unique_ptr<char[]> received_;
    std::unique_ptr<char[]> decoded_;
    std::size_t receivedBegin_ = 0;
    std::size_t receivedEnd_ = 0;
    std::size_t decodedBegin_ = 0;
    std::size_t decodedEnd_ = 0;
};

} // namespace ca::win32
