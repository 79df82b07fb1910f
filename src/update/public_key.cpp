#include "update/public_key.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

namespace ca::update {

namespace {

using Bytes = std::span<const unsigned char>;

enum : unsigned char { tagInteger = 0x02, tagBitString = 0x03, tagSequence = 0x30 };

// Takes one element with this tag off the front of `rest` and gives its content.
bool takeElement(Bytes& rest, unsigned char tag, Bytes& content) {
    if (rest.size() < 2 || rest[0] != tag) {
        return false;
    }
    std::size_t header = 2;
    std::uint64_t length = rest[1];
    if (length & 0x80) { // long form: the low bits count the bytes of the length
        const std::size_t count = length & 0x7f;
        header += count;
        if (count < 1 || count > 8 || rest.size() < header) {
            return false;
        }
        length = 0;
        for (const unsigned char byte : rest.subspan(2, count)) {
            length = length << 8 | byte;
        }
    }
    if (length > rest.size() - header) {
        return false;
    }
    content = rest.subspan(header, static_cast<std::size_t>(length));
    rest = rest.subspan(header + static_cast<std::size_t>(length));
    return true;
}

// DER's integers are signed, so a number whose top bit is set has a zero byte in front, which CNG
// doesn't take.
bool takeInteger(Bytes& rest, Bytes& number) {
    if (!takeElement(rest, tagInteger, number) || number.empty()) {
        return false;
    }
    while (number.size() > 1 && number.front() == 0) {
        number = number.subspan(1);
    }
    return true;
}

// SubjectPublicKeyInfo: SEQUENCE { SEQUENCE algorithm, BIT STRING { SEQUENCE { INTEGER modulus,
// INTEGER exponent } } }
bool readSubjectPublicKeyInfo(Bytes der, Bytes& modulus, Bytes& exponent) {
    Bytes info;
    Bytes algorithm;
    Bytes bits;
    Bytes key;
    if (!takeElement(der, tagSequence, info) || !takeElement(info, tagSequence, algorithm) ||
        // no unused bits
        !takeElement(info, tagBitString, bits) || bits.empty() || bits.front() != 0) {
        return false;
    }
    bits = bits.subspan(1);
    return takeElement(bits, tagSequence, key) && takeInteger(key, modulus) &&
           takeInteger(key, exponent);
}

std::vector<unsigned char> decodePem(const std::string& pem) {
    // The first call returns the size; what is behind the marker lines is the system's business.
    DWORD size = 0;
    const DWORD length = static_cast<DWORD>(pem.size());
    if (!::CryptStringToBinaryA(pem.data(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size,
                                nullptr, nullptr)) {
        return {};
    }
    std::vector<unsigned char> der(size);
    if (!::CryptStringToBinaryA(pem.data(), length, CRYPT_STRING_BASE64HEADER, der.data(), &size,
                                nullptr, nullptr)) {
        return {};
    }
    der.resize(size);
    return der;
}

void append(std::vector<unsigned char>& blob, Bytes bytes) {
    blob.insert(blob.end(), bytes.begin(), bytes.end());
}

} // namespace

bool readPublicKey(const std::string& pem, std::vector<unsigned char>& blob) {
    const std::vector<unsigned char> der = decodePem(pem);
    Bytes modulus;
    Bytes exponent;
    if (!readSubjectPublicKeyInfo(der, modulus, exponent)) {
        return false;
    }
    BCRYPT_RSAKEY_BLOB header{};
    header.Magic = BCRYPT_RSAPUBLIC_MAGIC;
    header.BitLength = static_cast<ULONG>(8 * modulus.size());
    header.cbPublicExp = static_cast<ULONG>(exponent.size());
    header.cbModulus = static_cast<ULONG>(modulus.size());
    blob.clear();
    append(blob, {reinterpret_cast<const unsigned char*>(&header), sizeof header});
    append(blob, exponent);
    append(blob, modulus);
    return true;
}

} // namespace ca::update
