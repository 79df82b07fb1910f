#include "contract.h"

using namespace ca::test;

static HANDLE open(const fs::path& path, DWORD access, DWORD disposition,
                   DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return ::CreateFileW(wideFromPath(path).c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                         flags, nullptr);
}

static constexpr DWORD reading = GENERIC_READ, writing = GENERIC_WRITE;

TEST(Files, OpenByTheirDisposition) {
    const TemporaryFolder folder;
    writeFile(folder / "old", "old");
    fs::create_directory(folder / "sub");
    using Row = std::tuple<const char*, DWORD, DWORD, DWORD>;
    for (const auto& [name, access, disposition, error] :
         {Row("new", writing, CREATE_NEW, 0),
          {"new", writing, CREATE_NEW, ERROR_FILE_EXISTS},
          {"new", writing, CREATE_ALWAYS, ERROR_ALREADY_EXISTS},
          {"new2", writing, CREATE_ALWAYS, 0},
          {"old", reading, OPEN_EXISTING, 0},
          {"no", reading, OPEN_EXISTING, ERROR_FILE_NOT_FOUND},
          {"no/x", writing, CREATE_NEW, ERROR_PATH_NOT_FOUND},
          {"sub", reading, OPEN_EXISTING, ERROR_ACCESS_DENIED},
          {"sub", writing, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
          {"sub", writing, CREATE_NEW, ERROR_FILE_EXISTS}}) {
        ::SetLastError(1);
        const HANDLE file = open(folder / name, access, disposition);
        EXPECT_EQ(::GetLastError(), error) << name << " " << disposition;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, error == 0 || error == ERROR_ALREADY_EXISTS);
        ::CloseHandle(file); // no harm to the other kind
    }
}

TEST(Files, AreReadAndWrittenAsTheirHandlesAllow) {
    const TemporaryFolder folder;
    const auto path = folder / u8"fé€", passing = folder / "test";
    char bytes[8] = "hello";
    // 1000 and the bytes that went through, or the error.
    const auto through = [&](auto call, HANDLE file, DWORD size) {
        DWORD count = 0;
        const DWORD error = result(call(file, bytes, size, &count, nullptr));
        return error == 0 ? 1000 + count : error;
    };
    const HANDLE both = open(path, reading | writing, CREATE_NEW);
    expectSteps({{"write", through(::WriteFile, both, 5), 1005},
                 {"flush", result(::FlushFileBuffers(both)), 0},
                 {"read at the end", through(::ReadFile, both, 8), 1000},
                 {"close", result(::CloseHandle(both)), 0}});
    const HANDLE old = open(path, reading, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    expectSteps({{"read", through(::ReadFile, old, 8), 1005},
                 {"write without the right", through(::WriteFile, old, 5), ERROR_ACCESS_DENIED},
                 {"flush without the right", result(::FlushFileBuffers(old)), ERROR_ACCESS_DENIED},
                 {"close", result(::CloseHandle(old)), 0},
                 {"close nothing", result(::CloseHandle(nullptr)), ERROR_INVALID_HANDLE}});
    EXPECT_EQ(readFile(path), "hello");
    const HANDLE test =
        open(passing, writing, CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    expectSteps({{"there", fs::exists(passing), true},
                 {"close", result(::CloseHandle(test)), 0},
                 {"gone", fs::exists(passing), false}});
}

TEST(Files, MoveInOneStep) {
    const TemporaryFolder folder;
    writeFile(folder / "a", "a");
    writeFile(folder / "sub" / "b", "b");
    fs::create_directories(folder / "empty");
    constexpr DWORD over = MOVEFILE_REPLACE_EXISTING;
    using Row = std::tuple<const char*, const char*, DWORD, DWORD>;
    for (const auto& [from, to, flags, error] : {Row("a", "sub/b", 0, ERROR_ALREADY_EXISTS),
                                                 {"a", "sub", 0, ERROR_ALREADY_EXISTS},
                                                 {"a", "sub", over, ERROR_ACCESS_DENIED},
                                                 {"sub", "empty", over, ERROR_ACCESS_DENIED},
                                                 {"no", "c", over, ERROR_FILE_NOT_FOUND},
                                                 {"no/x", "c", over, ERROR_PATH_NOT_FOUND},
                                                 {"a", "no/x", over, ERROR_PATH_NOT_FOUND},
                                                 {"a", "c", 0, 0},
                                                 {"c", "sub/b", over | MOVEFILE_WRITE_THROUGH, 0},
                                                 {"sub", "d", 0, 0}}) {
        EXPECT_EQ(result(::MoveFileExW(wideFromPath(folder / from).c_str(),
                                       wideFromPath(folder / to).c_str(), flags)),
                  error)
            << from << " to " << to;
    }
    EXPECT_EQ(contentsOf(folder.path()), (Contents{{"d/", ""}, {"d/b", "a"}, {"empty/", ""}}));
}
