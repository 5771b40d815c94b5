// The host's state streams, read and written whole: a host may move any number of bytes
// per call, down to one, so both loop until the end (or the host's error).
#pragma once

#include <clap/stream.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tw::clap {

// False when the host reports an error or stops taking bytes.
bool writeWhole(const clap_ostream_t* stream, std::string_view bytes);
// The bytes up to the stream's end into `out`; false when the host reports an error or the
// stream runs past `limit` bytes.
bool readWhole(const clap_istream_t* stream, std::string& out, std::size_t limit);

}  // namespace tw::clap
