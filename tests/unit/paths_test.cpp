#include "system/file_kind.h"
#include "system/folders.h"
#include "system/system_path.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::system;
namespace fs = std::filesystem;

TEST(Paths, TakeTheFormWithoutALimitWhereTheyAreLong) {
    const std::wstring longest(234, L'd'), tooLong(235, L'd');
    using Row = std::pair<std::wstring, std::wstring>;
    for (const auto& [path, expected] :
         {Row(L"C:/a/b", L"C:/a/b"),
          {L"C:/" + longest + L"/x", L"C:/" + longest + L"/x"},
          {L"C:/" + tooLong + L"/x", L"\\\\?\\C:\\" + tooLong + L"\\x"},
          {L"\\\\?\\C:\\" + tooLong, L"\\\\?\\C:\\" + tooLong},
          {L"\\\\?\\C:\\games\\data/maps/x", L"\\\\?\\C:\\games\\data\\maps\\x"},
          {L"//server/share/" + tooLong, L"//server/share/" + tooLong},
          {L"/games/" + tooLong, L"/games/" + tooLong}}) {
        EXPECT_EQ(SystemPath(path).text(), expected);
    }
}

TEST(Paths, TellWhatStandsThere) {
    const ca::test::TemporaryFolder folder;
    const std::string deep = std::string(120, 'd') + "/" + std::string(120, 'e');
    EXPECT_TRUE(makeFolders(folder / deep / "folder"));
    EXPECT_TRUE(makeFolders(folder / deep / "folder"));
    ca::test::writeFile(folder / deep / "file", "text");
    EXPECT_FALSE(makeFolders(folder / deep / "file"));
    EXPECT_FALSE(makeFolders(folder / deep / "file/below/it"));
    std::error_code failed; // Wine makes no links
    fs::create_symlink("file", folder / deep / "link", failed);
    fs::create_directory_symlink("folder", folder / deep / "folder link", failed);
    fs::create_symlink("nothing", folder / deep / "broken link", failed);
    using Row = std::tuple<const char*, bool, bool>;
    for (const auto& [name, exists, file] : {Row("file", true, true),
                                             {"folder", true, false},
                                             {"none", false, false},
                                             {"none/below", false, false},
                                             {"file/below", false, false},
                                             {"link", !failed, !failed},
                                             {"folder link", !failed, false},
                                             {"broken link", false, false}}) {
        EXPECT_EQ(pathExists(folder / deep / name), exists) << name;
        EXPECT_EQ(isFile(folder / deep / name), file) << name;
    }
    EXPECT_TRUE(failed || makeFolders(folder / deep / "folder link/below"));
}
