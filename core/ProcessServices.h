// What all instances in one process share: the start-up and tear-down of the
// process-wide services, the instance counter, and the generator of instance seeds.
#pragma once

#include <cstdint>

namespace tw {

class ProcessServices {
public:
    // Held by each instance for its whole life, ahead of everything else it owns.
    struct Lease {
        Lease() { acquire(); }
        ~Lease() { release(); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
    };

    // The first instance in creates the process-wide services; the last one out releases them.
    static void acquire();
    static void release();
    static int instanceCount();

    // A new number and a new engine seed for each instance.
    static int nextInstanceNumber();
    static std::uint32_t nextSeed();
};

}  // namespace tw
