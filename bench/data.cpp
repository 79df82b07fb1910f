#include "bench/data.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>

namespace ca::bench {

namespace fs = std::filesystem;

namespace {

void writeRandomFile(const fs::path& path, std::uintmax_t size, unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<std::uint64_t> block(1 << 17);
    std::ofstream file(path, std::ios::binary);
    while (size != 0 && file) {
        std::generate(block.begin(), block.end(), std::ref(random));
        const std::uintmax_t length =
            std::min<std::uintmax_t>(size, block.size() * sizeof block[0]);
        file.write(reinterpret_cast<const char*>(block.data()),
                   static_cast<std::streamsize>(length));
        size -= length;
    }
    if (!file.flush()) {
        throw std::runtime_error("can't write " + path.string());
    }
}

std::string numbered(const std::string& name, int number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return name + std::string(digits - std::min(digits, text.size()), '0') + text;
}

} // namespace

Tree makeTree(const fs::path& parent, int count, std::uintmax_t size) {
    Tree tree{parent / (std::to_string(count) + "x" + std::to_string(size)), {}, size};
    for (int i = 0; i < count; ++i) {
        tree.names.push_back(numbered("pack_", i / 100, 3) + numbered("/file_", i, 5) + ".pak");
    }
    if (fs::exists(tree.folder)) {
        return tree;
    }
    const fs::path fresh = parent / "fresh"; // only a whole tree gets its name
    fs::remove_all(fresh);
    for (int i = 0; i < count; ++i) {
        const fs::path path = fresh / tree.names[static_cast<std::size_t>(i)];
        fs::create_directories(path.parent_path());
        writeRandomFile(path, size, static_cast<unsigned>(i));
    }
    fs::rename(fresh, tree.folder);
    return tree;
}

Tree makeSparseFile(const fs::path& folder, std::uintmax_t size) {
    fs::create_directories(folder);
    const Tree tree{folder, {"sparse.pak"}, size};
    std::ofstream(folder / tree.names.front()).close();
    fs::resize_file(folder / tree.names.front(), size);
    return tree;
}

std::string makeManifest(const ManifestShape& shape) {
    nlohmann::ordered_json manifest{
        {"format", 1}, {"product", "cold-anchor"}, {"channel", "stable"}};
    manifest.update({{"platform", "windows"}, {"version", "1.4.2"}});
    if (shape.optionalKeys) {
        manifest.update(
            {{"protocol_version", 1}, {"minimum_online_version", "1.3.0"}, {"mandatory", false}});
    }
    if (shape.optionalKeys) {
        manifest["release_notes"] = shape.notes;
    }
    std::mt19937_64 random(1);
    std::string digest(64, '0');
    auto& files = manifest["files"] = nlohmann::ordered_json::array();
    for (int i = 0; i < shape.entries; ++i) {
        std::generate(digest.begin(), digest.end(),
                      [&random] { return "0123456789abcdef"[random() % 16]; });
        const std::string path =
            numbered("data/Maps/Cold Harbour/region_", i / 500, 3) + numbered("/tile_", i, 6);
        files.push_back({{"path", path + ".pak"},
                         {"sha256", digest},
                         {"size", random() >> 40},
                         {"executable", false}});
    }
    return manifest.dump(shape.indent);
}

std::string makeNotes(std::size_t size) {
    std::string notes = "Cold Anchor v1.4.2\n";
    for (int i = 1; notes.size() < size; ++i) {
        notes += "ADDED\n- Region " + std::to_string(i) +
                 " has a harbour, a \"tide table\" and a way back to the ship.\n";
    }
    return notes.substr(0, size);
}

} // namespace ca::bench
