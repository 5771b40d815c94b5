// Whether the engine's hot loops take their AVX2 builds: chosen once from the processor's
// features, and switchable by the tests and benchmarks that compare the two paths.
#pragma once

namespace tw {

// True when the processor has AVX2 and nothing turned the wide path off.
bool wideVectors();

// For tests and benchmarks: false forces the baseline path; true takes the wide one only
// where the processor has it. Not for the audio thread while it runs.
void setWideVectors(bool wanted);

// Whether this processor can run the wide path at all.
bool wideVectorsAvailable();

}  // namespace tw
