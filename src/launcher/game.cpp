#include "launcher/game.h"

#include "install/paths.h"
#include "system/start_program.h"

namespace ca::launcher {

std::string gameExecutableName() {
    return std::string(install::gameFileName);
}

bool startGame(const std::filesystem::path& exePath) {
    return system::startProgram(exePath, L"", 0);
}

} // namespace ca::launcher
