#include "support/programs.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

namespace ca::test {

namespace {

std::string setting(const char* name, const char* standard) {
    const char* value = std::getenv(name);
    return value ? value : standard;
}

} // namespace

const std::filesystem::path& testedBuild() {
    static const std::filesystem::path build = setting("PROGRAM_TEST_BUILD", PROGRAM_TEST_BUILD);
    return build;
}

const std::vector<std::string>& programRunner() {
    static const std::vector<std::string> runner = [] {
        std::istringstream words(setting("PROGRAM_TEST_RUNNER", ""));
        return std::vector<std::string>{std::istream_iterator<std::string>(words), {}};
    }();
    return runner;
}

std::string shownPath(const std::filesystem::path& path) {
    std::string text = path.string();
    if (!programRunner().empty()) {
        std::replace(text.begin(), text.end(), '/', '\\');
        text.insert(0, "Z:");
    }
    return text;
}

} // namespace ca::test
