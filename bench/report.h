// The table that a run prints: one row a measurement, our cost beside another's, and
// whether it reaches its bar.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ca::bench {

// What a row's last column must be.
enum class Bar { None, AtLeast, AtMost };

struct Row {
    std::string work = {};
    std::string ours = {};
    std::string beside = {}; // another program's cost of the same work, or ours of less work
    std::string also = {};   // a third; may be empty
    double figure = 0;       // what is judged
    std::string unit = {};   // of `figure` and `limit`; empty for a ratio
    Bar bar = Bar::None;
    double limit = 0;
};

// Prints the whole table to the standard output. False when a row misses its bar.
bool printTable(const std::vector<Row>& rows);

// A cost as a cell: "openssl 1.72 s", "8.4 ms", "12.3 MiB". An empty `name` is left out.
std::string timeCell(const std::string& name, double seconds);
std::string memoryCell(const std::string& name, double mebibytes);

// "4 KiB", "1 GiB": the largest unit that leaves a whole number.
std::string sizeText(std::uintmax_t bytes);

} // namespace ca::bench
