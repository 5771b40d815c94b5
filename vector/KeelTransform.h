// The transform instructions of Keel: matrix, scale, rotate, offset and shear. Each one
// composes a transform onto a matrix so that the new transform applies first to incoming
// points. The painter runs them on its current matrix; the `transform:` of a paint runs
// them, and only them, on the paint's own matrix.
#pragma once

#include <string_view>

#include "graphics/Matrix.h"

namespace tw::Ketch {
struct Frame;
}

namespace tw {

enum class KeelTransform {
    matrix,  // a, b, c, d, e, f: x' = a x + c y + e, y' = b x + d y + f
    scale,   // s, or sx, sy
    rotate,  // degrees, or degrees, x, y around that centre; else "Invalid transform"
    offset,  // x, y
    shear,   // x, y: [1, x; y, 1]
};

// Reads the instruction's arguments and composes its transform onto `matrix`.
void applyKeelTransform(Ketch::Frame& frame, KeelTransform kind, std::string_view arguments, Matrix& matrix);

// Runs the raw text of a `transform:` on `matrix`, in the frame's variables. Any other
// instruction in it is "Unrecognized instruction".
void runKeelTransform(Ketch::Frame& frame, std::string_view body, Matrix& matrix);

}  // namespace tw
