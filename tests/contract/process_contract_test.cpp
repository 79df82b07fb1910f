#include "contract.h"

#include <shellapi.h>

using namespace ca::test;

static std::intptr_t elevate(const std::filesystem::path& program, const std::wstring& parameters) {
    return reinterpret_cast<std::intptr_t>(
        ::ShellExecuteW(nullptr, L"runas", wideFromPath(program).c_str(), parameters.c_str(),
                        nullptr, SW_SHOWNORMAL));
}

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
    const std::string place = utf8FromPath(folder.path()) + "\n";
    const std::string text = place + place + setting("DISPLAY") +
                             "\n--pid\n7\n--replace\nC:\\a b\\x\n\nx\\\na\\\\b\nc\"d\ne fg";
    // Windows opens no file that is still being renamed.
    EXPECT_TRUE(eventually([&] { return readFile(folder / "out") == text; }))
        << readFile(folder / "out");
    // Where there are zombies, nobody is left as one.
    const std::string entry = "/proc/" + std::to_string(process.dwProcessId);
    EXPECT_TRUE(onWindows || eventually([&] { return !std::filesystem::exists(entry); }));
}

TEST(Processes, AreRefusedWithTheReason) {
    const TemporaryFolder folder;
    const auto garbage =
        writeFile(folder / "garbage.exe", "no program at all, whatever its permissions say");
    std::filesystem::permissions(garbage, std::filesystem::perms::owner_all);
    const auto expectError = [&](const std::filesystem::path& program,
                                 const std::filesystem::path& where, DWORD error) {
        PROCESS_INFORMATION process{};
        EXPECT_EQ(start(program, L"x", where, process), error) << program;
    };
    expectError(folder / "none.exe", folder.path(), ERROR_FILE_NOT_FOUND);
    expectError(folder / "none" / "none.exe", folder.path(), ERROR_PATH_NOT_FOUND);
    expectError(garbage, folder.path(), ERROR_BAD_EXE_FORMAT);
    expectError(childProgram(), folder / "none", ERROR_DIRECTORY);
    // which Windows has no use for
    std::filesystem::permissions(garbage, std::filesystem::perms::owner_read);
    expectError(garbage, folder.path(), onWindows ? ERROR_BAD_EXE_FORMAT : ERROR_ACCESS_DENIED);
}

TEST(Elevation, TellsStartedFromRefusedWithoutWaitingForTheEnd) {
    const TemporaryFolder folder;
    const std::wstring parameters = L"wait \"" + wideFromPath(folder / "out") + L"\"";
#ifdef _WIN32 // Wine 8 starts the program without a prompt
    EXPECT_GT(elevate(childProgram(), parameters), 32);
// the prompt is played by a program that clears the environment and changes the
// folder, as pkexec does
#else
    const auto pkexec =
        writeFile(folder / "pkexec", "#!/bin/sh\ncd /\nexec env -i PATH=\"$PATH\" \"$@\"\n");
    std::filesystem::permissions(pkexec, std::filesystem::perms::owner_all);
    const std::string path = setting("PATH");
    ::setenv("PATH", (folder.path().native() + ":" + path).c_str(), 1);
    ::setenv("DISPLAY", ":77 and a blank", 1);
    EXPECT_GT(elevate(childProgram(), parameters), 32);
    writeFile(pkexec, "#!/bin/sh\nexit 126\n");
    EXPECT_EQ(elevate(childProgram(), L""), SE_ERR_ACCESSDENIED);
    ::setenv("PATH", "/nowhere", 1);
    EXPECT_EQ(elevate(childProgram(), L""), SE_ERR_FNF);
    ::setenv("PATH", path.c_str(), 1);
#endif
    const std::string end = "\n" + setting("DISPLAY");
    EXPECT_TRUE(eventually([&] { return readFile(folder / "out").ends_with(end); }))
        << readFile(folder / "out");
    std::filesystem::remove(folder / "out"); // and the program ends
    EXPECT_EQ(elevate(folder / "none.exe", L""), SE_ERR_FNF);
}

TEST(Processes, EndAtOnceUnderALiveDownload) {
    for (int moment = 0; moment < (onWindows ? 5 : 40); ++moment) {
        const std::string line = "\"" + utf8FromPath(childProgram()) +
                                 "\" leave https://127.0.0.1:" + setting("TLS_PORT") +
                                 "/numbers.txt " + std::to_string(moment * moment * 40);
        ASSERT_EQ(std::system((onWindows ? "\"" + line + "\"" : line).c_str()), 0) << line;
    }
}
