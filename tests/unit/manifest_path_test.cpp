#include "update/manifest_path.h"

#include <gtest/gtest.h>
#include <span>

using namespace std::string_literals;
using ca::update::isSafeManifestPath;

TEST(ManifestPath, NothingButFilesOfTheInstallation) {
    for (const std::string& path :
         {"a/b.dat"s, "a\\b.dat"s, "saves/x"s, "save"s, "userdata"s, "Save/x"s, "data/x.pem"s, "..x/...y/..."s, "a//b"s,
          "data/update_public_key.pem2"s, "x/save/y"s, "x/data/update_public_key.pem"s, "Größe/アンカー 😀.pak"s, "a/"s,
          std::string(240, 'x')})
        EXPECT_TRUE(isSafeManifestPath(path)) << path;
    const std::string notUtf8[] = {"\xff", "caf\xe9", "cut\xe2\x82", "a\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80"};
    const std::string elsewhere[] = {
        "",         "/a",   "\\a", "C:/a", "a:b", "a.txt:stream", "../a", "a/../b",
        "a\\..\\b", "a/..", "./a", "a/.",  ".",   "..",           "a\0"s, std::string(241, 'x')};
    for (const auto& paths : {std::span<const std::string>(notUtf8), std::span<const std::string>(elsewhere)})
        for (const std::string& path : paths)
            EXPECT_FALSE(isSafeManifestPath(path)) << path;
    for (const std::string& slash : {"/"s, "\\"s, "//"s})
        for (const std::string& path :
             {"save" + slash, "save" + slash + "x", "userdata" + slash + "x", ".coldanchor-update" + slash + "x",
              "data" + slash + "update_public_key.pem", "data" + slash + "update_public_key.pem\0x"s})
            EXPECT_FALSE(isSafeManifestPath(path)) << path;
}

TEST(ManifestPath, MeansTheSameFileWithEitherSeparator) {
    EXPECT_EQ(ca::update::relativePath("a\\b//c.dat"), std::filesystem::path("a") / "b" / "c.dat");
    EXPECT_EQ(ca::update::relativePath("Größe/x").generic_u8string(), u8"Größe/x");
}
