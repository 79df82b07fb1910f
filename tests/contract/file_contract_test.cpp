#include "contract.h"

using namespace ca::test;

namespace {

HANDLE open(const std::filesystem::path& path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return ::CreateFileW(wideFromPath(path).c_str(), access, FILE_SHARE_READ, nullptr, disposition, flags, nullptr);
}

} // namespace

TEST(Files, OpenByTheirDisposition) {
    const TemporaryFolder folder;
    writeFile(folder / "old", "old");
    std::filesystem::create_directory(folder / "sub");
    using Row = std::tuple<const char*, DWORD, DWORD, DWORD>;
    for (const auto& [name, access, disposition, error] :
         {Row("new", GENERIC_WRITE, CREATE_NEW, 0), Row("new", GENERIC_WRITE, CREATE_NEW, ERROR_FILE_EXISTS),
          Row("new", GENERIC_WRITE, CREATE_ALWAYS, ERROR_ALREADY_EXISTS), Row("new2", GENERIC_WRITE, CREATE_ALWAYS, 0),
          Row("old", GENERIC_READ, OPEN_EXISTING, 0), Row("no", GENERIC_READ, OPEN_EXISTING, ERROR_FILE_NOT_FOUND),
          Row("no/x", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND),
          Row("no/x", GENERIC_WRITE, CREATE_NEW, ERROR_PATH_NOT_FOUND),
          Row("old/x", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND),
          Row("sub", GENERIC_READ, OPEN_EXISTING, ERROR_ACCESS_DENIED),
          Row("sub", GENERIC_WRITE, CREATE_ALWAYS, ERROR_ACCESS_DENIED),
          Row("sub", GENERIC_WRITE, CREATE_NEW, ERROR_FILE_EXISTS),
          Row("old", GENERIC_READ, 9, ERROR_INVALID_PARAMETER)}) {
        ::SetLastError(1);
        const HANDLE file = open(folder / name, access, disposition);
        EXPECT_EQ(::GetLastError(), error) << name << " " << disposition;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, error == 0 || error == ERROR_ALREADY_EXISTS);
        ::CloseHandle(file); // no harm to the other kind
    }
    EXPECT_EQ(readFile(folder / "old"), "old");
}

TEST(Files, AreReadAndWrittenAsTheirHandlesAllow) {
    const TemporaryFolder folder;
    HANDLE file = open(folder / u8"fé€", GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    DWORD count = 9;
    char bytes[8] = {};
    EXPECT_TRUE(::WriteFile(file, "hello", 5, &count, nullptr) && count == 5 && ::FlushFileBuffers(file));
    EXPECT_TRUE(::ReadFile(file, bytes, 8, &count, nullptr) && count == 0) << "the end of the file";
    EXPECT_TRUE(::CloseHandle(file));
    file = open(folder / u8"fé€", GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    EXPECT_TRUE(::ReadFile(file, bytes, 8, &count, nullptr) && std::string(bytes, count) == "hello");
    EXPECT_TRUE(!::WriteFile(file, "x", 1, &count, nullptr) && ::GetLastError() == ERROR_ACCESS_DENIED);
    EXPECT_TRUE(!::FlushFileBuffers(file) && ::GetLastError() == ERROR_ACCESS_DENIED);
    EXPECT_TRUE(::CloseHandle(file) && !::CloseHandle(nullptr) && ::GetLastError() == ERROR_INVALID_HANDLE);
    file = open(folder / "test.tmp", GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    EXPECT_TRUE(std::filesystem::exists(folder / "test.tmp"));
    EXPECT_TRUE(::CloseHandle(file) && !std::filesystem::exists(folder / "test.tmp"));
}

TEST(Files, MoveInOneStep) {
    const TemporaryFolder folder;
    writeFile(folder / "a", "a");
    writeFile(folder / "b", "b");
    std::filesystem::create_directories(folder / "sub");
    std::filesystem::create_directories(folder / "empty");
    constexpr DWORD replace = MOVEFILE_REPLACE_EXISTING;
    using Row = std::tuple<const char*, const char*, DWORD, DWORD>;
    for (const auto& [from, to, flags, error] :
         {Row("a", "b", 0, ERROR_ALREADY_EXISTS), Row("a", "sub", 0, ERROR_ALREADY_EXISTS),
          Row("a", "sub", replace, ERROR_ACCESS_DENIED), Row("sub", "empty", replace, ERROR_ACCESS_DENIED),
          Row("no", "c", replace, ERROR_FILE_NOT_FOUND), Row("no/x", "c", replace, ERROR_PATH_NOT_FOUND),
          Row("a", "no/x", replace, ERROR_PATH_NOT_FOUND), Row("a", "c", 0, 0),
          Row("c", "b", replace | MOVEFILE_WRITE_THROUGH, 0), Row("sub", "moved", 0, 0)}) {
        const bool moved =
            ::MoveFileExW(wideFromPath(folder / from).c_str(), wideFromPath(folder / to).c_str(), flags) != 0;
        EXPECT_EQ(moved ? 0 : ::GetLastError(), error) << from << " to " << to;
    }
    EXPECT_TRUE(readFile(folder / "b") == "a" && !std::filesystem::exists(folder / "a"));
}
