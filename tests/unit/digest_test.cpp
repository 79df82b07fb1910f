#include "update/digest.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::update;

TEST(Sha256, AgreesWithThePublishedVectorsInMemoryAndOnDisk) {
    const ca::test::TemporaryFolder folder;
    int rows = 0;
    for (const char* name : {"SHA256ShortMsg.rsp", "SHA256LongMsg.rsp"}) {
        std::ifstream vectors(std::filesystem::path(SHARED_VECTORS) / name);
        if (!vectors)
            GTEST_SKIP() << "no published vectors in " << SHARED_VECTORS;
        std::string word;
        std::string equals;
        std::size_t bits = 0;
        std::string message;
        while (vectors >> word) {
            if (word == "Len")
                vectors >> equals >> bits;
            else if (word == "Msg")
                vectors >> equals >> message;
            else if (word == "MD") {
                vectors >> equals >> word;
                const std::string bytes = ca::test::bytesFromHex(message).substr(0, bits / 8);
                Sha256Digest digest;
                ASSERT_TRUE(sha256Bytes(bytes.data(), bytes.size(), digest));
                EXPECT_EQ(sha256Hex(digest), word) << name << ", " << bits << " bits";
                EXPECT_EQ(sha256File(ca::test::writeFile(folder / "message", bytes)), word);
                ++rows;
            }
        }
    }
    EXPECT_EQ(rows, 129);
}

TEST(Sha256, OfAFileDoesNotDependOnHowItIsRead) {
    const ca::test::TemporaryFolder folder;
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 200000u}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i * 131 >> 3);
        Sha256Digest digest;
        ASSERT_TRUE(sha256Bytes(bytes.data(), bytes.size(), digest));
        EXPECT_EQ(sha256File(ca::test::writeFile(folder / "datei ü", bytes)), sha256Hex(digest)) << size;
    }
    EXPECT_EQ(sha256File(folder / "missing"), "");
    EXPECT_EQ(sha256File(folder.path()), "");
}
