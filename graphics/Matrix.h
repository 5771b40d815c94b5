// Affine transforms of the vector painter, the paints and the image transformer:
// x' = m0 x + m1 y + m2, y' = m3 x + m4 y + m5.
#pragma once

namespace tw {

struct Point {
    double x;
    double y;
};

struct Matrix {
    double m[6] = {1, 0, 0, 0, 1, 0};

    static Matrix identity() { return Matrix{}; }
    static Matrix translate(double dx, double dy) { return Matrix{{1, 0, dx, 0, 1, dy}}; }
    static Matrix scale(double sx, double sy) { return Matrix{{sx, 0, 0, 0, sy, 0}}; }
    static Matrix rotate(double radians);

    // out = b composed with a: b is applied after a. out may be either operand.
    static void multiply(const Matrix& a, Matrix& out, const Matrix& b);
    // Writes the inverse into out; false, leaving out alone, when |det| < 1e-8.
    bool invert(Matrix& out) const;

    bool isIdentity() const;
    Point apply(double x, double y) const { return Point{m[0] * x + m[1] * y + m[2], m[3] * x + m[4] * y + m[5]}; }
    // The larger length of the images of the two unit vectors: the scale that curve
    // flattening and pattern resolution follow.
    double scaleFactor() const;

    friend bool operator==(const Matrix&, const Matrix&) = default;
};

// The transform that applies `first` to a point and then `then`.
inline Matrix compose(const Matrix& then, const Matrix& first) {
    Matrix out;
    Matrix::multiply(first, out, then);
    return out;
}

}  // namespace tw
