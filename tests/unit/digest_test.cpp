#include "update/digest.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

using namespace ca::update;
using namespace ca::test;

// The digests of no byte and of a million bytes are the standard's examples (FIPS 180).
TEST(Sha256, OfBytesAndOfFilesOfAnySize) {
    const TemporaryFolder folder;
    using Row = std::pair<std::string, const char*>;
    for (const auto& [bytes, digest] :
         {Row("", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"),
          {std::string(65536, 'a'),
           "bf718b6f653bebc184e1479f1935b8da974d701b893afcf49e701f3e2f9f9c5a"},
          {std::string(1000000, 'a'),
           "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}}) {
        EXPECT_EQ(sha256File(writeFile(folder / "datei ü", bytes)), digest) << bytes.size();
        Sha256Digest whole;
        EXPECT_TRUE(sha256Bytes(bytes.data(), bytes.size(), whole));
        EXPECT_EQ(sha256Hex(whole), digest) << bytes.size();
    }
    EXPECT_EQ(sha256File(folder / "missing"), "");
    EXPECT_EQ(sha256File(folder.path()), "");
}
