#include "patch/ZLib.h"

#include <zlib.h>

namespace tw {

namespace {

constexpr int level = 6;
constexpr int deflateWindowBits = 15;
constexpr int memoryLevel = 8;
constexpr int inflateWindowBits = 47;  // 15, with zlib or gzip headers detected
constexpr std::size_t stagingSize = 2048;

[[noreturn]] void fail(const z_stream& z, int code) {
    throw QvxZLib::Exception(code, z.msg != nullptr ? z.msg : zError(code));
}

}  // namespace

void deflateInto(std::string& out, std::string_view payload) {
    z_stream z{};
    int code = deflateInit2(&z, level, Z_DEFLATED, deflateWindowBits, memoryLevel, Z_DEFAULT_STRATEGY);
    if (code != Z_OK) fail(z, code);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(payload.data()));
    z.avail_in = static_cast<uInt>(payload.size());
    unsigned char staging[stagingSize];
    do {
        z.next_out = staging;
        z.avail_out = stagingSize;
        code = deflate(&z, Z_FINISH);
        if (code == Z_STREAM_ERROR) {
            deflateEnd(&z);
            fail(z, code);
        }
        out.append(reinterpret_cast<const char*>(staging), stagingSize - z.avail_out);
    } while (code != Z_STREAM_END);
    deflateEnd(&z);
}

std::string inflateExactly(std::string_view stream, std::size_t length) {
    std::string out(length, '\0');
    z_stream z{};
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    z.avail_in = static_cast<uInt>(stream.size());
    int code = inflateInit2(&z, inflateWindowBits);
    if (code != Z_OK) fail(z, code);
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(length);
    code = inflate(&z, Z_FINISH);
    // Only a stream that runs to its end has had its checksum checked: what lies beyond
    // the stated length is inflated into the staging buffer and dropped, at most as much
    // again as the stated length, so that no stream can make the reader work for ever.
    unsigned char staging[stagingSize];
    std::size_t dropped = 0;
    while ((code == Z_OK || code == Z_BUF_ERROR) && z.avail_out == 0 && z.avail_in > 0 && dropped <= length) {
        z.next_out = staging;
        z.avail_out = stagingSize;
        code = inflate(&z, Z_FINISH);
        dropped += stagingSize - z.avail_out;
    }
    inflateEnd(&z);
    if (code == Z_STREAM_END && dropped <= length) return out;
    if (code == Z_OK || code == Z_BUF_ERROR) code = Z_BUF_ERROR;  // cut before the stream's end
    if (code == Z_STREAM_END) code = Z_DATA_ERROR;              // far longer than it says
    fail(z, code);
}

}  // namespace tw
