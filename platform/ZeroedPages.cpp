#include "platform/ZeroedPages.h"

#include "platform/Exception.h"

#include <sys/mman.h>

namespace tw {

ZeroedPages::ZeroedPages(std::size_t bytes) : data_(nullptr), size_(bytes) {
    void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw Exception("Out of memory");
    data_ = p;
}

ZeroedPages::~ZeroedPages() { munmap(data_, size_); }

}  // namespace tw
