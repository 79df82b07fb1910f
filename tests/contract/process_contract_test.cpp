#include "contract.h"

using namespace ca::test;

TEST(Processes, StartInTheirFolderWithTheirArguments) {
    const TemporaryFolder folder; // its name holds blanks and a letter beyond ASCII
    const auto program = folder / u8"prögräm €.exe";
    fs::copy_file(childProgram(), program);
    std::wstring line =
        L"\"" + wideFromPath(program) +
        LR"(" report "aus €" --pid 7 --replace "C:\ä b\x" "" "x\\" a\\b c\"d "e f"g)";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(::CreateProcessW(wideFromPath(program).c_str(), line.data(), nullptr, nullptr,
                                 FALSE, CREATE_NO_WINDOW, nullptr,
                                 wideFromPath(folder.path()).c_str(), &startup, &process));
    EXPECT_TRUE(::CloseHandle(process.hThread));
    EXPECT_TRUE(::CloseHandle(process.hProcess));
    const std::string place = utf8FromPath(folder.path());
    const std::string text =
        place + "\n" + place + "\n--pid\n7\n--replace\nC:\\ä b\\x\n\nx\\\na\\\\b\nc\"d\ne fg";
    // Windows opens no file that is still being renamed.
    const auto report = folder / u8"aus €";
    EXPECT_TRUE(eventually([&] { return readFile(report) == text; })) << readFile(report);
    // Where there are zombies, nobody is left as one.
    const std::string entry = "/proc/" + std::to_string(process.dwProcessId);
    EXPECT_TRUE(onWindows || eventually([&] { return !fs::exists(entry); }));
}

TEST(Processes, EndAtOnceUnderALiveDownload) {
    for (int moment = 0; moment < (onWindows ? 5 : 40); ++moment) {
        const std::string line = "\"" + utf8FromPath(childProgram()) +
                                 "\" leave https://127.0.0.1:" + setting("TLS_PORT") +
                                 "/numbers.txt " + std::to_string(moment * moment * 40);
        ASSERT_EQ(std::system((onWindows ? "\"" + line + "\"" : line).c_str()), 0) << line;
    }
}
