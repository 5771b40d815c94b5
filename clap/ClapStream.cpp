#include "clap/ClapStream.h"

#include <algorithm>
#include <array>

namespace tw::clap {

bool writeWhole(const clap_ostream_t* stream, std::string_view bytes) {
    if (stream == nullptr || stream->write == nullptr) return false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::int64_t n = stream->write(stream, bytes.data() + done, bytes.size() - done);
        // Nothing taken is as final as an error: another call would take nothing again.
        if (n <= 0 || static_cast<std::uint64_t>(n) > bytes.size() - done) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

bool readWhole(const clap_istream_t* stream, std::string& out, std::size_t limit) {
    if (stream == nullptr || stream->read == nullptr) return false;
    out.clear();
    std::array<char, 65536> buffer;
    for (;;) {
        const std::int64_t n = stream->read(stream, buffer.data(), buffer.size());
        if (n == 0) return true;
        if (n < 0 || static_cast<std::uint64_t>(n) > buffer.size()) return false;
        if (out.size() + static_cast<std::size_t>(n) > limit) return false;
        out.append(buffer.data(), static_cast<std::size_t>(n));
    }
}

}  // namespace tw::clap
