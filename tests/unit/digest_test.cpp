#include "update/digest.h"

#include "published.h"

#include <gtest/gtest.h>

using namespace ca::update;
using namespace ca::test;

TEST(Sha256, AgreesWithThePublishedVectors) {
    const TemporaryFolder folder;
    int rows = 0;
    for (const char* name : {"SHA256ShortMsg.rsp", "SHA256LongMsg.rsp"}) {
        std::ifstream vectors = published(name);
        if (!vectors) {
            GTEST_SKIP() << "no published vectors in " << SHARED_VECTORS;
        }
        // lines such as "Len = 8"; the digest is a row's last
        std::map<std::string, std::string> row;
        for (std::string line; std::getline(vectors, line);) {
            std::istringstream words(line);
            std::string field, equals;
            words >> field >> equals >> row[field];
            if (field != "MD") {
                continue;
            }
            const std::string bytes =
                bytesFromHex(row["Msg"]).substr(0, std::stoul(row["Len"]) / 8);
            EXPECT_EQ(sha256File(writeFile(folder / "message", bytes)), row["MD"])
                << name << ", " << row["Len"];
            ++rows;
        }
    }
    EXPECT_EQ(rows, 129);
}

TEST(Sha256, OfAFileDoesNotDependOnHowItIsRead) {
    const TemporaryFolder folder;
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 200000u}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 131 >> 3);
        }
        Sha256Digest digest;
        ASSERT_TRUE(sha256Bytes(bytes.data(), bytes.size(), digest));
        EXPECT_EQ(sha256File(writeFile(folder / "datei ü", bytes)), sha256Hex(digest)) << size;
    }
    EXPECT_TRUE(sha256File(folder / "missing").empty() && sha256File(folder.path()).empty());
}
