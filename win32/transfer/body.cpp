#include "transfer/body.h"

#include <algorithm>
#include <cstring>

namespace ca::win32 {

namespace {

// A few of the pieces that libcurl reads from a socket: it stops reading while there is no room.
constexpr std::size_t receivedSize = 512UL * 1024;
constexpr std::size_t decodedSize = 64UL * 1024;

} // namespace

Body::Body(std::optional<std::uint64_t> size, Coding coding) : bytesLeft_(size) {
    if (coding != Coding::none) {
        inflater_ = std::make_unique<Inflater>(coding);
        decoded_ = std::make_unique_for_overwrite<char[]>(decodedSize);
    }
}

bool Body::take(std::span<const char> bytes) {
    // What a server sends beyond the size that it told is no part of the body.
    if (bytesLeft_) {
        const auto kept = std::min<std::uint64_t>(*bytesLeft_, bytes.size());
        bytes = bytes.first(static_cast<std::size_t>(kept));
    }
    if (bytes.empty()) {
        return true;
    }
    // Made only now: a response without a body needs none.
    if (received_ == nullptr) {
        received_ = std::make_unique_for_overwrite<char[]>(receivedSize);
    }
    if (!holds()) {
        receivedBegin_ = 0;
        receivedEnd_ = 0;
    }
    // libcurl offers the same bytes again once it is resumed.
    if (receivedEnd_ + bytes.size() > receivedSize) {
        return false;
    }
    std::memcpy(received_.get() + receivedEnd_, bytes.data(), bytes.size());
    receivedEnd_ += bytes.size();
    if (bytesLeft_) {
        *bytesLeft_ -= bytes.size();
    }
    return true;
}

std::span<const char> Body::front(bool& sound) {
    sound = true;
    std::span<const char> bytes(received_.get() + receivedBegin_, receivedEnd_ - receivedBegin_);
    if (inflater_ == nullptr) {
        return bytes;
    }
    if (decodedBegin_ == decodedEnd_) {
        decodedBegin_ = 0;
        decodedEnd_ = inflater_->decode(bytes, {decoded_.get(), decodedSize}, sound);
        receivedBegin_ = receivedEnd_ - bytes.size();
        // What was sound before the fault comes first; the next call finds the fault again.
        sound = sound || decodedEnd_ > 0;
    }
    return {decoded_.get() + decodedBegin_, decodedEnd_ - decodedBegin_};
}

void Body::drop(std::size_t count) {
    std::size_t& begin = inflater_ == nullptr ? receivedBegin_ : decodedBegin_;
    begin += count;
}

} // namespace ca::win32
