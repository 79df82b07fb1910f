#include "publisher/commands/commands.h"

#include <algorithm>
#include <thread>

namespace ca::publisher {

void addJobs(CLI::App& command, unsigned& threads, const char* help) {
    threads = std::max(std::thread::hardware_concurrency(), 1U); // 0: the system doesn't tell
    command.add_option("--jobs", threads, help)->capture_default_str()->check(CLI::Range(1, 256));
}

} // namespace ca::publisher
