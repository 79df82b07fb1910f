#include "http/inflate.h"

#include <new>
#include <strings.h>
#define ZLIB_CONST // next_in is only read
#include <zlib.h>

namespace ca::win32 {

namespace {

constexpr unsigned char gzipFirstByte = 0x1F;

bool isNamed(std::string_view value, std::string_view name) {
    return value.size() == name.size() &&
           ::strncasecmp(value.data(), name.data(), name.size()) == 0;
}

} // namespace

Coding codingNamed(std::string_view value) {
    if (isNamed(value, "gzip") || isNamed(value, "x-gzip")) {
        return Coding::gzip;
    }
    return isNamed(value, "deflate") ? Coding::deflate : Coding::none;
}

void Inflater::Close::operator()(z_stream_s* opened) const {
    ::inflateEnd(opened);
    delete opened;
}

Inflater::Inflater(Coding coding) : kind(coding) {}

// "deflate" means a zlib stream, but servers that send bare deflate data are as old as the header.
// The compression method in a zlib stream's first byte is 8, which as the start of bare data would
// be a stored block of odd filling.
void Inflater::open(char firstByte) {
    const bool bare =
        kind == Coding::deflate && (static_cast<unsigned char>(firstByte) & 0x0FU) != Z_DEFLATED;
    const int windowBits = bare ? -MAX_WBITS : kind == Coding::gzip ? MAX_WBITS + 16 : MAX_WBITS;
    auto fresh = std::make_unique<z_stream>();
    if (::inflateInit2(fresh.get(), windowBits) != Z_OK) {
        throw std::bad_alloc();
    }
    stream.reset(fresh.release());
}

std::size_t Inflater::decode(std::span<const char>& input, std::span<char> output, bool& sound) {
    sound = true;
    std::size_t written = 0;
    while (!input.empty() || (stream != nullptr && !ended)) {
        if (ended) {
            if (kind != Coding::gzip ||
                static_cast<unsigned char>(input.front()) != gzipFirstByte) {
                input = {};
                break;
            }
            ::inflateReset(stream.get());
            ended = false;
        }
        if (stream == nullptr) {
            open(input.front());
        }
        stream->next_in = reinterpret_cast<const Bytef*>(input.data());
        stream->avail_in = static_cast<uInt>(input.size());
        stream->next_out = reinterpret_cast<Bytef*>(output.data() + written);
        stream->avail_out = static_cast<uInt>(output.size() - written);
        const int result = ::inflate(stream.get(), Z_NO_FLUSH);
        input = input.last(stream->avail_in);
        written = output.size() - stream->avail_out;
        ended = result == Z_STREAM_END;
        if (!ended && result != Z_OK) {
            // Z_BUF_ERROR: no room or no input left to go on with.
            sound = result == Z_BUF_ERROR;
            break;
        }
        if (written == output.size()) {
            break;
        }
    }
    return written;
}

} // namespace ca::win32
