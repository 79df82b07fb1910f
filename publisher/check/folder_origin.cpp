#include "publisher/check/origin.h"
#include "publisher/files/descriptor.h"
#include "publisher/files/digest.h"
#include "publisher/rules/channel_name.h"
#include "publisher/text/failure.h"
#include "update/channel.h"

#include <algorithm>
#include <filesystem>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = 256 << 10; // bytes

class FolderOrigin : public Origin {
public:
    explicit FolderOrigin(fs::path folder) : folder_(std::move(folder)) {}

    Arrival manifest(std::string& text) const override { return read(update::manifestName, &text); }
    Arrival signature(std::string& text) const override {
        return read(update::signatureName, &text);
    }
    Arrival file(const std::string& path) const override {
        return read(std::string(update::filesName) + "/" + path, nullptr);
    }

    std::vector<std::string> strangers(const std::vector<std::string>& known) const override {
        std::vector<std::string> result;
        std::error_code none; // a folder that isn't there has no strangers
        const fs::path files = folder_ / update::filesName;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(files, none)) {
            const std::string path = entry.path().lexically_relative(files).generic_string();
            const bool isKnown = std::binary_search(known.begin(), known.end(), path);
            if (!entry.is_directory() && !isKnown) {
                result.push_back(path);
            }
        }
        return result;
    }

private:
    // `text`, if not null, gets the bytes too.
    Arrival read(const std::string& name, std::string* text) const {
        Arrival arrival;
        try {
            const fs::path path = folder_ / name;
            const Descriptor file = openForReading(path);
            std::vector<char> piece(pieceSize);
            Digest digest;
            while (const std::size_t count = readSome(file, piece.data(), piece.size(), path)) {
                digest.add(piece.data(), count);
                arrival.size += count;
                if (text != nullptr) {
                    text->append(piece.data(), count);
                }
            }
            arrival.sha256 = digest.text();
            arrival.good = true;
        } catch (const Failure& failure) {
            arrival.notes.push_back({true, name, failure.what()});
        }
        return arrival;
    }

    fs::path folder_;
};

} // namespace

std::unique_ptr<Origin> folderOrigin(const std::string& root, const std::string& channel) {
    return std::make_unique<FolderOrigin>(livePath(root, channel));
}

} // namespace ca::publisher
