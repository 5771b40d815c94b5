#include "graphics/Matrix.h"

#include <algorithm>
#include <cmath>

namespace tw {

Matrix Matrix::rotate(double radians) {
    const double c = std::cos(radians), s = std::sin(radians);
    return Matrix{{c, -s, 0, s, c, 0}};
}

void Matrix::multiply(const Matrix& a, Matrix& out, const Matrix& b) {
    const double* p = a.m;
    const double* q = b.m;
    const Matrix r{{q[0] * p[0] + q[1] * p[3], q[0] * p[1] + q[1] * p[4], q[0] * p[2] + q[1] * p[5] + q[2],
                    q[3] * p[0] + q[4] * p[3], q[3] * p[1] + q[4] * p[4], q[3] * p[2] + q[4] * p[5] + q[5]}};
    out = r;
}

bool Matrix::invert(Matrix& out) const {
    const double det = m[0] * m[4] - m[1] * m[3];
    if (!(std::fabs(det) >= 1e-8)) return false;
    const double a = m[4] / det, b = -m[1] / det, d = -m[3] / det, e = m[0] / det;
    out = Matrix{{a, b, -(a * m[2] + b * m[5]), d, e, -(d * m[2] + e * m[5])}};
    return true;
}

bool Matrix::isIdentity() const { return *this == Matrix{}; }

double Matrix::scaleFactor() const {
    return std::sqrt(std::max(m[0] * m[0] + m[3] * m[3], m[1] * m[1] + m[4] * m[4]));
}

}  // namespace tw
