#include "publisher/release/place_files.h"

#include "publisher/files/descriptor.h"
#include "publisher/files/digest.h"
#include "publisher/files/parallel.h"
#include "publisher/text/failure.h"
#include "publisher/text/progress.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <numeric>
#include <set>
#include <sys/stat.h>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = 256 << 10; // bytes

using Piece = std::vector<char>;

bool isZero(const Piece& piece, std::size_t count) {
    return piece[0] == 0 && std::memcmp(piece.data(), piece.data() + 1, count - 1) == 0;
}

// Whether `older` is a plain file of as many bytes as `source`.
bool hasSameSize(const fs::path& source, const fs::path& older) {
    struct stat status {};
    return ::lstat(older.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           static_cast<std::uintmax_t>(status.st_size) == fs::file_size(source);
}

// What one thread works with, so that no file costs a buffer. Each step returns the file's size
// and digest in `file`, whose size is 0 before.
class Worker {
public:
    explicit Worker(Progress& progress) : progress_(progress) {}

    void read(const fs::path& path, update::ManifestFile& file) {
        const Descriptor in = openForReading(path);
        Digest digest;
        while (take(in, path, digest, file) != 0) {
        }
        file.sha256 = digest.text();
    }

    void copy(const fs::path& source, const fs::path& target, update::ManifestFile& file) {
        const Descriptor in = openForReading(source);
        const Descriptor out = createFile(target, 0644);
        Digest digest;
        while (const std::size_t count = take(in, source, digest, file)) {
            if (!isZero(piece_, count)) {
                writeAll(out, piece_.data(), count, target);
            } else if (::lseek(out.get(), static_cast<off_t>(count), SEEK_CUR) < 0) {
                failWithReason("can't write " + target.string());
            }
        }
        // A hole at the end becomes part of the file by its length alone.
        if (::ftruncate(out.get(), static_cast<off_t>(file.size)) != 0) {
            failWithReason("can't write " + target.string());
        }
        file.sha256 = digest.text();
    }

    // Whether both have the same bytes. Otherwise `file` is as before.
    bool compare(const fs::path& source, const fs::path& older, update::ManifestFile& file) {
        if (!hasSameSize(source, older)) {
            return false;
        }
        const Descriptor in = openForReading(source);
        const Descriptor beside = openForReading(older);
        Digest digest;
        for (;;) {
            const std::size_t count = take(in, source, digest, file);
            const std::size_t besideCount = readSome(beside, other_.data(), other_.size(), older);
            if (count != besideCount || std::memcmp(piece_.data(), other_.data(), count) != 0) {
                break;
            }
            if (count == 0) {
                file.sha256 = digest.text();
                return true;
            }
        }
        progress_.add(0 - file.size); // these bytes come once more
        file.size = 0;
        return false;
    }

private:
    std::size_t take(const Descriptor& in, const fs::path& path, Digest& digest,
                     update::ManifestFile& file) {
        const std::size_t count = readSome(in, piece_.data(), piece_.size(), path);
        digest.add(piece_.data(), count);
        file.size += count;
        progress_.add(count);
        return count;
    }

    Piece piece_ = Piece(pieceSize);
    Piece other_ = Piece(pieceSize);
    Progress& progress_;
};

bool makeLink(const fs::path& source, const fs::path& target) {
    return ::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), 0) == 0;
}

bool isSameFile(const fs::path& a, const fs::path& b) {
    std::error_code none;
    return fs::equivalent(a, b, none);
}

// Where one file is before and after.
struct Places {
    fs::path tree;
    fs::path release;
    fs::path older; // in the release before; empty without one
};

// Whether the release's file became another name of the older release's, because it is the same.
// Otherwise nothing has been placed.
bool shareOlder(Worker& worker, const Places& places, bool linked, update::ManifestFile& file) {
    if (places.older.empty()) {
        return false;
    }
    // A file that the tree shares with an older release changes with the tree: only a publisher
    // who asks for links gets more of them.
    if (!linked && isSameFile(places.tree, places.older)) {
        return false;
    }
    return worker.compare(places.tree, places.older, file) &&
           makeLink(places.older, places.release);
}

// Whether the tree's own file may be part of a release: a web server has to read it, and a cache
// knows a changed file by its later time.
bool mayShareTree(const Places& places) {
    constexpr mode_t everybodyReads = 0444;
    struct stat now {};
    if (::lstat(places.tree.c_str(), &now) != 0 ||
        (now.st_mode & everybodyReads) != everybodyReads) {
        return false;
    }
    struct stat before {};
    const bool isNew = places.older.empty() || ::lstat(places.older.c_str(), &before) != 0;
    return isNew || now.st_mtime > before.st_mtime;
}

void placeAnew(Worker& worker, const Places& places, bool linked, update::ManifestFile& file) {
    file.size = 0;
    if (linked && mayShareTree(places) && makeLink(places.tree, places.release)) {
        worker.read(places.release, file);
    } else {
        worker.copy(places.tree, places.release, file);
    }
}

void makeFolders(const Tree& tree, const fs::path& target) {
    makeReadableFolder(target);
    std::set<fs::path> folders;
    for (const TreeFile& file : tree.files) {
        const fs::path folder = fs::path(file.path).parent_path();
        const bool isNew = folders.insert(folder).second;
        if (isNew) {
            makeReadableFolder(target / folder);
        }
    }
}

// In any case of letters, as Windows takes the ending.
bool isProgram(std::string_view path) {
    constexpr std::string_view ending = ".exe";
    if (path.size() < ending.size()) {
        return false;
    }
    const auto isLetter = [](char lower, char c) {
        return c == lower || (c >= 'A' && c <= 'Z' && c + 32 == lower);
    };
    const std::string_view last = path.substr(path.size() - ending.size());
    return std::equal(ending.begin(), ending.end(), last.begin(), isLetter);
}

// The manifest's entries, but for what only the bytes tell.
std::vector<update::ManifestFile> entriesOf(const Tree& tree) {
    std::vector<update::ManifestFile> entries(tree.files.size());
    for (std::size_t at = 0; at < entries.size(); ++at) {
        entries[at].path = tree.files[at].path;
        entries[at].executable = isProgram(entries[at].path);
    }
    return entries;
}

// Indices of the tree's files, large files first, so that no thread is left with one at the end.
std::vector<std::size_t> byDescendingSize(const Tree& tree) {
    std::vector<std::size_t> indices(tree.files.size());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    std::stable_sort(indices.begin(), indices.end(), [&](std::size_t a, std::size_t b) {
        return tree.files[a].size > tree.files[b].size;
    });
    return indices;
}

} // namespace

PlacedFiles placeFiles(const Tree& tree, const fs::path& target, const fs::path& older, bool linked,
                       unsigned threads) {
    makeFolders(tree, target);
    PlacedFiles placed;
    placed.files = entriesOf(tree);
    Progress progress("placing files", tree.bytes());
    std::atomic<std::size_t> shared = 0;
    const auto place = [&](Worker& worker, update::ManifestFile& file) {
        const fs::path before = older.empty() ? older : older / file.path;
        const Places places{tree.folder / file.path, target / file.path, before};
        if (shareOlder(worker, places, linked, file)) {
            ++shared;
        } else {
            placeAnew(worker, places, linked, file);
        }
    };
    const std::vector<std::size_t> bySize = byDescendingSize(tree);
    forEach(bySize.size(), threads, [&] {
        return [&, worker = Worker(progress)](std::size_t i) mutable {
            place(worker, placed.files[bySize[i]]);
        };
    });
    placed.shared = shared;
    return placed;
}

} // namespace ca::publisher
