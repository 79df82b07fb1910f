#include "http/body.h"

#include <algorithm>
#include <cstring>

namespace ca::win32 {

namespace {

// a few of the pieces that libcurl reads from a socket
constexpr std::size_t receivedSize = 512UL * 1024;
constexpr std::size_t decodedSize = 64UL * 1024;

} // namespace

Body::Body(std::optional<std::uint64_t> size, Coding coding) : bytesLeft(size) {
    if (coding != Coding::none) {
        inflater = std::make_unique<Inflater>(coding);
        decoded = std::make_unique_for_overwrite<char[]>(decodedSize);
    }
}

bool Body::take(std::span<const char> bytes) {
    if (bytesLeft) {
        bytes = bytes.first(
            static_cast<std::size_t>(std::min<std::uint64_t>(*bytesLeft, bytes.size())));
    }
    if (bytes.empty()) {
        return true;
    }
    if (received == nullptr) {
        received = std::make_unique_for_overwrite<char[]>(receivedSize);
    }
    if (!holds()) {
        receivedBegin = receivedEnd = 0;
    }
    if (receivedEnd + bytes.size() > receivedSize) {
        return false;
    }
    std::memcpy(received.get() + receivedEnd, bytes.data(), bytes.size());
    receivedEnd += bytes.size();
    if (bytesLeft) {
        *bytesLeft -= bytes.size();
    }
    return true;
}

std::span<const char> Body::front(bool& sound) {
    sound = true;
    std::span<const char> bytes(received.get() + receivedBegin, receivedEnd - receivedBegin);
    if (inflater == nullptr) {
        return bytes;
    }
    if (decodedBegin == decodedEnd) {
        decodedBegin = 0;
        decodedEnd = inflater->decode(bytes, {decoded.get(), decodedSize}, sound);
        receivedBegin = receivedEnd - bytes.size();
        sound = sound || decodedEnd > 0; // what was sound before the fault comes first
    }
    return {decoded.get() + decodedBegin, decodedEnd - decodedBegin};
}

void Body::drop(std::size_t count) {
    (inflater == nullptr ? receivedBegin : decodedBegin) += count;
}

} // namespace ca::win32
