#include "vector/KeelPainter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>
#include <utility>

#include "graphics/CoverageChain.h"
#include "graphics/Inverter.h"
#include "vector/MaskTarget.h"
#include "vector/PatternTarget.h"
#include "graphics/PolygonMask.h"
#include "graphics/Solid.h"
#include "graphics/SolidPaint.h"
#include "vector/SvgPath.h"
#include "vector/KetchException.h"
#include "vector/KeelColor.h"
#include "vector/KeelGradient.h"
#include "vector/KeelNumberList.h"
#include "vector/KeelTransform.h"
#include "vector/KetchArgumentList.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchList.h"
#include "vector/KetchNameTable.h"
#include "vector/KetchNumber.h"
#include "vector/KetchValue.h"

namespace tw {

namespace {

using Ketch::ArgumentList;

enum class Instruction {
    rect, ellipse, star, path, pen, fill, matrix, scale, rotate, offset, shear, context, wipe, options, reset,
    mask, bounds,
};

constexpr Ketch::NameTable<Instruction, 17> kInstructions({
    {"rect", Instruction::rect},       {"ellipse", Instruction::ellipse}, {"star", Instruction::star},
    {"path", Instruction::path},       {"pen", Instruction::pen},         {"fill", Instruction::fill},
    {"matrix", Instruction::matrix},   {"scale", Instruction::scale},     {"rotate", Instruction::rotate},
    {"offset", Instruction::offset},   {"shear", Instruction::shear},     {"context", Instruction::context},
    {"wipe", Instruction::wipe},       {"options", Instruction::options}, {"reset", Instruction::reset},
    {"mask", Instruction::mask},       {"bounds", Instruction::bounds},
});

// A star's vertices are built one by one; beyond this many a statement would stall the view.
constexpr std::int32_t kMaxStarPoints = 10000;

constexpr double kRadiansPerDegree = std::numbers::pi / 180;

Ketch::RunTimeException outOfRange() { return Ketch::RunTimeException("Value out of range"); }

template <class Choice, std::size_t N>
Choice choose(std::string_view text, const std::pair<std::string_view, Choice> (&choices)[N], const char* fault) {
    for (const auto& [name, choice] : choices) {
        if (text == name) return choice;
    }
    throw Ketch::SyntaxException(fault);
}

// The three settings of `options`, each within 0.0001..99.9999.
double optionValue(std::string_view text) {
    const double v = Ketch::toNumber(text);
    if (!(v >= 0.0001 && v <= 99.9999)) throw outOfRange();
    return v;
}

bool draws(const PaintStyle& style) { return style.opacity != 0 && style.paint && style.paint->isVisible(); }

}  // namespace

KeelPainter::KeelPainter(PaintTarget& target, const Matrix& matrix, std::ostream& traceOut, Loader loader)
    : target_(target), traceOut_(traceOut), loader_(std::move(loader)) {
    initial_.matrix = matrix;
    state_ = initial_;
}

KeelPainter::KeelPainter(PaintTarget& target, PainterState initial, PainterState current, std::ostream& traceOut,
                         Loader loader)
    : target_(target), initial_(std::move(initial)), state_(std::move(current)), traceOut_(traceOut),
      loader_(std::move(loader)) {}

bool KeelPainter::format(Ketch::Frame&, std::string_view name, const std::vector<std::string>&,
                         const std::vector<std::string>& required) {
    return name == "keel-1" && required.empty();
}

bool KeelPainter::execute(Ketch::Frame& frame, std::string_view instruction, std::string_view arguments) {
    const Instruction* found = kInstructions.find(instruction);
    if (found == nullptr) return false;
    switch (*found) {
        case Instruction::rect: rect(frame, arguments); break;
        case Instruction::ellipse: ellipse(frame, arguments); break;
        case Instruction::star: star(frame, arguments); break;
        case Instruction::path: path(frame, arguments); break;
        case Instruction::pen: pen(frame, arguments); break;
        case Instruction::fill: fill(frame, arguments); break;
        case Instruction::matrix: applyKeelTransform(frame, KeelTransform::matrix, arguments, state_.matrix); break;
        case Instruction::scale: applyKeelTransform(frame, KeelTransform::scale, arguments, state_.matrix); break;
        case Instruction::rotate: applyKeelTransform(frame, KeelTransform::rotate, arguments, state_.matrix); break;
        case Instruction::offset: applyKeelTransform(frame, KeelTransform::offset, arguments, state_.matrix); break;
        case Instruction::shear: applyKeelTransform(frame, KeelTransform::shear, arguments, state_.matrix); break;
        case Instruction::context: context(frame, arguments); break;
        case Instruction::wipe: wipe(frame, arguments); break;
        case Instruction::options: options(frame, arguments); break;
        case Instruction::reset: reset(frame, arguments); break;
        case Instruction::mask: mask(frame, arguments); break;
        case Instruction::bounds: bounds(frame, arguments); break;
    }
    return true;
}

bool KeelPainter::progress(Ketch::Frame&, std::int32_t) { return true; }

bool KeelPainter::load(Ketch::Frame&, std::string_view name, std::string& text) {
    return loader_ && loader_(name, text);
}

void KeelPainter::trace(Ketch::Frame&, std::string_view text) { traceOut_ << text << '\n'; }

void KeelPainter::rect(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    double v[4], r[2];
    readNumberList(frame, args.fetchRequired(0), 4, 4, v);
    const auto rounded = args.fetchOptional("rounded");
    const int radii = rounded ? readNumberList(frame, *rounded, 1, 2, r) : 0;
    args.finish();
    if (!drawsShapes()) return;
    const double penWidth = state_.width;
    snapRect(v, state_.width);
    VectorPath shape;
    if (radii == 0) {
        shape.addRect(v[0], v[1], v[2], v[3]);
    } else {
        shape.addRoundedRect(v[0], v[1], v[2], v[3], r[0], r[radii - 1], quality());
    }
    draw(shape);
    state_.width = penWidth;
}

void KeelPainter::snapRect(double v[4], double& penWidth) const {
    const Matrix& m = state_.matrix;
    if (!state_.pixelGrid || m.m[1] != 0 || m.m[3] != 0 || !(m.m[0] > 0) || !(m.m[4] > 0)) return;
    const bool strokes = draws(state_.pen) && penWidth > 1e-8;
    // A pen as wide in whole pixels as it comes out, never under one; its edges, not its
    // centre line, fall on pixel boundaries. Without a pen, the fill's edges do.
    const double sx = m.m[0], sy = m.m[4];
    const double device = strokes ? std::max(1.0, std::floor(penWidth * std::min(sx, sy) + 0.5)) : 0;
    auto snap = [&](double user, double scale, double shift) {
        const double edge = user * scale + shift - device / 2;
        return (std::floor(edge + 0.5) + device / 2 - shift) / scale;
    };
    const double left = snap(v[0], sx, m.m[2]), right = snap(v[0] + v[2], sx, m.m[2]);
    const double top = snap(v[1], sy, m.m[5]), bottom = snap(v[1] + v[3], sy, m.m[5]);
    v[0] = left, v[2] = right - left, v[1] = top, v[3] = bottom - top;
    if (strokes) penWidth = device / std::min(sx, sy);
}

void KeelPainter::ellipse(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    double v[4];
    const int n = readNumberList(frame, args.fetchRequired(0), 3, 4, v);
    args.finish();
    if (!drawsShapes()) return;
    VectorPath shape;
    if (n == 3) {
        shape.addCircle(v[0], v[1], v[2], quality());
    } else {
        shape.addEllipse(v[0], v[1], v[2], v[3], quality());
    }
    draw(shape);
}

void KeelPainter::star(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const std::vector<std::string> items = Ketch::parseList(frame, args.fetchRequired(0), true, false, 4, 5);
    const auto rotation = args.fetchOptional("rotation");
    args.finish();
    const double x = Ketch::toNumber(items[0]), y = Ketch::toNumber(items[1]);
    const std::int32_t points = Ketch::toInteger(items[2]);
    const double r1 = Ketch::toNumber(items[3]);
    const double r2 = items.size() == 5 ? Ketch::toNumber(items[4]) : r1;
    const double degrees = rotation ? Ketch::toNumber(*rotation) : 0;
    if (points < 1 || points > kMaxStarPoints) throw outOfRange();
    if (!drawsShapes()) return;
    VectorPath shape;
    shape.addStar(x, y, points, r1, r2, degrees * kRadiansPerDegree);
    draw(shape);
}

void KeelPainter::path(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const auto svg = args.fetchOptional("svg");
    if (!svg) throw Ketch::SyntaxException("Invalid PATH arguments");
    args.finish();
    // Read even when nothing will be drawn, so that bad path data is always reported.
    VectorPath shape = parseSvgPath(*svg, quality());
    if (drawsShapes()) draw(shape);
}

void KeelPainter::pen(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    if (args.size() == 0) throw Ketch::SyntaxException("Missing argument(s)");
    PainterState next = state_;
    readPaint(frame, args, next.pen);
    if (const auto width = args.fetchOptional("width")) {
        next.width = Ketch::toNumber(*width);
        if (next.width < 0) throw Ketch::RunTimeException("Negative stroke width");
    }
    if (const auto caps = args.fetchOptional("caps")) {
        next.caps = choose<StrokeCaps>(
            *caps, {{"butt", StrokeCaps::butt}, {"round", StrokeCaps::round}, {"square", StrokeCaps::square}},
            "Unrecognized stroke caps");
    }
    if (const auto joints = args.fetchOptional("joints")) {
        next.joints = choose<StrokeJoints>(
            *joints, {{"bevel", StrokeJoints::bevel}, {"curve", StrokeJoints::curve}, {"miter", StrokeJoints::miter}},
            "Unrecognized stroke joints");
    }
    if (const auto limit = args.fetchOptional("miter-limit")) {
        next.miterLimit = Ketch::toNumber(*limit);
        if (!(next.miterLimit >= 1)) throw outOfRange();
    }
    if (const auto dash = args.fetchOptional("dash")) {
        if (*dash == "none") {
            next.dash = next.gap = 0;
        } else {
            double v[2];
            const int n = readNumberList(frame, *dash, 1, 2, v);
            if (!(v[0] >= 0 && v[n - 1] >= 0)) throw outOfRange();
            next.dash = v[0];
            next.gap = v[n - 1];
        }
    }
    if (const auto offset = args.fetchOptional("dash-offset")) next.dashOffset = Ketch::toNumber(*offset);
    args.finish();
    state_ = std::move(next);
}

void KeelPainter::fill(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    if (args.size() == 0) throw Ketch::SyntaxException("Missing argument(s)");
    PaintStyle style = state_.fill;
    readPaint(frame, args, style);
    bool evenOdd = state_.evenOdd;
    if (const auto rule = args.fetchOptional("rule")) {
        evenOdd = choose<bool>(*rule, {{"non-zero", false}, {"even-odd", true}}, "Unrecognized fill rule");
    }
    args.finish();
    state_.fill = std::move(style);
    state_.evenOdd = evenOdd;
}

void KeelPainter::context(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const std::string_view body = args.fetchRequired(0, ArgumentList::Raw);
    args.finish();
    KeelPainter sub(target_, initial_, state_, traceOut_, loader_);
    Ketch::Frame level(frame, sub);
    Ketch::runBody(level, body);
}

void KeelPainter::wipe(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    if (args.fetchOptional("relative", ArgumentList::Raw)) {
        throw Ketch::SyntaxException("Relative paint is not allowed with wipe");
    }
    PaintStyle style;
    if (!readPaint(frame, args, style)) throw Ketch::SyntaxException("Missing argument(s)");
    args.finish();
    if (!draws(style)) return;
    Solid8 everywhere(255);
    Renderer8& coverage = state_.mask ? static_cast<Renderer8&>(*state_.mask) : everywhere;
    style.paint->draw(style, state_.matrix, target_, RealRect{}, coverage);
}

void KeelPainter::options(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const auto gamma = args.fetchOptional("aa-gamma");
    const auto curveQuality = args.fetchOptional("curve-quality");
    const auto patternResolution = args.fetchOptional("pattern-resolution");
    args.finish();
    if (gamma) {
        state_.gamma = optionValue(*gamma);
        const std::optional<GammaTable> table = GammaTable::forGamma(state_.gamma);
        state_.gammaTable = table ? std::make_shared<const GammaTable>(*table) : nullptr;
    }
    if (curveQuality) state_.curveQuality = optionValue(*curveQuality);
    if (patternResolution) state_.patternResolution = optionValue(*patternResolution);
}

void KeelPainter::reset(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList(frame, arguments).finish();
    state_ = initial_;
}

void KeelPainter::mask(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const std::string_view body = args.fetchRequired(0, ArgumentList::Raw);
    const auto inverted = args.fetchOptional("inverted");
    args.finish();
    const bool invert = inverted && Ketch::toBoolean(*inverted);

    // The body draws coverage: everything it fills is solid 255 unless it says otherwise.
    MaskTarget canvas(target_.getBounds());
    PainterState initial = initial_, current = state_;
    for (PainterState* s : {&initial, &current}) {
        s->fill = PaintStyle{};
        s->fill.paint = std::make_shared<SolidMaskPaint>(255);
        s->pen = PaintStyle{};
    }
    KeelPainter sub(canvas, std::move(initial), std::move(current), traceOut_, loader_);
    Ketch::Frame level(frame, sub);
    Ketch::runBody(level, body);

    auto result = std::make_shared<RLERaster8>();
    if (invert) {
        Inverter8 inverse(canvas.mask());
        RLERaster8 recompressed(inverse, canvas.getBounds());
        result->swap(recompressed);
    } else {
        result->swap(canvas.mask());
    }
    state_.mask = std::move(result);
}

void KeelPainter::bounds(Ketch::Frame& frame, std::string_view arguments) {
    ArgumentList args(frame, arguments);
    const std::vector<std::string> items = Ketch::parseList(frame, args.fetchRequired(0), true, false, 4, 4);
    args.finish();
    target_.defineBounds(IntRect{Ketch::toInteger(items[0]), Ketch::toInteger(items[1]), Ketch::toInteger(items[2]),
                                 Ketch::toInteger(items[3])});
}

bool KeelPainter::readPaint(Ketch::Frame& frame, ArgumentList& args, PaintStyle& style) {
    const PaintKind kind = target_.paintKind();
    std::shared_ptr<const Paint> paint;
    if (const auto body = args.fetchOptional("pattern", ArgumentList::Raw)) {
        paint = paintPattern(frame, *body);
    } else if (const auto gradient = args.fetchOptional("gradient")) {
        paint = parseKeelGradient(frame, *gradient, kind);
    } else if (const auto solid = args.fetchOptional(0)) {
        if (kind == PaintKind::colour) {
            paint = std::make_shared<SolidColourPaint>(parseKeelColor(frame, *solid));
        } else {
            paint = std::make_shared<SolidMaskPaint>(parseKeelOpacity(*solid));
        }
    }
    if (paint) {
        style = PaintStyle{};
        style.paint = paint;
    }
    if (const auto opacity = args.fetchOptional("opacity")) style.opacity = parseKeelOpacity(*opacity);
    if (const auto relative = args.fetchOptional("relative")) style.relative = Ketch::toBoolean(*relative);
    if (const auto transform = args.fetchOptional("transform", ArgumentList::Raw)) {
        style.matrix = Matrix{};
        runKeelTransform(frame, *transform, style.matrix);
    }
    return paint != nullptr;
}

std::shared_ptr<const Paint> KeelPainter::paintPattern(Ketch::Frame& frame, std::string_view body) {
    const std::int32_t resolution = PatternTarget::resolutionFor(state_.matrix, state_.patternResolution);
    PatternTarget canvas(target_.paintKind(), resolution);
    // The body draws in pattern units, scaled to the raster's pixels, with nothing to paint
    // until it says so; the mask, made for this target, does not apply there.
    PainterState initial = initial_, current = state_;
    for (PainterState* s : {&initial, &current}) {
        s->matrix = Matrix::scale(resolution, resolution);
        s->fill = PaintStyle{};
        s->pen = PaintStyle{};
        s->mask = nullptr;
    }
    KeelPainter sub(canvas, std::move(initial), std::move(current), traceOut_, loader_);
    Ketch::Frame level(frame, sub);
    Ketch::runBody(level, body);
    return canvas.makePaint();
}

bool KeelPainter::drawsShapes() const {
    return draws(state_.fill) || (draws(state_.pen) && state_.width > 1e-8);
}

double KeelPainter::quality() const {
    const double q = state_.matrix.scaleFactor() * state_.curveQuality;
    return q > 0.0001 ? q : 0.0001;
}

void KeelPainter::draw(VectorPath& path) {
    const bool fills = draws(state_.fill);
    const bool strokes = draws(state_.pen) && state_.width > 1e-8;
    const RealRect box = path.bounds();
    if (fills) {
        VectorPath outline = strokes ? path : std::move(path);
        outline.closeAll();
        outline.transform(state_.matrix);
        cover(outline, state_.evenOdd ? FillRule::evenOdd() : FillRule::nonZero(), state_.fill, box);
    }
    if (strokes) {
        if (state_.gap > 1e-8) {
            const double period = state_.dash + state_.gap;
            path.dash(state_.dash, state_.gap, std::fmod(std::fmod(state_.dashOffset, period) + period, period));
        }
        path.stroke(state_.width, state_.caps, state_.joints, state_.miterLimit, quality());
        path.transform(state_.matrix);
        cover(path, FillRule::nonZero(), state_.pen, box);
    }
}

void KeelPainter::cover(const VectorPath& outline, const FillRule& rule, const PaintStyle& style,
                        const RealRect& shapeBounds) {
    PolygonMask shape(outline, target_.getBounds(), rule);
    CoverageChain chain(shape, state_.gammaTable.get(), state_.mask.get());
    style.paint->draw(style, state_.matrix, target_, shapeBounds, chain.coverage());
}

}  // namespace tw
