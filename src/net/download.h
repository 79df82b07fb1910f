// The body of a GET, into memory or into a file.
#pragma once

#include "net/http_client.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace ca::net {

// Bytes of the body written so far, and the size that the server announced: 0 when it announced
// none. A compressed body counts decoded bytes against the server's own size. Called on the
// downloading thread after each chunk; may be empty.
using DownloadProgress = std::function<void(std::uint64_t done, std::uint64_t announced)>;

// Takes the next bytes of a body; false ends the reading.
using BodySink = std::function<bool(const char* data, std::size_t count)>;

// Reads what `open`, made ready by openRequest, has to give, a chunk at a time. False: the sink has
// ended it, or `error` is "winhttp_read_failed". Blocks; any thread.
bool readBody(const OpenRequest& open, const BodySink& sink, std::string& error);

// The whole body of `url` in `text`, byte for byte, with no limit on its size. False: `error` holds
// a token of openRequest or "winhttp_read_failed", and `text` what had arrived. Blocks for the
// whole transfer; any thread.
bool fetchText(std::string_view url, std::string& text, std::string& error);

// Streams the body of `url` into `destination`, making missing parent folders and replacing what is
// there; memory doesn't grow with the body. An announced size is only reported: a body that ends
// early is a success here, and the caller's digest decides about it. False: `error` holds a token
// of openRequest, "download_destination_unwritable" (nothing went out to the network),
// "winhttp_read_failed" or "download_write_failed"; the file stays with what had been written.
// Blocks for the whole transfer; any thread.
bool downloadToFile(std::string_view url, const std::filesystem::path& destination,
                    const DownloadProgress& progress, std::string& error);

} // namespace ca::net
