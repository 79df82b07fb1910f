#include "update/version.h"

#include <gtest/gtest.h>
#include <tuple>

using ca::update::compareVersions;

TEST(Versions, AreOrderedNumberByNumber) {
    const std::tuple<const char*, const char*, int> table[] = {
        {"1.2", "1.2.0.0", 0},
        {"1.10", "1.9", 1},
        {"1.2.3-rc1", "1.2.3", 0},
        {"1.2.3.4.5", "1.2.3.4", 1},
        {"1..2", "1.0.2", 0},
        {"1.", "1.0.0.0.0", 0},
        {".1", "0.1", 0},
        {"x1.2", "0", 0},
        // wraps around in 32 bits
        {"", "0.0.0.0", 0},
        {"1.2\r\n", "1.2", 0},
        {"4294967297", "1", 0},
        {"2147483648", "0", -1}}; // and is signed
    for (const auto& [a, b, order] : table) {
        SCOPED_TRACE(std::string(a) + " against " + b);
        EXPECT_EQ(compareVersions(a, b), order);
        EXPECT_EQ(compareVersions(b, a), -order);
    }
}
