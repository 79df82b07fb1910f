#include "transfer/inflate.h"

#include "text/ignore_case.h"

#include <new>
#define ZLIB_CONST // next_in is only read
#include <zlib.h>

namespace ca::win32 {

namespace {

constexpr unsigned char gzipFirstByte = 0x1F;

} // namespace

Coding codingNamed(std::string_view value) {
    if (equalIgnoringCase(value, "gzip") || equalIgnoringCase(value, "x-gzip")) {
        return Coding::gzip;
    }
    return equalIgnoringCase(value, "deflate") ? Coding::deflate : Coding::none;
}

void Inflater::Close::operator()(z_stream_s* opened) const {
    ::inflateEnd(opened);
    delete opened;
}

Inflater::Inflater(Coding coding) : kind_(coding) {}

// "deflate" means a zlib stream, but servers that send bare deflate data are as old as the header.
// The compression method in a zlib stream's first byte is 8, which as the start of bare data would
// be a stored block of odd filling.
void Inflater::open(char firstByte) {
    const bool bare =
        kind_ == Coding::deflate && (static_cast<unsigned char>(firstByte) & 0x0FU) != Z_DEFLATED;
    // zlib takes the kind of stream from this number: negative for bare data, 16 more for gzip.
    const int windowBits = bare ? -MAX_WBITS : kind_ == Coding::gzip ? MAX_WBITS + 16 : MAX_WBITS;
    auto fresh = std::make_unique<z_stream>();
    if (::inflateInit2(fresh.get(), windowBits) != Z_OK) {
        throw std::bad_alloc();
    }
    stream_.reset(fresh.release());
}

// The coded data has ended. Another gzip member may follow it, as when compressed files are joined.
bool Inflater::beginsAgain(std::span<const char> input) {
    const bool begins = kind_ == Coding::gzip && !input.empty() &&
                        static_cast<unsigned char>(input.front()) == gzipFirstByte;
    if (begins) {
        ::inflateReset(stream_.get());
        ended_ = false;
    }
    return begins;
}

int Inflater::step(std::span<const char>& input, std::span<char>& output) {
    stream_->next_in = reinterpret_cast<const Bytef*>(input.data());
    stream_->avail_in = static_cast<uInt>(input.size());
    stream_->next_out = reinterpret_cast<Bytef*>(output.data());
    stream_->avail_out = static_cast<uInt>(output.size());
    const int result = ::inflate(stream_.get(), Z_NO_FLUSH);
    input = input.last(stream_->avail_in);
    output = output.last(stream_->avail_out);
    return result;
}

std::size_t Inflater::decode(std::span<const char>& input, std::span<char> output, bool& sound) {
    sound = true;
    std::span<char> room = output;
    // Without input there may still be output that didn't fit into the buffer before.
    while (!input.empty() || (stream_ != nullptr && !ended_)) {
        // Anything else behind the end isn't part of the content.
        if (ended_ && !beginsAgain(input)) {
            input = {};
            break;
        }
        if (stream_ == nullptr) {
            open(input.front());
        }
        const int result = step(input, room);
        ended_ = result == Z_STREAM_END;
        if (!ended_ && result != Z_OK) {
            // Z_BUF_ERROR: no room or no input left to go on with.
            sound = result == Z_BUF_ERROR;
            break;
        }
        if (room.empty()) {
            break;
        }
    }
    return output.size() - room.size();
}

} // namespace ca::win32
