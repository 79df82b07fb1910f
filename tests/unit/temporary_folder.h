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

namespace fs = std::filesystem;

class TemporaryFolder {
public:
    explicit TemporaryFolder(const fs::path& base = fs::temp_directory_path())
        : path_(base / ("cold anchor ä " + std::to_string(std::random_device()()))) {
        fs::create_directories(path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const fs::path& path() const { return path_; }
    fs::path operator/(const fs::path& name) const { return path_ / name; }

private:
    fs::path path_;
};

inline fs::path writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

inline std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return (std::ostringstream() << file.rdbuf()).str();
}

using Contents = std::map<std::string, std::string>;
using Paths = std::vector<std::string>;

// Every path below `folder`: a file's with its bytes, a link's with where it leads, a folder's
// with a slash behind it. Whatever another program removes meanwhile may be missing.
inline Contents contentsOf(const fs::path& folder) {
    Contents contents;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != end(entry); entry.increment(error)) {
        const fs::path& path = entry->path();
        const std::string name = path.filename().string();
        std::error_code gone;
        if (entry->is_symlink(gone)) {
            contents[name] = fs::read_symlink(path, gone).generic_string();
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
        throw fs::filesystem_error("contentsOf", folder, error);
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
