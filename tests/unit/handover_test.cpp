#include "install/handover.h"
#include "install/work_folders.h"
#include "system/path.h"

#include <gtest/gtest.h>

#include <shellapi.h>

using namespace ca;
namespace fs = std::filesystem;

// What the launcher writes, as the helper reads it; see tests/helper for what it then refuses.
TEST(Handover, ReadsWhatItWrites) {
    const fs::path installation = system::pathFromUtf8("/games/Cold Anchor/ünï アンカー 😀");
    const install::WorkFolders written = install::workFolders(installation, "1763900000123");
    const install::Handover sent{4'294'967'295, written.stage / "tools" / "New Launcher.exe",
                                 installation / "ColdAnchorLauncher.exe", installation / "b"};
    const std::wstring line = L"\"a helper.exe\"" + install::handoverArguments(sent);
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(line.c_str(), &count);
    install::Handover got;
    ASSERT_TRUE(install::readHandover({words, words + count}, got));
    ::LocalFree(words);
    EXPECT_EQ(got.processId, sent.processId);
    EXPECT_EQ(got.staged, sent.staged);
    EXPECT_EQ(got.target, sent.target);
    EXPECT_EQ(got.relaunch, sent.relaunch);
    install::WorkFolders found;
    ASSERT_TRUE(install::findWorkFolders(installation, got.staged, found));
    EXPECT_EQ(found.work, written.work);
    EXPECT_EQ(found.stage, written.stage);
    EXPECT_EQ(found.backup, written.backup);
}
