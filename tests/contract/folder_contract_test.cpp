// What the update helper asks of the system: names, copies, links and folders. How it waits for a
// process and tells programs is tested in tests/helper.
#include "contract.h"

using namespace ca::test;

TEST(Folders, AreMadeCopiedLinkedAndRemoved) {
    const TemporaryFolder folder;
    writeFile(folder / "a", "a");
    writeFile(folder / "sub/b", "b");
    const auto at = [&](const char* name) { return wideFromPath(folder / name); };
    const auto copy = [&](const char* from, const char* to, BOOL fresh) {
        return result(::CopyFileW(at(from).c_str(), at(to).c_str(), fresh));
    };
    const auto link = [&](const char* name, const char* file) {
        return result(::CreateHardLinkW(at(name).c_str(), at(file).c_str(), nullptr));
    };
    const auto make = [&](const char* name) {
        return result(::CreateDirectoryW(at(name).c_str(), nullptr));
    };
    const auto remove = [&](const char* name) {
        return result(::RemoveDirectoryW(at(name).c_str()));
    };
    const auto erase = [&](const char* name) { return result(::DeleteFileW(at(name).c_str())); };
    const auto isFolder = [&](const char* name) {
        const DWORD attributes = ::GetFileAttributesW(at(name).c_str());
        return attributes == INVALID_FILE_ATTRIBUTES ? ::GetLastError()
                                                     : attributes & FILE_ATTRIBUTE_DIRECTORY;
    };
    expectSteps({{"copy", copy("a", "copy", TRUE), 0},
                 {"copy again", copy("a", "copy", TRUE), ERROR_FILE_EXISTS},
                 {"copy over", copy("sub/b", "copy", FALSE), 0},
                 {"copy nothing", copy("no", "x", FALSE), ERROR_FILE_NOT_FOUND},
                 {"copy nowhere", copy("a", "no/x", FALSE), ERROR_PATH_NOT_FOUND},
                 {"link", link("link", "a"), 0},
                 {"link again", link("link", "a"), ERROR_ALREADY_EXISTS},
                 {"copy over the other name", copy("a", "link", FALSE), ERROR_SHARING_VIOLATION},
                 {"link nothing", link("x", "no"), ERROR_FILE_NOT_FOUND},
                 {"make", make("new"), 0},
                 {"make again", make("new"), ERROR_ALREADY_EXISTS},
                 {"make below nothing", make("no/x"), ERROR_PATH_NOT_FOUND},
                 {"remove a file as a folder", remove("a"), ERROR_DIRECTORY},
                 {"remove a full one", remove("sub"), ERROR_DIR_NOT_EMPTY},
                 {"remove an empty one", remove("new"), 0},
                 {"remove nothing", remove("new"), ERROR_FILE_NOT_FOUND},
                 {"delete a folder", erase("sub"), ERROR_ACCESS_DENIED},
                 {"delete one name of two", erase("a"), 0},
                 {"delete nothing", erase("a"), ERROR_FILE_NOT_FOUND},
                 {"a folder", isFolder("sub"), FILE_ATTRIBUTE_DIRECTORY},
                 {"a file", isFolder("link"), 0},
                 {"nothing", isFolder("a"), ERROR_FILE_NOT_FOUND}});
    EXPECT_EQ(contentsOf(folder.path()),
              (Contents{{"copy", "b"}, {"link", "a"}, {"sub/", ""}, {"sub/b", "b"}}));
}

TEST(Folders, AreListedAndPathsMadeWhole) {
    const TemporaryFolder folder;
    writeFile(folder / u8"fé€", "");
    fs::create_directory(folder / "sub");
    WIN32_FIND_DATAW entry{};
    std::vector<std::wstring> names;
    const HANDLE search = ::FindFirstFileW((wideFromPath(folder.path()) + L"/*").c_str(), &entry);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    do {
        if (std::wstring name = entry.cFileName; name[0] != L'.') {
            names.push_back(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY ? name + L"/" : name);
        }
    } while (::FindNextFileW(search, &entry));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_NO_MORE_FILES});
    EXPECT_TRUE(::FindClose(search));
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::wstring>{L"fé€", L"sub/"}));
    EXPECT_EQ(::FindFirstFileW((wideFromPath(folder / "no") + L"/*").c_str(), &entry),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});

    const std::wstring whole = wideFromPath(folder / "x");
    std::wstring buffer(1000, L' ');
    const DWORD length = ::GetFullPathNameW(wideFromPath(folder / "sub/.././x").c_str(), 1000,
                                            buffer.data(), nullptr);
    EXPECT_EQ(buffer.substr(0, length), whole);
    EXPECT_EQ(::GetFullPathNameW(whole.c_str(), length, buffer.data(), nullptr), length + 1);
}
