#include "vector/SvgPath.h"

#include <charconv>
#include <cmath>
#include <numbers>

#include "vector/KetchException.h"

namespace tw {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

class SvgReader {
public:
    SvgReader(std::string_view text, double quality) : text_(text), quality_(quality) {}

    VectorPath read() {
        skipBlanks();
        while (pos_ < text_.size()) {
            const char letter = text_[pos_++];
            const bool relative = letter >= 'a' && letter <= 'z';
            const char command = relative ? char(letter - 'a' + 'A') : letter;
            if (command != 'S') smoothCubic_ = Point{0, 0};
            if (command != 'T') smoothQuad_ = Point{0, 0};
            skipBlanks();
            switch (command) {
            case 'M':
            case 'L': {
                Point p;
                if (!pair(p, relative)) {
                    throw Ketch::SyntaxException(command == 'M' ? "Invalid M syntax in svg path data"
                                                                : "Invalid L syntax in svg path data");
                }
                if (command == 'M') {
                    path_.moveTo(p.x, p.y);
                } else {
                    path_.lineTo(p.x, p.y);
                }
                while (pair(p, relative)) path_.lineTo(p.x, p.y);
                break;
            }
            case 'H':
            case 'V':
                for (double v; number(v);) {
                    const Point c = path_.currentPoint();
                    if (command == 'H') {
                        path_.lineTo(relative ? c.x + v : v, c.y);
                    } else {
                        path_.lineTo(c.x, relative ? c.y + v : v);
                    }
                }
                break;
            case 'C':
                for (Point c1, c2, e; pair(c1, relative) && pair(c2, relative) && pair(e, relative);) {
                    path_.cubicTo(c1.x, c1.y, c2.x, c2.y, e.x, e.y, quality_);
                    smoothCubic_ = Point{e.x - c2.x, e.y - c2.y};
                }
                break;
            case 'S':
                for (Point c2, e; pair(c2, relative) && pair(e, relative);) {
                    const Point c = path_.currentPoint();
                    path_.cubicTo(c.x + smoothCubic_.x, c.y + smoothCubic_.y, c2.x, c2.y, e.x, e.y, quality_);
                    smoothCubic_ = Point{e.x - c2.x, e.y - c2.y};
                }
                break;
            case 'Q':
                for (Point c1, e; pair(c1, relative) && pair(e, relative);) {
                    path_.quadTo(c1.x, c1.y, e.x, e.y, quality_);
                    smoothQuad_ = Point{e.x - c1.x, e.y - c1.y};
                }
                break;
            case 'T':
                for (Point e; pair(e, relative);) {
                    const Point c = path_.currentPoint();
                    const Point c1{c.x + smoothQuad_.x, c.y + smoothQuad_.y};
                    path_.quadTo(c1.x, c1.y, e.x, e.y, quality_);
                    smoothQuad_ = Point{e.x - c1.x, e.y - c1.y};
                }
                break;
            case 'A':
                for (;;) {
                    double rx, ry, rotation;
                    std::int64_t large, sweep;
                    Point e;
                    if (!(number(rx) && number(ry) && number(rotation) && integer(large) && integer(sweep) && pair(e, relative))) break;
                    arc(std::fabs(rx), std::fabs(ry), rotation, large != 0, sweep != 0, e);
                }
                break;
            case 'Z':
                path_.close();
                break;
            default:
                throw Ketch::SyntaxException("Invalid command in svg path data");
            }
            skipBlanks();
        }
        return std::move(path_);
    }

private:
    void skipBlanks() {
        while (pos_ < text_.size() && isBlank(text_[pos_])) ++pos_;
    }
    // Blanks and at most one comma.
    void skipSeparator() {
        skipBlanks();
        if (pos_ < text_.size() && text_[pos_] == ',') {
            ++pos_;
            skipBlanks();
        }
    }
    std::size_t digitsFrom(std::size_t p) const {
        while (p < text_.size() && isDigit(text_[p])) ++p;
        return p;
    }

