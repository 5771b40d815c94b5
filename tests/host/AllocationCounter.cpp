#include "tests/host/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local bool counting = false;
thread_local long count = 0;
}  // namespace

void tw::test::countAllocations(bool on) { counting = on; }
long tw::test::allocationCount() { return count; }

void* operator new(std::size_t size) {
    if (counting) ++count;
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
