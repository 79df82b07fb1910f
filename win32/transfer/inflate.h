// The content codings gzip and deflate, undone piece by piece in bounded memory.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

struct z_stream_s;

namespace ca::win32 {

enum class Coding { none, gzip, deflate };

// The coding that the value of a Content-Encoding header names; `none` for any that isn't known.
Coding codingNamed(std::string_view value);

class Inflater {
public:
    // `coding` isn't `none`. Throws std::bad_alloc.
    explicit Inflater(Coding coding);

    // Decodes from `input` into `output`, cuts what it took off the front of `input`, and returns
    // the number of bytes written: 0 means that it needs more input. What follows the end of the
    // coded data is taken and dropped, unless another gzip member begins there. False in `sound`:
    // the input isn't what its header promised.
    std::size_t decode(std::span<const char>& input, std::span<char> output, bool& sound);

private:
    struct Close {
        void operator()(z_stream_s* opened) const;
    };
    void open(char firstByte);
    bool beginsAgain(std::span<const char> input);
    // One call of zlib's, which cuts what it used off the front of both; its result.
    int step(std::span<const char>& input, std::span<char>& output);

    std::unique_ptr<z_stream_s, Close> stream_;
    const Coding kind_;
    bool ended_ = false;
};

} // namespace ca::win32
