#include "install/paths.h"
#include "install/text_file.h"
#include "install/version_marker.h"
#include "net/url.h"

#include "temporary_folder.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>

using namespace ca::install;
using ca::test::TemporaryFolder;
using namespace std::string_literals;

TEST(TextFile, IsTrimmedOfAsciiWhitespaceAlone) {
    using Row = std::pair<const char*, const char*>;
    for (const auto& [text, trimmed] : {Row(" \t\n\v\f\r1.2 3\r\n", "1.2 3"),
                                        {" \r\n", ""},
                                        {"", ""},
                                        {"\ufeff1\u00a0", "\ufeff1\u00a0"}}) {
        EXPECT_EQ(trimText(text), trimmed);
    }
}

TEST(TextFile, IsReplacedWholeOrNotAtAll) {
    const TemporaryFolder folder;
    const auto file = folder / "new" / "märker";
    EXPECT_EQ(readTextFile(file), "");
    ASSERT_TRUE(writeTextFile(file, "a long first text\r\n"));
    ASSERT_TRUE(writeTextFile(file, "b\0\n"s));
    EXPECT_EQ(readTextFile(file), "b\0\n"s);

    EXPECT_FALSE(writeTextFile(folder / "new", "x")); // a folder stands there
    EXPECT_FALSE(writeTextFile(file / "x", "x"));     // its parent is a file
    EXPECT_EQ(readTextFile(folder.path()), "");       // a folder reads as nothing
    EXPECT_EQ(readTextFile(file), "b\0\n"s);
    EXPECT_EQ(ca::test::contentsOf(folder.path()).size(), 2U) << "no leftovers";
}

// The screen reads the marker on every frame, whatever the job is about.
TEST(VersionMarker, HasABuiltInValueAndIsReplacedWhileItIsRead) {
    const TemporaryFolder folder;
    ca::test::writeFile(versionMarkerFile(folder.path()), " \r\n");
    EXPECT_EQ(readInstalledVersion(folder.path()), "0.16.117");
    ASSERT_TRUE(writeInstalledVersion(folder.path(), "1"));
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            EXPECT_EQ(readInstalledVersion(folder.path()).size(), 1U);
            // The screen, too, has it closed for most of the time.
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(writeInstalledVersion(folder.path(), std::to_string(i % 10)));
    }
    done = true;
    reader.join();
}

TEST(Url, IsJoinedWithOneSlash) {
    using Row = std::tuple<const char*, const char*, const char*>;
    for (const auto& [base, relative, joined] : {Row("http://h", "a", "http://h/a"),
                                                 {"http://h/", "a", "http://h/a"},
                                                 {"http://h", "/a", "http://h/a"},
                                                 {"http://h/", "/a", "http://h/a"},
                                                 {"http://h//", "//a", "http://h///a"},
                                                 {"http://h", "https://x/y", "https://x/y"},
                                                 {"http://h", "http://x", "http://x"},
                                                 {"http://h", "HTTP://x", "http://h/HTTP://x"},
                                                 {"", "a", "a"},
                                                 {"http://h", "", "http://h"},
                                                 {"", "", ""}}) {
        EXPECT_EQ(ca::net::joinUrl(base, relative), joined);
    }
}