    bool number(double& out) {
        std::size_t p = pos_;
        bool negative = false;
        if (p < text_.size() && (text_[p] == '+' || text_[p] == '-') && text_.size() - p >= 2) negative = text_[p++] == '-';
        const std::size_t mantissa = p;
        p = digitsFrom(p);
        bool any = p > mantissa;
        if (p < text_.size() && text_[p] == '.') {
            const std::size_t fraction = digitsFrom(p + 1);
            if (fraction > p + 1 || any) {
                any = true;
                p = fraction;
            }
        }
        if (!any) return false;
        bool tinyExponent = false;
        if (p < text_.size() && (text_[p] == 'e' || text_[p] == 'E')) {
            std::size_t q = p + 1;
            if (q < text_.size() && (text_[q] == '+' || text_[q] == '-')) tinyExponent = text_[q++] == '-';
            const std::size_t end = digitsFrom(q);
            if (end > q) p = end;
        }
        double value = 0;
        const auto result = std::from_chars(text_.data() + mantissa, text_.data() + p, value);
        if (result.ec == std::errc::result_out_of_range) value = tinyExponent ? 0.0 : HUGE_VAL;
        out = negative ? -value : value;
        pos_ = p;
        skipSeparator();
        return true;
    }

    bool integer(std::int64_t& out) {
        std::size_t p = pos_;
        bool negative = false;
        if (p < text_.size() && (text_[p] == '+' || text_[p] == '-') && text_.size() - p >= 2) negative = text_[p++] == '-';
        const std::size_t end = digitsFrom(p);
        if (end == p) return false;
        // Only zero or not zero matters; long digit strings need not fit.
        bool nonZero = false;
        for (std::size_t i = p; i < end; ++i) nonZero |= text_[i] != '0';
        out = nonZero ? (negative ? -1 : 1) : 0;
        pos_ = end;
        skipSeparator();
        return true;
    }

    // A coordinate pair, made absolute from the current point when relative.
    bool pair(Point& out, bool relative) {
        double x, y;
        if (!number(x) || !number(y)) return false;
        const Point c = path_.currentPoint();
        out = relative ? Point{c.x + x, c.y + y} : Point{x, y};
        return true;
    }

    void arc(double rx, double ry, double rotation, bool large, bool sweep, Point end) {
        const Point start = path_.currentPoint();
        if (rx < 1e-8 || ry < 1e-8) {
            path_.lineTo(end.x, end.y);
            return;
        }
        Point s = start, e = end;
        Matrix rotate;
        if (rotation != 0) {
            const double radians = rotation * 2 * std::numbers::pi / 360;
            rotate = Matrix::rotate(radians);
            const Matrix inverse = Matrix::rotate(-radians);
            s = inverse.apply(start.x, start.y);
            e = inverse.apply(end.x, end.y);
        }
        const double dx = e.x - s.x, dy = e.y - s.y, aspect = rx / ry;
        const double chord = dx * dx + (aspect * dy) * (aspect * dy);
        // Coincident ends make no arc.
        if (chord > 0) {
            double k = (4 * rx * rx) / chord - 1;
            if (k < 1e-8) k = 1e-8;
            const double sign = (large ? 1 : -1) * (sweep ? 1 : -1);
            const double f = std::sqrt(k * 0.25) * sign;
            const double cx = f * dy * aspect + dx * 0.5 + s.x, cy = dy * 0.5 + s.y - f * dx / aspect;
            const double angle = ((large ? 2 : 0) * std::numbers::pi - std::acos((k - 1) / (k + 1))) * sign;
            if (rotation == 0) {
                path_.arcSweep(cx, cy, angle, aspect, quality_);
            } else {
                VectorPath turned;
                turned.lineTo(s.x, s.y);
                turned.arcSweep(cx, cy, angle, aspect, quality_);
                turned.transform(rotate);
                path_.append(turned);
            }
        }
        path_.lineTo(end.x, end.y);
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    double quality_;
    VectorPath path_;
    Point smoothCubic_{0, 0};
    Point smoothQuad_{0, 0};
};

}  // namespace

VectorPath parseSvgPath(std::string_view text, double quality) { return SvgReader(text, quality).read(); }

}  // namespace tw
