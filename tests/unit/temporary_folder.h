// A test's folder, which deletes itself, and what lies in folders.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace ca::test {

class TemporaryFolder {
public:
    explicit TemporaryFolder(
        const std::filesystem::path& base = std::filesystem::temp_directory_path())
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
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

inline std::filesystem::path writeFile(const std::filesystem::path& path,
                                       const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return (std::ostringstream() << file.rdbuf()).str();
}

using Contents = std::map<std::string, std::string>;
using Paths = std::vector<std::string>;

// Every path below `folder`: a file's with its bytes, a link's with where it leads, a folder's
// with a slash behind it. Whatever another program removes meanwhile may be missing.
inline Contents contentsOf(const std::filesystem::path& folder) {
    Contents contents;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != end(entry); entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        const std::string name = path.filename().string();
        std::error_code gone;
        if (entry->is_symlink(gone)) {
            contents[name] = std::filesystem::read_symlink(path, gone).generic_string();
        } else if (entry->is_directory(gone)) {
            contents[name + "/"] = {};
            for (const auto& [below, bytes] : contentsOf(path)) {
                contents[name + "/" + below] = bytes;
            }
        } else {
            contents[name] = readFile(path);
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        throw std::filesystem::filesystem_error("contentsOf", folder, error);
    }
    return contents;
}

// The paths that only one of them has, or that both have with different bytes.
inline Paths differing(const Contents& a, const Contents& b) {
    Contents entries;
    std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(),
                                  std::inserter(entries, entries.end()));
    Paths paths;
    for (const auto& [path, bytes] : entries) {
        paths.push_back(path);
    }
    return paths;
}

} // namespace ca::test
