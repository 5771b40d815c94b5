// Runs any text as a Keel picture on a small canvas. Every input must end, by finishing or
// by a Ketch::Exception, within the recursion a view gives its scripts and a statement
// count cut down from a view's. Under instrumentation one statement may take a tenth of a
// second (16384 dashes with round caps), and one that reads path data grows with its text
// (each curve may flatten to thousands of pieces), so the count falls as the input grows
// and texts beyond 16 KB are not run: no input may take more than a few seconds. Anything
// else that escapes, or any crash, is a fault.
#include "graphics/CanvasTarget.h"
#include "vector/KetchException.h"
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
    if (size > 16384) return 0;
    Raster32 picture(IntRect{0, 0, 32, 32});
    CanvasTarget canvas(picture);
    std::ostream discard(nullptr);
    KeelPainter painter(canvas, Matrix::scale(1.5, 1.5), discard, [](std::string_view name, std::string& text) {
        if (name != "part") return false;
        text = "fill #80008000; ellipse 8,8,$n";
        return true;
    });
    Ketch::VariableMap variables;
    const std::int32_t statements = size <= 1000 ? 50 : std::int32_t(50000 / size);
    Ketch::Frame frame(painter, variables, statements, 100);
    try {
        Ketch::run(frame, std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const Ketch::Exception&) {
    }
    return 0;
}
