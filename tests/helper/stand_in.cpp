// Stands in for a launcher: adds a line on how it was started to "started.txt" beside itself.
#include "install/paths.h"

#include <fstream>

int main(int argc, char**) {
    const std::filesystem::path folder = ca::install::executableDir();
    std::error_code gone;
    const bool here =
        std::filesystem::equivalent(std::filesystem::current_path(gone), folder, gone);
    std::ofstream report(folder / "started.txt", std::ios::app);
    report << argc << (here ? " here." : " elsewhere.");
    return report.flush() ? 0 : 1;
}
