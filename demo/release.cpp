#include "release.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace ca::demo {
namespace {

struct Series {
    const char* folder;
    const char* name; // a number and the ending follow
    const char* ending;
    int count;
    std::size_t size;
};

// Names with blanks and with letters beyond ASCII are part of it on purpose: real games have them.
constexpr std::array series = {
    Series{"data/Maps", "Cold Harbour ", ".pak", 6, 12'000'000},
    Series{"data/Maps/Größe XL", "Nordmole ", ".pak", 4, 8'000'000},
    Series{"data/textures/terrain", "tile_", ".tex", 80, 600'000},
    Series{"data/textures/données", "écume_", ".tex", 40, 300'000},
    Series{"data/sounds/アンカー", "鎖 ", ".snd", 40, 450'000},
    Series{"data/sounds/weather", "gale ", ".snd", 30, 200'000},
    Series{"data/models/ships/hulls", "hull_", ".mdl", 50, 160'000},
    Series{"data/scripts/missions/act one", "mission ", ".lua", 40, 6'000},
    Series{"data/text/fr", "réplique ", ".txt", 30, 900},
};

void writeText(const fs::path& path, std::string_view text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("can't write " + path.string());
    }
}

// Bytes that no compressor shrinks, the same at every run: a 64-bit counter through a mixing
// function, seeded by the name.
void writeNoise(const fs::path& root, const std::string& path, std::size_t size) {
    std::uint64_t seed = 14695981039346656037ULL;
    for (const char character : path) {
        seed = (seed ^ static_cast<unsigned char>(character)) * 1099511628211ULL;
    }
    std::string content((size + 7) / 8 * 8, '\0');
    for (std::size_t at = 0; at < content.size(); at += 8) {
        seed += 0x9E3779B97F4A7C15ULL;
        std::uint64_t word = (seed ^ (seed >> 30)) * 0xBF58476D1CE4E5B9ULL;
        word ^= word >> 29;
        std::memcpy(content.data() + at, &word, 8);
    }
    writeText(root / path, std::string_view(content).substr(0, size));
}

// An older edition of a file: another length and another byte in the middle.
void makeOlder(const fs::path& path) {
    const auto size = fs::file_size(path);
    fs::resize_file(path, size - std::min<std::uintmax_t>(size / 10, 4096));
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(size / 2));
    file.put('~');
    if (!file.flush()) {
        throw std::runtime_error("can't change " + path.string());
    }
}

} // namespace

const char* releaseNotes() {
    return "Cold Anchor v1.4.2\n"
           "ADDED\n"
           "- Cold Harbour: a sixth map, with a pier that gives way under too much cargo and a "
           "lighthouse whose keeper "
           "trades at night.\n"
           "- Weather reaches the hold: unlashed crates slide from 20 degrees on.\n"
           "IMPROVED\n"
           "- The anchor's chain holds longer in deep water and tells by its sound when it is "
           "about to break.\n"
           "- Maps load in half the time.\n"
           "FIXED\n"
           "- A crew of five no longer loses its fifth member at the extraction.\n"
           "- Names of ships keep their accents.\n"
           "LAUNCHER\n"
           "- Damaged files are found at each start and fetched again.\n"
           "PACKAGING\n"
           "- Terrain comes in smaller files, so that updates are smaller too.\n"
           "WEBSITE\n"
           "- The map of the northern sea shows where crews went down this week.\n"
           "- There is more to read than the panel can show; what follows here is cut off.\n";
}

void writeRelease(const fs::path& tree, const fs::path& programs) {
    fs::create_directories(tree);
    for (const char* name :
         {"ColdAnchorLauncher.exe", "ColdAnchorUpdateHelper.exe", "ColdAnchor.exe"}) {
        fs::copy_file(programs / name, tree / name);
    }
    for (const Series& one : series) {
        for (int number = 1; number <= one.count; ++number) {
            writeNoise(tree,
                       std::string(one.folder) + "/" + one.name + std::to_string(number) +
                           one.ending,
                       one.size);
        }
    }
    writeNoise(tree, "data/Maps/Cold Harbour.pak", 3'000'000);
    writeText(tree / "data/patch_notes.txt", releaseNotes());
    fs::copy(programs / "assets", tree / "assets", fs::copy_options::recursive);
}

const char* nextReleaseNotes() {
    return "Cold Anchor v1.4.3\n"
           "LAUNCHER\n"
           "- A new launcher takes the place of the old one and starts by itself; its version "
           "stands at the bottom.\n"
           "ADDED\n"
           "- Cold Harbour 7: the ice road, open while the sea is frozen.\n";
}

void writeNextRelease(const fs::path& nextTree, const fs::path& tree, const fs::path& programs) {
    fs::copy(tree, nextTree, fs::copy_options::recursive | fs::copy_options::create_hard_links);
    for (const char* changed : {"ColdAnchorLauncher.exe", "data/patch_notes.txt"}) {
        fs::remove(nextTree / changed); // the first release keeps its own
    }
    fs::copy_file(programs / "next/ColdAnchorLauncher.exe", nextTree / "ColdAnchorLauncher.exe");
    writeText(nextTree / "data/patch_notes.txt", nextReleaseNotes());
    writeNoise(nextTree, "data/Maps/Cold Harbour 7.pak", 12'000'000);
}

void writeInstallation(const fs::path& installation, const fs::path& tree,
                       const fs::path& publicKey) {
    fs::copy(tree, installation, fs::copy_options::recursive);
    for (const char* damaged :
         {"data/Maps/Cold Harbour 2.pak", "data/Maps/Größe XL/Nordmole 3.pak",
          "data/textures/données/écume_7.tex", "data/scripts/missions/act one/mission 12.lua"}) {
        makeOlder(installation / damaged);
    }
    for (int number = 1; number <= 12; ++number) {
        makeOlder(installation / ("data/textures/terrain/tile_" + std::to_string(number) + ".tex"));
    }
    for (const char* missing :
         {"data/Maps/Cold Harbour 6.pak", "data/sounds/weather/gale 30.snd"}) {
        fs::remove(installation / missing);
    }
    fs::remove_all(installation / "data/sounds/アンカー");
    writeText(installation / "data/patch_notes.txt",
              std::string("Cold Anchor v") + installedVersion +
                  "\nFIXED\n- The fog lifts in the morning.\n");
    writeText(installation / "data/game_version", std::string(installedVersion) + "\n");
    fs::copy_file(publicKey, installation / "data/update_public_key.pem");
}

} // namespace ca::demo
