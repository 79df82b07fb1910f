#include "publisher/release/tree.h"

#include "install/paths.h"
#include "publisher/rules/name_rules.h"
#include "publisher/text/failure.h"
#include "publisher/text/shown.h"

#include <algorithm>
#include <numeric>
#include <unistd.h>
#include <unordered_map>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t windowsPathLimit = 259; // characters, without the zero behind them

void look(const fs::directory_entry& entry, Tree& tree) {
    const fs::file_status status = entry.symlink_status();
    const std::string path = entry.path().lexically_relative(tree.folder).generic_string();
    const auto problem = [&](const std::string& text) {
        tree.problems.push_back(shown(path) + " " + text);
    };
    if (fs::is_symlink(status)) {
        return problem("is a link: put what it leads to in its place");
    }
    if (fs::is_directory(status)) {
        // A manifest names files alone.
        if (fs::is_empty(entry.path())) {
            tree.warnings.push_back(shown(path) + " is an empty folder: players won't get it");
        }
        return;
    }
    if (!fs::is_regular_file(status)) {
        return problem("is neither a file nor a folder: take it out of the tree");
    }
    if (const std::string refusal = refusalOf(path); !refusal.empty()) {
        return problem(refusal);
    }
    // Better now than after an hour of copying.
    if (::access(entry.path().c_str(), R_OK) != 0) {
        return problem("can't be read: change its permissions");
    }
    tree.files.push_back({path, entry.file_size()});
}

// Where Windows sees one name, there can be one file, and nothing that is file and folder at once.
void compareNames(Tree& tree) {
    std::unordered_map<std::wstring, const TreeFile*> names;
    for (const TreeFile& file : tree.files) {
        const auto [other, isNew] = names.emplace(foldedPath(file.path), &file);
        if (!isNew) {
            tree.problems.push_back(file.path + " and " + other->second->path +
                                    " are one file on Windows, which knows no case: rename one");
        }
    }
    for (const TreeFile& file : tree.files) {
        // Each folder on the way to the file.
        const std::wstring folded = foldedPath(file.path);
        for (std::size_t end = folded.find(L'/'); end != std::wstring::npos;
             end = folded.find(L'/', end + 1)) {
            if (const auto other = names.find(folded.substr(0, end)); other != names.end()) {
                tree.problems.push_back(file.path + " needs a folder where " + other->second->path +
                                        " is a file on Windows, which knows no case: rename one");
            }
        }
    }
}

void warn(Tree& tree) {
    for (const std::string_view name :
         {install::gameFileName, install::launcherFileName, install::helperFileName}) {
        const auto isIt = [&](const TreeFile& file) { return file.path == name; };
        if (std::none_of(tree.files.begin(), tree.files.end(), isIt)) {
            tree.warnings.push_back(std::string(name) +
                                    " isn't part of the tree: players keep the one they have");
        }
    }
    for (const TreeFile& file : tree.files) {
        if (const std::size_t length = longestInstalledPath(file.path); length > windowsPathLimit) {
            tree.warnings.push_back(
                file.path + " has a path of " + std::to_string(length) +
                " characters while it is installed, and many programs on Windows take 259");
        }
        if (foldedPath(file.path) == L"DATA/UPDATE_SERVER.TXT") {
            tree.warnings.push_back(
                file.path + " sends launchers that install this release to the server it names");
        }
    }
}

} // namespace

std::uint64_t Tree::bytes() const {
    return std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const TreeFile& file) { return sum + file.size; });
}

Tree scanTree(const fs::path& folder) try {
    Tree tree;
    tree.folder = folder;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        look(entry, tree);
    }
    std::sort(tree.files.begin(), tree.files.end(),
              [](const auto& a, const auto& b) { return a.path < b.path; });
    if (tree.files.empty() && tree.problems.empty()) {
        tree.problems.push_back(folder.string() + " has no files: name the folder with the game");
    }
    compareNames(tree);
    warn(tree);
    std::sort(tree.problems.begin(), tree.problems.end());
    std::sort(tree.warnings.begin(), tree.warnings.end());
    return tree;
} catch (const fs::filesystem_error& error) {
    throw Failure("can't read the tree: " + std::string(error.what()));
}

} // namespace ca::publisher
