#include "update/manifest_path.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using ca::update::isSafeManifestPath;

TEST(ManifestPath, NothingButFilesOfTheInstallation) {
    for (const std::string& path :
         {"a/b.dat"s, "a\\b.dat"s, "saves/x"s, "save"s, "userdata"s, "Save/x"s, "data/x.pem"s,
          "..x/...y/..."s, "a//b"s, "data/update_public_key.pem2"s, "x/save/y"s,
          "x/data/update_public_key.pem"s, "Größe/アンカー 😀.pak"s, "a/"s, std::string(240, 'x')}) {
        EXPECT_TRUE(isSafeManifestPath(path)) << path;
    }
    for (const std::string& path :
         {""s, "/a"s, "\\a"s, "C:/a"s, "a:b"s, "a.txt:stream"s, "../a"s, "a/../b"s, "a\\..\\b"s,
          "a/.."s, "./a"s, "a/."s, "."s, ".."s, "a\0"s, "caf\xe9"s, std::string(241, 'x')}) {
        EXPECT_FALSE(isSafeManifestPath(path)) << path;
    }
    for (const std::string& slash : {"/"s, "\\"s, "//"s}) {
        for (const std::string& path :
             {"save" + slash, "save" + slash + "x", "userdata" + slash + "x",
              ".coldanchor-update" + slash + "x", "data" + slash + "update_public_key.pem",
              "data" + slash + "update_public_key.pem\0x"s}) {
            EXPECT_FALSE(isSafeManifestPath(path)) << path;
        }
    }
}

TEST(ManifestPath, MeansTheSameFileWithEitherSeparator) {
    EXPECT_EQ(ca::update::relativePath("a\\b//c.dat"), std::filesystem::path("a") / "b" / "c.dat");
    EXPECT_EQ(ca::update::relativePath("Größe/x").generic_u8string(), u8"Größe/x");
}
