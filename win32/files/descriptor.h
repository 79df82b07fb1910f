// A file descriptor of the host's, closed with the object that owns it.
#pragma once

#include <unistd.h>
#include <utility>

namespace ca::win32 {

class Descriptor {
public:
    // A negative number, as a failed open returns it, is no descriptor.
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() { close(); }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }

    void close() {
        if (number_ >= 0) {
            ::close(std::exchange(number_, -1));
        }
    }

private:
    int number_;
};

} // namespace ca::win32
