// The same work for many things, on several threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace ca::publisher {

// Calls a worker with each number below `count`, in ascending order of the starts, on
// `threads` threads; on the caller's own alone if that is 1. `makeWorker` gives each thread a
// worker of its own, called with a number. The first exception ends it, once what has begun is
// done, and is thrown on. Blocks.
template <typename MakeWorker>
void forEach(std::size_t count, unsigned threads, MakeWorker makeWorker) {
    std::atomic<std::size_t> next = 0;
    std::exception_ptr failure;
    std::mutex failing;
    const auto run = [&] {
        try {
            auto work = makeWorker();
            for (std::size_t i = next++; i < count; i = next++) {
                work(i);
            }
        } catch (...) {
            const std::lock_guard lock(failing);
            if (!failure) {
                failure = std::current_exception();
            }
            next = count;
        }
    };
    {
        std::vector<std::jthread> others;
        for (unsigned i = 1; i < threads && i < count; ++i) {
            others.emplace_back(run);
        }
        run();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace ca::publisher
