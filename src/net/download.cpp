#include "net/download.h"

#include "system/files.h"
#include "system/folders.h"

#include <array>
#include <vector>

namespace ca::net {

namespace {

// 0 without a size or with one that is no number. It is asked for as text, because as a number it
// would be cut to 32 bits.
std::uint64_t announcedSize(const OpenRequest& open) {
    std::array<wchar_t, 64> text{};
    DWORD size = sizeof text;
    if (!::WinHttpQueryHeaders(open.request.get(), WINHTTP_QUERY_CONTENT_LENGTH,
                               WINHTTP_HEADER_NAME_BY_INDEX, text.data(), &size,
                               WINHTTP_NO_HEADER_INDEX)) {
        return 0;
    }
    std::uint64_t number = 0;
    for (const wchar_t* digit = text.data(); *digit >= L'0' && *digit <= L'9'; ++digit) {
        number = number * 10 + static_cast<std::uint64_t>(*digit - L'0');
    }
    return number;
}

} // namespace

bool readBody(const OpenRequest& open, const BodySink& sink, std::string& error) {
    std::vector<char> chunk; // as large as the largest that has come
    for (;;) {
        DWORD available = 0;
        if (!::WinHttpQueryDataAvailable(open.request.get(), &available)) {
            break;
        }
        // Only this ends a body: a read of no bytes doesn't.
        if (available == 0) {
            return true;
        }
        if (chunk.size() < available) {
            chunk.resize(available);
        }
        DWORD count = 0;
        if (!::WinHttpReadData(open.request.get(), chunk.data(), available, &count)) {
            break;
        }
        if (!sink(chunk.data(), count)) {
            return false;
        }
    }
    error = "winhttp_read_failed";
    return false;
}

bool fetchText(std::string_view url, std::string& text, std::string& error) {
    text.clear();
    OpenRequest open;
    const auto append = [&text](const char* data, std::size_t count) {
        text.append(data, count);
        return true;
    };
    return openRequest(url, open, error) && readBody(open, append, error);
}

bool downloadToFile(std::string_view url, const std::filesystem::path& destination,
                    const DownloadProgress& progress, std::string& error) {
    // A folder that can't be made shows when the file is opened.
    system::makeFolders(destination.parent_path());
    const system::FileHandle file = system::FileHandle::createForWriting(destination);
    if (!file) {
        error = "download_destination_unwritable";
        return false;
    }
    OpenRequest open;
    if (!openRequest(url, open, error)) {
        return false;
    }
    const std::uint64_t announced = announcedSize(open);
    std::uint64_t done = 0;
    const auto store = [&](const char* data, std::size_t count) {
        if (!file.write(data, count)) {
            error = "download_write_failed";
            return false;
        }
        done += count;
        if (progress) {
            progress(done, announced);
        }
        return true;
    };
    return readBody(open, store, error);
}

} // namespace ca::net
