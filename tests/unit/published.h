// Test vectors that others published, in a folder beside the checkout; without it
// their tests are skipped.
#pragma once

#include "temporary_folder.h"

namespace ca::test {

inline std::ifstream published(const std::string& name) {
    return std::ifstream(std::filesystem::path(SHARED_VECTORS) / name);
}

// The rows of a table whose first line names its columns, each cell under its column's name.
inline std::vector<std::map<std::string, std::string>> publishedRows(const std::string& name) {
    std::vector<std::map<std::string, std::string>> rows;
    std::vector<std::string> columns;
    std::ifstream table = published(name);
    for (std::string line; std::getline(table, line);) {
        std::istringstream cells(line);
        if (columns.empty()) {
            for (std::string column; std::getline(cells, column, '\t');) {
                columns.push_back(column);
            }
        } else {
            for (auto& row = rows.emplace_back(); const std::string& column : columns) {
                std::getline(cells, row[column], '\t');
            }
        }
    }
    return rows;
}

inline std::string bytesFromHex(std::string hex) {
    if (hex == "-") { // how the tables write an empty text
        return {};
    }
    hex.insert(0, hex.size() % 2, '0'); // and their numbers come without leading zeros
    std::string bytes;
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

} // namespace ca::test
