#include "bench/report.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ca::bench {

namespace {

constexpr std::size_t columns = 7;
using Line = std::array<std::string, columns>;

std::string decimal(double number, int digits) {
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.*f", digits, number);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string cell(const std::string& name, const std::string& value) {
    return name.empty() ? value : name + ' ' + value;
}

bool reaches(const Row& row) {
    return row.bar == Bar::None ||
           (row.bar == Bar::AtLeast ? row.figure >= row.limit : row.figure <= row.limit);
}

Line lineOf(const Row& row) {
    const std::string bar = row.bar == Bar::AtLeast ? "at least " : "at most ";
    const std::string figure = decimal(row.figure, 2) + row.unit;
    if (row.bar == Bar::None) {
        return {row.work, row.ours, row.beside, row.also, "", "", figure};
    }
    const std::string limit = bar + decimal(row.limit, 2) + row.unit;
    return {row.work, row.ours, row.beside, row.also, limit, reaches(row) ? "yes" : "NO", figure};
}

} // namespace

bool printTable(const std::vector<Row>& rows) {
    std::vector<Line> lines{{"work", "ours", "beside it", "also", "bar", "reached", "ratio"}};
    bool good = true;
    for (const Row& row : rows) {
        lines.push_back(lineOf(row));
        good = good && reaches(row);
    }
    std::array<std::size_t, columns> widths{};
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < columns; ++i) {
            widths[i] = std::max(widths[i], line[i].size());
        }
    }
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < columns; ++i) {
            std::printf("%-*s  ", static_cast<int>(widths[i]), line[i].c_str());
        }
        std::puts("");
    }
    return good;
}

std::string timeCell(const std::string& name, double seconds) {
    if (seconds >= 1) {
        return cell(name, decimal(seconds, 2) + " s");
    }
    return cell(name, seconds >= 1e-3 ? decimal(seconds * 1e3, 1) + " ms"
                                      : decimal(seconds * 1e6, 1) + " us");
}

std::string memoryCell(const std::string& name, double mebibytes) {
    return cell(name, decimal(mebibytes, 2) + " MiB");
}

std::string sizeText(std::uintmax_t bytes) {
    constexpr std::array units{" bytes", " KiB", " MiB", " GiB"};
    std::size_t unit = 0;
    for (; unit + 1 < units.size() && bytes % 1024 == 0; ++unit) {
        bytes /= 1024;
    }
    return std::to_string(bytes) + units[unit];
}

} // namespace ca::bench
