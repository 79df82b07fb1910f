#include "contract.h"

using namespace ca::test;

TEST(Processes, StartInTheirFolderWithTheirArguments) {
    const TemporaryFolder folder; // its name holds blanks and a letter beyond ASCII
    const auto program = folder / u8"prögräm €.exe";
    std::filesystem::copy_file(childProgram(), program);
    PROCESS_INFORMATION process{};
    const std::wstring line =
        L"\"" + wideFromPath(program) +
        LR"(" report out --pid 7 --replace "C:\a b\x" "" "x\\" a\\b c\"d "e f"g)";
    ASSERT_EQ(start(program, line, folder.path(), process), 0U);
    EXPECT_TRUE(::CloseHandle(process.hProcess));
    const std::string place = utf8FromPath(folder.path());
    const std::string text =
        place + "\n" + place + "\n--pid\n7\n--replace\nC:\\a b\\x\n\nx\\\na\\\\b\nc\"d\ne fg";
    // Windows opens no file that is still being renamed.
    EXPECT_TRUE(eventually([&] { return readFile(folder / "out") == text; }))
        << readFile(folder / "out");
    // Where there are zombies, nobody is left as one.
    const std::string entry = "/proc/" + std::to_string(process.dwProcessId);
    EXPECT_TRUE(onWindows || eventually([&] { return !std::filesystem::exists(entry); }));
}

TEST(Processes, AreRefusedWithTheReason) {
    const TemporaryFolder folder;
    const auto garbage = writeFile(folder / "garbage.exe", "no program, whatever its rights say");
    std::filesystem::permissions(garbage, std::filesystem::perms::owner_all);
    const auto locked = writeFile(folder / "locked.exe", "which Windows has no use for");
    const auto started = [&](const std::filesystem::path& program, const char* where) {
        PROCESS_INFORMATION process{};
        return start(program, L"x", folder / where, process);
    };
    expectSteps(
        {{"no file", started(folder / "none.exe", ""), ERROR_FILE_NOT_FOUND},
         {"no folder", started(folder / "none/none.exe", ""), ERROR_PATH_NOT_FOUND},
         {"no program", started(garbage, ""), ERROR_BAD_EXE_FORMAT},
         {"no right", started(locked, ""), onWindows ? ERROR_BAD_EXE_FORMAT : ERROR_ACCESS_DENIED},
         {"nowhere", started(childProgram(), "none"), ERROR_DIRECTORY}});
}

TEST(Processes, EndAtOnceUnderALiveDownload) {
    for (int moment = 0; moment < (onWindows ? 5 : 40); ++moment) {
        const std::string line = "\"" + utf8FromPath(childProgram()) +
                                 "\" leave https://127.0.0.1:" + setting("TLS_PORT") +
                                 "/numbers.txt " + std::to_string(moment * moment * 40);
        ASSERT_EQ(std::system((onWindows ? "\"" + line + "\"" : line).c_str()), 0) << line;
    }
}
