// A progress bar; silent unless standard error is a terminal.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace ca::publisher {

// One line, drawn over and over, and wiped when the object ends. Any thread may add.
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

} // namespace ca::publisher
