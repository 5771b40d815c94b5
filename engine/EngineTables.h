// The engine's static tables, built once by the first engine made and only read after:
// the anti-denormal noise and the smear's length ratios and tap coefficients.
#pragma once

namespace tw {

struct EngineTables {
    static constexpr int kNoiseSize = 1024;
    static constexpr int kTapSize = 192;

    float noise[kNoiseSize];
    // Smear length ratios per unit (times smear amount squared times sample rate): T2 and T3
    // are the left chain's, T0 and T1 the right's, from reciprocal primes.
    float t0[4];
    float t1[4];
    float t2[4];
    float t3[4];
    // First-order all-pass coefficients of the smear taps, by 7-bit fraction index.
    float tap[kTapSize];
};

// Builds the tables unless they are built, once per process whichever thread asks first;
// every engine asks at its construction.
void buildEngineTables();

// The built tables.
const EngineTables& engineTables();

}  // namespace tw
