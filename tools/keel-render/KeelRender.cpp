// keel-render: draws a Keel source file into a PNG, for the product's own pictures and for
// the artists who draw them. The size is the picture's in Keel units, and the PNG has that
// many pixels times the scale, as a view of that size would paint it on a screen of that
// scale, with rectangles and their pens put on whole pixels when the scale is not 1. "trace" writes to standard output, "include" reads files beside the source, and a
// fault is printed with the statement it arose in; nothing is written then.
//
//   keel-render picture.keel picture.png 100x100 [scale]
#include "graphics/CanvasTarget.h"
#include "graphics/PNGWriter.h"
#include "platform/FileObject.h"
#include "vector/KetchException.h"
#include "vector/KeelPainter.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace {

// The file's text, or false when it cannot be read.
bool readFile(const std::filesystem::path& path, std::string& text) {
    try {
        text = tw::readWholeFile(tw::Path::parse(path.string()));
        return true;
    } catch (const tw::Exception&) {
        return false;
    }
}

// A positive number, all of the text.
bool readPositive(const char* text, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    return end != text && *end == '\0' && value > 0 && value <= 65536;
}

bool readSize(const std::string& text, double& width, double& height) {
    const std::size_t x = text.find('x');
    return x != std::string::npos && readPositive(text.substr(0, x).c_str(), width) &&
           readPositive(text.substr(x + 1).c_str(), height);
}

}  // namespace

int main(int argc, char** argv) {
    double width = 0, height = 0, scale = 1;
    if ((argc != 4 && argc != 5) || !readSize(argv[3], width, height) || (argc == 5 && !readPositive(argv[4], scale))) {
        std::cerr << "usage: keel-render picture.keel picture.png WIDTHxHEIGHT [scale]\n";
        return 2;
    }
    const std::filesystem::path source = argv[1];
    std::string text;
    if (!readFile(source, text)) {
        std::cerr << source.string() << ": cannot be read\n";
        return 1;
    }
    const std::int32_t pixelsWide = std::int32_t(std::ceil(width * scale));
    const std::int32_t pixelsHigh = std::int32_t(std::ceil(height * scale));
    if (double(pixelsWide) * pixelsHigh > 1 << 28) {
        std::cerr << "the picture would be too large\n";
        return 2;
    }

    tw::Raster32 picture(tw::IntRect{0, 0, pixelsWide, pixelsHigh});
    tw::CanvasTarget canvas(picture);
    const std::filesystem::path folder = source.parent_path();
    tw::KeelPainter painter(canvas, tw::Matrix::scale(scale, scale), std::cout,
                            [&folder](std::string_view name, std::string& included) {
                                return readFile(folder / std::string(name), included);
                            });
    // At a zoom, rectangles and their pens land on whole pixels, as at 100 %.
    painter.snapToPixels(scale != 1);
    tw::Ketch::VariableMap variables;
    tw::Ketch::Frame frame(painter, variables, 1000000, 100);
    try {
        tw::Ketch::run(frame, text);
        tw::writePNG(argv[2], picture);
    } catch (const tw::Ketch::Exception& e) {
        std::cout.flush();
        std::cerr << source.string() << ": " << e.describe() << '\n';
        return 1;
    } catch (const tw::Exception& e) {
        std::cerr << argv[2] << ": " << e.message() << '\n';
        return 1;
    }
    return 0;
}
