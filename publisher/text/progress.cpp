#include "publisher/text/progress.h"

#include "publisher/text/amounts.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>

namespace ca::publisher {

namespace {

constexpr int barWidth = 30; // characters
constexpr std::chrono::milliseconds betweenDraws{100};

} // namespace

Progress::Progress(std::string title, std::uint64_t total)
    : title_(std::move(title)), total_(total), shown_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::add(std::uint64_t bytes) {
    const std::uint64_t done = done_ += bytes;
    if (!shown_) {
        return;
    }
    // A thread that comes meanwhile has nothing newer to show, and doesn't wait.
    const std::unique_lock lock(drawing_, std::try_to_lock);
    if (!lock || Clock::now() - drawn_ < betweenDraws) {
        return;
    }
    drawn_ = Clock::now();
    draw(done);
}

void Progress::draw(std::uint64_t done) const {
    const double part =
        total_ == 0 ? 1 : std::min(static_cast<double>(done) / static_cast<double>(total_), 1.0);
    // Never 0, by which the speed is divided.
    const double seconds =
        std::max(std::chrono::duration<double>(Clock::now() - begin_).count(), 0.001);
    const std::string bar(static_cast<std::size_t>(part * barWidth), '#');
    const std::string speed =
        bytesText(static_cast<std::uint64_t>(static_cast<double>(done) / seconds));
    std::fprintf(stderr, "\r\033[K%s [%-*s] %3.0f%%  %s of %s, %s/s", title_.c_str(), barWidth,
                 bar.c_str(), part * 100, bytesText(done).c_str(), bytesText(total_).c_str(),
                 speed.c_str());
}

} // namespace ca::publisher
