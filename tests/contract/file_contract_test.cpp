#include "contract.h"

using namespace ca::test;

static HANDLE open(const std::filesystem::path& path, DWORD access, DWORD disposition,
                   DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return ::CreateFileW(wideFromPath(path).c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                         flags, nullptr);
}

static constexpr DWORD reading = GENERIC_READ, writing = GENERIC_WRITE;

TEST(Files, OpenByTheirDisposition) {
    const TemporaryFolder folder;
    writeFile(folder / "old", "old");
    std::filesystem::create_directory(folder / "sub");
    using Row = std::tuple<const char*, DWORD, DWORD, DWORD>;
    for (const auto& [name, access, disposition, error] :
         {Row("new", writing, CREATE_NEW, 0), Row("new", writing, CREATE_NEW, ERROR_FILE_EXISTS),
          Row("new", writing, CREATE_ALWAYS, ERROR_ALREADY_EXISTS),
          Row("new2", writing, CREATE_ALWAYS, 0), Row("old", reading, OPEN_EXISTING, 0),
          Row("no", reading, OPEN_EXISTING, ERROR_FILE_NOT_FOUND),
          Row("no/x", reading, OPEN_EXISTING, ERROR_PATH_NOT_FOUND),
          Row("no/x", writing, CREATE_NEW, ERROR_PATH_NOT_FOUND),
          Row("old/x", reading, OPEN_EXISTING, ERROR_PATH_NOT_FOUND),
          Row("sub", reading, OPEN_EXISTING, ERROR_ACCESS_DENIED),
          Row("sub", writing, CREATE_ALWAYS, ERROR_ACCESS_DENIED),
          Row("sub", writing, CREATE_NEW, ERROR_FILE_EXISTS),
          Row("old", reading, 9, ERROR_INVALID_PARAMETER)}) {
        ::SetLastError(1);
        const HANDLE file = open(folder / name, access, disposition);
        EXPECT_EQ(::GetLastError(), error) << name << " " << disposition;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, error == 0 || error == ERROR_ALREADY_EXISTS);
        ::CloseHandle(file); // no harm to the other kind
    }
}

TEST(Files, AreReadAndWrittenAsTheirHandlesAllow) {
    const TemporaryFolder folder;
    HANDLE file = open(folder / u8"fé€", reading | writing, CREATE_NEW);
    DWORD count = 9;
    char bytes[8] = {};
    EXPECT_TRUE(::WriteFile(file, "hello", 5, &count, nullptr) && count == 5 &&
                ::FlushFileBuffers(file));
    EXPECT_TRUE(::ReadFile(file, bytes, 8, &count, nullptr) && count == 0) << "the end of the file";
    EXPECT_TRUE(::CloseHandle(file));
    file = open(folder / u8"fé€", reading, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    EXPECT_TRUE(::ReadFile(file, bytes, 8, &count, nullptr) &&
                std::string(bytes, count) == "hello");
    EXPECT_TRUE(!::WriteFile(file, "x", 1, &count, nullptr) &&
                ::GetLastError() == ERROR_ACCESS_DENIED);
    EXPECT_TRUE(!::FlushFileBuffers(file) && ::GetLastError() == ERROR_ACCESS_DENIED);
    EXPECT_TRUE(::CloseHandle(file) && !::CloseHandle(nullptr) &&
                ::GetLastError() == ERROR_INVALID_HANDLE);
    file = open(folder / "test", writing, CREATE_NEW,
                FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    EXPECT_TRUE(std::filesystem::exists(folder / "test"));
    EXPECT_TRUE(::CloseHandle(file) && !std::filesystem::exists(folder / "test"));
}

TEST(Files, MoveInOneStep) {
    const TemporaryFolder folder;
    writeFile(folder / "a", "a");
    writeFile(folder / "sub" / "b", "b");
    std::filesystem::create_directories(folder / "empty");
    constexpr DWORD over = MOVEFILE_REPLACE_EXISTING;
    using Row = std::tuple<const char*, const char*, DWORD, DWORD>;
    for (const auto& [from, to, flags, error] :
         {Row("a", "sub/b", 0, ERROR_ALREADY_EXISTS), Row("a", "sub", 0, ERROR_ALREADY_EXISTS),
          Row("a", "sub", over, ERROR_ACCESS_DENIED),
          Row("sub", "empty", over, ERROR_ACCESS_DENIED),
          Row("no", "c", over, ERROR_FILE_NOT_FOUND), Row("no/x", "c", over, ERROR_PATH_NOT_FOUND),
          Row("a", "no/x", over, ERROR_PATH_NOT_FOUND), Row("a", "c", 0, 0),
          Row("c", "sub/b", over | MOVEFILE_WRITE_THROUGH, 0), Row("sub", "d", 0, 0)}) {
        const BOOL moved = ::MoveFileExW(wideFromPath(folder / from).c_str(),
                                         wideFromPath(folder / to).c_str(), flags);
        EXPECT_EQ(moved ? 0 : ::GetLastError(), error) << from << " to " << to;
    }
    EXPECT_TRUE(readFile(folder / "d" / "b") == "a" && !std::filesystem::exists(folder / "a"));
}
