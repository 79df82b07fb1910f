// bench_report FOLDER WORKER [--small]: makes every measurement with files in FOLDER and prints the
// table. The exit status is 0 if every bar is reached, 1 if one is missed, and 2 if something can't
// be measured. Small sizes are for trying the measurements out: starting a program then counts for
// more than its work, so no bar is judged.
#include "bench/rows.h"

#include <cstdio>
#include <iostream>

namespace {

namespace fs = std::filesystem;
using ca::bench::Sizes;

constexpr Sizes smallSizes{20, 2000, 256 << 20, 64 << 20, 200, 20000};

constexpr struct {
    const char* name;
    void (*addRows)(const ca::bench::Setting&, std::vector<ca::bench::Row>&);
} subjects[] = {{"checks", ca::bench::addCheckRows},
                {"downloads", ca::bench::addDownloadRows},
                {"manifests", ca::bench::addManifestRows},
                {"frames", ca::bench::addFrameRows}};

bool measure(const fs::path& folder, const fs::path& worker, const Sizes& sizes) {
    const fs::path scratch = folder / "scratch";
    fs::remove_all(scratch);
    fs::create_directories(scratch);
    fs::create_directories(folder / "data");
    fs::current_path(scratch); // for what the measuring itself writes
    const ca::bench::Setting setting{
        .sizes = sizes, .data = folder / "data", .scratch = scratch, .worker = worker};
    std::vector<ca::bench::Row> rows;
    for (const auto& [name, addRows] : subjects) {
        std::cerr << "measuring " << name << "...\n";
        addRows(setting, rows);
    }
    fs::remove_all(scratch);
    return ca::bench::printTable(rows);
}

} // namespace

int main(int count, char** arguments) try {
    const bool small = count == 4 && std::string(arguments[3]) == "--small";
    if (count != 3 && !small) {
        std::cerr << "bench_report FOLDER WORKER [--small]\n";
        return 2;
    }
    const bool good = measure(fs::absolute(arguments[1]), fs::absolute(arguments[2]),
                              small ? smallSizes : Sizes{});
    return good || small ? 0 : 1;
} catch (const std::exception& error) {
    std::cerr << "bench_report: " << error.what() << '\n';
    return 2;
}
