#include "bench/measure.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>

namespace ca::bench {

namespace {

void run(const Command& command, const kit::ProcessOptions& options) {
    kit::Process process(command, options);
    const std::optional<int> status = process.wait(std::chrono::minutes(30));
    if (status != 0) {
        throw std::runtime_error(
            command.front() + (status ? " ended with " + std::to_string(*status) : " doesn't end"));
    }
}

} // namespace

std::vector<double> alternate(const std::vector<Contestant>& contestants, int rounds) {
    std::vector<std::vector<double>> costs(contestants.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            costs[i].push_back(contestants[i]());
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& cost : costs) {
        const auto middle = cost.begin() + rounds / 2;
        std::nth_element(cost.begin(), middle, cost.end());
        medians.push_back(*middle);
    }
    return medians;
}

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double secondsOfProgram(const Command& command, const kit::ProcessOptions& options) {
    return secondsOf([&] { run(command, options); });
}

// A process inherits the peak of the one that forked it, so a small program has to stand between
// this one and the other.
double peakOfProgram(const Command& command, const kit::ProcessOptions& options) {
    const std::filesystem::path result = std::filesystem::absolute("peak.txt");
    Command timed{"time", "--quiet", "--format=%M", "--output=" + result.string()};
    timed.insert(timed.end(), command.begin(), command.end());
    run(timed, options);
    double kibibytes = 0;
    if (!(std::ifstream(result) >> kibibytes)) {
        throw std::runtime_error("no peak of " + command.front());
    }
    return kibibytes / 1024;
}

} // namespace ca::bench
