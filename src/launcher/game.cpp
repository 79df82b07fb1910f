#include "launcher/game.h"

#include "install/paths.h"
#include "install/start_process.h"

namespace ca::launcher {

std::string gameExecutableName() {
    return std::string(install::gameFileName);
}

bool startGame(const std::filesystem::path& exePath) {
    return install::startProcess(exePath, L"", 0);
}

} // namespace ca::launcher
