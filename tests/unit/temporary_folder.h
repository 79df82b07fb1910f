// A folder that deletes itself.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace ca::test {

class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& base = std::filesystem::temp_directory_path())
        : path_(base / ("cold anchor ä " + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline std::filesystem::path writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return (std::ostringstream() << file.rdbuf()).str();
}

inline std::string bytesFromHex(std::string hex) {
    if (hex == "-") // how published tables write an empty text
        return {};
    hex.insert(0, hex.size() % 2, '0'); // and their numbers come without leading zeros
    std::string bytes;
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
    return bytes;
}

} // namespace ca::test
