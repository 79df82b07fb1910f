#include "install/handover.h"

#include <gtest/gtest.h>

#include <shellapi.h>

using namespace ca;

// What the launcher writes, as the helper reads it; see tests/helper for what it then refuses.
TEST(Handover, ReadsWhatItWrites) {
    const install::Handover sent{4'294'967'295, L"/Cold Anchor/ünï アンカー/New Launcher.exe",
                                 L"/Cold Anchor/ColdAnchorLauncher.exe", L"/b"};
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
}
