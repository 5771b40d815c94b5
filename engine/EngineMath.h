// Small float helpers shared by the engine's stages: the half-cycle wrap of phases and
// the clamps. Everything here is single precision, like all audio arithmetic.
#pragma once

namespace tw {

constexpr float kPi = 3.1415927f;
constexpr float kTwoPi = 6.2831855f;

// Brings a phase difference in cycles back into -0.5 to 0.5, assuming it is at most one
// cycle outside.
inline float WrapHalf(float x) {
    if (x < -0.5f) return x + 1.0f;
    if (x > 0.5f) return x - 1.0f;
    return x;
}

inline float clampFloat(float x, float lo, float hi) { return x < lo ? lo : (x > hi ? hi : x); }

inline float signOf(float x) { return x > 0.0f ? 1.0f : (x < 0.0f ? -1.0f : 0.0f); }

}  // namespace tw
