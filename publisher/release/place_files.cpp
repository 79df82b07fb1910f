#include "publisher/release/place_files.h"

#include "publisher/files/descriptor.h"
#include "publisher/files/digest_stream.h"
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

// What one thread works with, so that no file costs an allocation. Each step gives the
// file's size and digest.
class Worker {
public:
    explicit Worker(Progress& progress) : progress_(progress) {}

    void read(const fs::path& path, update::ManifestFile& file) {
        const Descriptor in = openForReading(path);
        while (take(in, path, file) != 0) {
        }
        file.sha256 = digest_.finish();
    }

    void copy(const fs::path& source, const fs::path& target, update::ManifestFile& file) {
        const Descriptor in = openForReading(source);
        const Descriptor out = createFile(target, 0644);
        while (const std::size_t count = take(in, source, file)) {
            if (!isZero(piece_, count)) {
                writeAll(out, piece_.data(), count, target);
            } else if (::lseek(out.get(), static_cast<off_t>(count), SEEK_CUR) < 0) {
                failWithReason("can't write " + target.string());
            }
        }
        if (::ftruncate(out.get(), static_cast<off_t>(file.size)) != 0) {
            failWithReason("can't write " + target.string());
        }
        file.sha256 = digest_.finish();
    }

    // Whether both have the same bytes. Otherwise `file` is as before.
    bool compare(const fs::path& source, const fs::path& older, update::ManifestFile& file) {
        struct stat status {};
        if (::lstat(older.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
            static_cast<std::uintmax_t>(status.st_size) != fs::file_size(source)) {
            return false;
        }
        const Descriptor in = openForReading(source);
        const Descriptor beside = openForReading(older);
        for (;;) {
            const std::size_t count = take(in, source, file);
            const std::size_t besideCount = readSome(beside, other_.data(), other_.size(), older);
            if (count != besideCount || std::memcmp(piece_.data(), other_.data(), count) != 0) {
                break;
            }
            if (count == 0) {
                file.sha256 = digest_.finish();
                return true;
            }
        }
        progress_.add(0 - file.size); // these bytes come once more
        static_cast<void>(digest_.finish());
        file.size = 0;
        return false;
    }

private:
    std::size_t take(const Descriptor& in, const fs::path& path, update::ManifestFile& file) {
        const std::size_t count = readSome(in, piece_.data(), piece_.size(), path);
        digest_.add(piece_.data(), count);
        file.size += count;
        progress_.add(count);
        return count;
    }

    Piece piece_ = Piece(pieceSize);
    Piece other_ = Piece(pieceSize);
    DigestStream digest_;
    Progress& progress_;
};

bool makeLink(const fs::path& source, const fs::path& target) {
    return ::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), 0) == 0;
}

// Whether the tree's own file may stand in a release: a web server has to read it, and a cache
// knows a changed file by its later time.
bool mayStand(const fs::path& source, const fs::path& older) {
    struct stat now {};
    struct stat before {};
    return ::lstat(source.c_str(), &now) == 0 && (now.st_mode & 0444) == 0444 &&
           (older.empty() || ::lstat(older.c_str(), &before) != 0 ||
            now.st_mtime > before.st_mtime);
}

bool isSameFile(const fs::path& a, const fs::path& b) {
    std::error_code none;
    return fs::equivalent(a, b, none);
}

void makeFolders(const Tree& tree, const fs::path& target) {
    makeReadableFolder(target);
    std::set<fs::path> folders;
    for (const TreeFile& file : tree.files) {
        if (const fs::path folder = fs::path(file.path).parent_path();
            folders.insert(folder).second) {
            makeReadableFolder(target / folder);
        }
    }
}

bool isProgram(std::string_view path) {
    constexpr std::string_view ending = ".exe";
    return path.size() >= ending.size() &&
           std::equal(ending.begin(), ending.end(), path.end() - ending.size(), [](char a, char b) {
               return a == b || (b >= 'A' && b <= 'Z' && a == b + 32);
           });
}

// Large files first, so that no thread is left with one at the end.
std::vector<std::size_t> byDescendingSize(const Tree& tree) {
    std::vector<std::size_t> bySize(tree.files.size());
    std::iota(bySize.begin(), bySize.end(), std::size_t{0});
    std::stable_sort(bySize.begin(), bySize.end(), [&](std::size_t a, std::size_t b) {
        return tree.files[a].size > tree.files[b].size;
    });
    return bySize;
}

} // namespace

PlacedFiles placeFiles(const Tree& tree, const fs::path& target, const fs::path& older, bool linked,
                       unsigned threads) {
    makeFolders(tree, target);
    Progress progress("placing files", tree.bytes());
    PlacedFiles placed;
    placed.files.resize(tree.files.size());
    std::atomic<std::size_t> shared = 0;
    const std::vector<std::size_t> bySize = byDescendingSize(tree);
    const auto place = [&](Worker& worker, std::size_t at) {
        update::ManifestFile& file = placed.files[at];
        file.path = tree.files[at].path;
        file.executable = isProgram(file.path);
        const fs::path from = tree.folder / file.path;
        const fs::path to = target / file.path;
        const fs::path before = older.empty() ? older : older / file.path;
        // A file that the tree shares with an older release changes with the tree: only who
        // asks for links gets more.
        if (!before.empty() && (linked || !isSameFile(from, before)) &&
            worker.compare(from, before, file) && makeLink(before, to)) {
            ++shared;
            return;
        }
        file.size = 0;
        if (linked && mayStand(from, before) && makeLink(from, to)) {
            worker.read(to, file);
        } else {
            worker.copy(from, to, file);
        }
    };
    forEach(bySize.size(), threads, [&] {
        return [&, worker = Worker(progress)](std::size_t i) mutable { place(worker, bySize[i]); };
    });
    placed.shared = shared;
    return placed;
}

} // namespace ca::publisher
