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
        {"publish",
         {"system", "install", "net", "update", "publish", "CLI", "nlohmann", "openssl",
          "windows.h", "arpa", "fcntl.h", "locale.h", "netinet", "poll.h", "sys", "termios.h",
          "unistd.h"}},
    };
    int sources = 0;
    for (const fs::directory_entry& file :
         fs::recursive_directory_iterator(fs::path(SOURCE_FOLDER) / "src")) {
        const std::string folder = file.path().parent_path().filename().string();
        if (file.path().extension() != ".h" && file.path().extension() != ".cpp") {
            continue;
        }
        ASSERT_TRUE(allowed.contains(folder)) << file.path();
        ++sources;
        std::istringstream text(ca::test::readFile(file.path()));
        for (std::string line; std::getline(text, line);) {
            EXPECT_FALSE(line.starts_with("#if")) << file.path() << ": " << line;
            if (!line.starts_with("#include ")) {
                continue;
            }
            const std::string name = line.substr(10, line.find_first_of("\">", 10) - 10);
            const std::string top = name.substr(0, name.find('/'));
            const bool isStandard = line[9] == '<' && name.find_first_of("./") == std::string::npos;
            EXPECT_TRUE(isStandard || allowed.at(folder).contains(top))
                << file.path() << ": " << line;
        }
    }
    EXPECT_GT(sources, 40);
}
