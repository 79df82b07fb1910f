#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;

// Includes point one way, each system's calls stay in their folder, and no source asks which
// system it is built for.
TEST(Architecture, FoldersIncludeOneWay) {
    const std::map<std::string, std::set<std::string>> allowed{
        {"system", {"system", "windows.h"}},
        {"install", {"system", "install", "windows.h"}},
        {"net", {"system", "install", "net", "windows.h", "winhttp.h"}},
        {"update", {"system", "install", "net", "update", "windows.h", "bcrypt.h", "wincrypt.h"}},
        {"job", {"system", "install", "update", "job", "windows.h", "shellapi.h"}},
        {"launcher", {"system", "install", "update", "job", "launcher", "SDL3", "SDL3_image"}},
        {"helper", {"system", "install", "helper", "windows.h", "shellapi.h"}},
        // the publisher's rooms
        {"text", {"system", "text", "unistd.h"}},
        {"files", {"update", "text", "files", "fcntl.h", "sys", "unistd.h"}},
        {"rules", {"system", "install", "update", "text", "rules", "locale.h"}},
        {"keys",
         {"system", "update", "text", "files", "keys", "fcntl.h", "openssl", "poll.h", "sys",
          "termios.h"}},
        {"serve", {"text", "files", "serve", "arpa", "fcntl.h", "netinet", "sys", "unistd.h"}},
        {"check", {"net", "update", "text", "files", "rules", "keys", "check"}},
        {"release",
         {"system", "install", "update", "text", "files", "rules", "keys", "release", "fcntl.h",
          "sys", "unistd.h"}},
        {"commands",
         {"text", "files", "keys", "serve", "check", "release", "commands", "CLI", "nlohmann"}},
    };
    int sources = 0;
    std::vector<fs::path> files;
    for (const char* program : {"src", "publisher"}) {
        std::copy(fs::recursive_directory_iterator(fs::path(SOURCE_FOLDER) / program), {},
                  std::back_inserter(files));
    }
    for (const fs::path& file : files) {
        const std::string folder = file.parent_path().filename().string();
        if (file.extension() != ".h" && file.extension() != ".cpp") {
            continue;
        }
        ASSERT_TRUE(allowed.contains(folder)) << file;
        ++sources;
        std::istringstream text(ca::test::readFile(file));
        for (std::string line; std::getline(text, line);) {
            EXPECT_FALSE(line.starts_with("#if")) << file << ": " << line;
            if (!line.starts_with("#include ")) {
                continue;
            }
            const std::string name = line.substr(10, line.find_first_of("\">", 10) - 10);
            const std::string room = fs::path(name).parent_path().filename().string();
            const bool isStandard = line[9] == '<' && name.find_first_of("./") == std::string::npos;
            EXPECT_TRUE(isStandard || allowed.at(folder).contains(room.empty() ? name : room))
                << file << ": " << line;
        }
    }
    EXPECT_GT(sources, 80);
}
