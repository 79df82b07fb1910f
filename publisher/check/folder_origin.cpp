#include "publisher/check/origin.h"
#include "publisher/files/descriptor.h"
#include "publisher/files/digest_stream.h"
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

    Arrival get(const std::string& name, std::string* text) const override {
        Arrival arrival;
        try {
            const fs::path path = folder_ / name;
            const Descriptor file = openForReading(path);
            std::vector<char> piece(pieceSize);
            DigestStream digest;
            while (const std::size_t count = readSome(file, piece.data(), piece.size(), path)) {
                digest.add(piece.data(), count);
                arrival.size += count;
                if (text != nullptr) {
                    text->append(piece.data(), count);
                }
            }
            arrival.sha256 = digest.finish();
            arrival.good = true;
        } catch (const Failure& failure) {
            arrival.notes.push_back({true, name, failure.what()});
        }
        return arrival;
    }

    std::vector<std::string> strangers(const std::vector<std::string>& known) const override {
        std::vector<std::string> result;
        std::error_code none;
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(folder_ / update::filesName, none)) {
            const std::string path =
                entry.path().lexically_relative(folder_ / update::filesName).generic_string();
            if (!entry.is_directory() && !std::binary_search(known.begin(), known.end(), path)) {
                result.push_back(path);
            }
        }
        return result;
    }

private:
    fs::path folder_;
};

} // namespace

std::unique_ptr<Origin> folderOrigin(const std::string& root, const std::string& channel) {
    return std::make_unique<FolderOrigin>(livePath(root, channel));
}

} // namespace ca::publisher
