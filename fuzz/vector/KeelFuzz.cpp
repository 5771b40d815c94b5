// Runs any text as a Keel picture on a small canvas. Every input must end, by finishing or
// by a Ketch::Exception, within the recursion a view gives its scripts and a statement
// count cut down from a view's: under instrumentation a statement that strokes a long
// dashed path, or fills a pattern of a million pixels, takes tens of milliseconds. Anything
// else that escapes, or any crash, is a fault.
#include "graphics/CanvasTarget.h"
#include "platform/KetchException.h"
#include "vector/KeelPainter.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tw;
    Raster32 picture(IntRect{0, 0, 32, 32});
    CanvasTarget canvas(picture);
    std::ostream discard(nullptr);
    KeelPainter painter(canvas, Matrix::scale(1.5, 1.5), discard, [](std::string_view name, std::string& text) {
        if (name != "part") return false;
        text = "fill #80008000; ellipse 8,8,$n";
        return true;
    });
    Ketch::VariableMap variables;
    Ketch::Frame frame(painter, variables, 200, 100);
    try {
        Ketch::run(frame, std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const Ketch::Exception&) {
    }
    return 0;
}
