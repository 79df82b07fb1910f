#include "program/scenario.h"

#include <random>

using namespace ca::test;

// At any moment of a download that would go on for a minute. The amount that has arrived
// decides, not the time.
TEST(Window, ClosesAtOnceDuringAJob) {
    Scenario s;
    writeFile(s.tree / "data/huge.pak", {});
    fs::resize_file(s.tree / "data/huge.pak", 512 << 20);
    s.publish();
    s.serve("limit_rate 8m; sendfile_max_chunk 16k;");
    const fs::path work = s.installation / ".coldanchor-update";
    const auto arrived = [&work] {
        std::error_code ignored;
        std::uintmax_t size = 0;
        for (const fs::directory_entry& file : fs::recursive_directory_iterator(work, ignored)) {
            size += file.is_regular_file(ignored) ? file.file_size(ignored) : 0;
        }
        return size;
    };
    std::minstd_rand random(20240117);
    const int rounds = programRunner().empty() ? 200 : 40; // a start takes a second under Wine
    for (int i = 0; i < rounds && !HasFailure(); ++i) {
        const std::uintmax_t amount = i % 8 == 0 ? 0 : random() % 600'000;
        SCOPED_TRACE(testing::Message() << amount << " bytes");
        s.begin(start);
        EXPECT_TRUE(eventually([&] { return arrived() >= amount; }));
        s.close();
        fs::remove_all(work);
        EXPECT_EQ(s.changes(), Paths());
    }
}
