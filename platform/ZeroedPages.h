// Anonymous memory that reads as zero and takes no resident memory until it is written.
// The engine keeps its delay line and smear rings in it, so that an instance holds in
// memory only the part its sample rate works in.
#pragma once

#include <cstddef>

namespace tw {

class ZeroedPages {
public:
    explicit ZeroedPages(std::size_t bytes);
    ~ZeroedPages();
    ZeroedPages(const ZeroedPages&) = delete;
    ZeroedPages& operator=(const ZeroedPages&) = delete;

    void* data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    void* data_;
    std::size_t size_;
};

}  // namespace tw
