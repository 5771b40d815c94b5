// The zlib streams inside chunks and the startup bank: deflate at level 6 with window
// bits 15 and memory level 8, and inflation that takes zlib or gzip framing alike.
#pragma once

#include "platform/Exception.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tw {

namespace QvxZLib {

// A failure of zlib, with its code and its message.
class Exception : public tw::Exception {
public:
    Exception(int code, std::string message) : tw::Exception(std::move(message)), code_(code) {}
    int code() const noexcept { return code_; }

private:
    int code_;
};

}  // namespace QvxZLib

// Appends the deflated form of `payload` to `out`.
void deflateInto(std::string& out, std::string_view payload);

// Inflates `stream` into exactly `length` bytes: output beyond them is dropped, and a
// stream that ends early leaves the rest as zero bytes. The stream must run to its end
// with a correct checksum (bytes after its end are ignored); a damaged or cut stream
// raises QvxZLib::Exception, so nothing is read from it.
std::string inflateExactly(std::string_view stream, std::size_t length);

}  // namespace tw
