// A Keel run on a small colour canvas for the tests: the painter, a global frame with a
// view's limits, the traced lines, and files that "include" can fetch. A PaintTarget
// between the painter and the canvas counts the renderer trees that reach it.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "graphics/CanvasTarget.h"
#include "vector/KetchException.h"
#include "vector/KeelPainter.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

namespace tw::testing {

class CountingTarget : public PaintTarget {
public:
    explicit CountingTarget(PaintTarget& target) : target_(target) {}

    int draws = 0;

    PaintKind paintKind() const override { return target_.paintKind(); }
    void drawPixels(Renderer32& pixels) override {
        ++draws;
        target_.drawPixels(pixels);
    }
    void drawMask(Renderer8& mask) override {
        ++draws;
        target_.drawMask(mask);
    }
    void defineBounds(const IntRect& rect) override { target_.defineBounds(rect); }
    IntRect getBounds() const override { return target_.getBounds(); }

private:
    PaintTarget& target_;
};

struct KeelCanvas {
    Raster32 raster;
    CanvasTarget canvas{raster};
    CountingTarget target{canvas};
    std::ostringstream traces;
    std::map<std::string, std::string, std::less<>> files;
    KeelPainter painter;
    Ketch::VariableMap variables;
    Ketch::Frame frame{painter, variables, 1000000, 100};

    explicit KeelCanvas(std::int32_t width = 20, std::int32_t height = 20, double scale = 1)
        : raster(IntRect{0, 0, width, height}),
          painter(target, Matrix::scale(scale, scale), traces, [this](std::string_view name, std::string& text) {
              const auto it = files.find(name);
              if (it == files.end()) return false;
              text = it->second;
              return true;
          }) {}

    void run(std::string_view text) { Ketch::run(frame, text); }
    std::uint32_t at(std::int32_t x, std::int32_t y) const { return *raster.at(x, y); }
    const PainterState& state() const { return painter.state(); }
};

// Runs the text on a fresh canvas and returns the message of the Ketch::Exception of type
// E that it throws; a fault of another type or none at all fails the test.
template <class E = Ketch::Exception>
std::string faultOf(std::string_view text) {
    KeelCanvas c;
    try {
        c.run(text);
    } catch (const E& e) {
        return e.message();
    } catch (const Ketch::Exception& e) {
        ADD_FAILURE() << "fault of another type: \"" << e.message() << "\" running " << text;
        return e.message();
    }
    return "<no fault>";
}

}  // namespace tw::testing
