// Counts the allocations made by the current thread while counting is on, through a
// replaced global operator new.
#pragma once

namespace tw::test {

void countAllocations(bool on);
long allocationCount();

}  // namespace tw::test
