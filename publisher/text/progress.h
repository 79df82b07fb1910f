// How far long work is, on a terminal, and nothing at all in a pipe.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace ca::publisher {

// A line of standard error that is drawn over and over, and wiped in the end. Any thread may add.
class Progress {
public:
    // `total` bytes of work called `title`.
    Progress(std::string title, std::uint64_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(std::uint64_t bytes);

private:
    using Clock = std::chrono::steady_clock;
    void draw(std::uint64_t done) const;

    const std::string title_;
    const std::uint64_t total_;
    const bool shown_;
    const Clock::time_point begin_ = Clock::now();
    std::atomic<std::uint64_t> done_ = 0;
    std::mutex drawing_;
    Clock::time_point drawn_{};
};

// Bytes for people: "999 B", "1.2 MB"; a thousand of one unit make the next.
std::string bytesText(std::uint64_t bytes);

} // namespace ca::publisher
