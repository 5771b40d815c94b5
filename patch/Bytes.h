// The 32-bit words and byte runs of the binary envelopes around patch text: chunks and
// the startup bank in little-endian order, the FXB container in big-endian order.
#pragma once

#include "platform/Exception.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

// Reads in order from a byte run; reading past its end raises EOFException with the
// message given at construction.
class ByteReader {
public:
    ByteReader(std::string_view bytes, std::string endMessage) : rest_(bytes), endMessage_(std::move(endMessage)) {}

    std::string_view rest() const { return rest_; }

    std::string_view take(std::size_t count) {
        if (count > rest_.size()) throw EOFException(endMessage_);
        std::string_view part = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return part;
    }
    std::uint32_t littleEndian() { return word(false); }
    std::uint32_t bigEndian() { return word(true); }
    // A signed little-endian length, then that many bytes; a negative length is as
    // impossible to read as one past the end.
    std::string_view lengthAndBytes() {
        std::int32_t length = static_cast<std::int32_t>(littleEndian());
        if (length < 0) throw EOFException(endMessage_);
        return take(static_cast<std::size_t>(length));
    }

private:
    std::uint32_t word(bool bigEndian) {
        std::string_view w = take(4);
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            unsigned char b = static_cast<unsigned char>(w[bigEndian ? i : 3 - i]);
            value = (value << 8) | b;
        }
        return value;
    }

    std::string_view rest_;
    std::string endMessage_;
};

inline void appendLittleEndian(std::string& out, std::uint32_t word) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((word >> (8 * i)) & 0xFF));
}

inline void appendBigEndian(std::string& out, std::uint32_t word) {
    for (int i = 3; i >= 0; --i) out.push_back(static_cast<char>((word >> (8 * i)) & 0xFF));
}

// A signed little-endian length and the bytes behind it.
inline void appendLengthAndBytes(std::string& out, std::string_view bytes) {
    appendLittleEndian(out, static_cast<std::uint32_t>(bytes.size()));
    out += bytes;
}

}  // namespace tw
