// The reference pictures of tests/data/vector, drawn at a scale of 2 as keel-render draws
// them. They were checked by eye (the test leaves them in the build's pictures/vector);
// these samples pin them where a picture is flat, and where a value can be worked out.
#include "KeelCanvas.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "graphics/PNGWriter.h"

using namespace tw;
using namespace tw::testing;

namespace {

struct Sample {
    std::int32_t x, y;  // device pixels
    std::uint32_t pixel;
    const char* what;
};

void checkPicture(const std::string& name, std::int32_t width, std::int32_t height, const std::vector<Sample>& samples) {
    std::ifstream in(std::string(TIDEWAKE_TEST_DATA) + "/vector/" + name + ".keel", std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    ASSERT_FALSE(text.str().empty()) << name;
    KeelCanvas c(width * 2, height * 2, 2);
    c.run(text.str());
    const std::filesystem::path folder = std::filesystem::path(TIDEWAKE_BINARY_DIR) / "pictures" / "vector";
    std::filesystem::create_directories(folder);
    writePNG((folder / (name + ".png")).string(), c.raster);
    for (const Sample& s : samples) {
        EXPECT_EQ(c.at(s.x, s.y), s.pixel) << name << ": " << s.what << std::hex << " 0x" << c.at(s.x, s.y);
    }
}

}  // namespace

TEST(KeelPictures, Knob) {
    checkPicture("knob", 100, 100, {
        {2, 2, 0, "outside the shadow"},
        {100, 198, 0x09000000, "the shadow fading out below"},
        {100, 20, 0xFF33C2FF, "the value arc at the top: hsv(0.55,0.8,1)"},
        {30, 60, 0xFF33C2FF, "the value arc at 10 o'clock"},
        {180, 100, 0xFF333333, "the track at 3 o'clock: rgb(0.2,0.2,0.2)"},
        {172, 140, 0xFF333333, "the track at 4 o'clock"},
        {148, 72, 0xFF203040, "the indicator, turned to 2 o'clock"},
        {60, 100, 0xFFAAAAAA, "the body between cap and rim"},
        {100, 150, 0xFF797979, "the body, darker below"},
        {100, 100, 0xFFFBFBFB, "the cap's centre, nearly white"},
    });
}

TEST(KeelPictures, Shapes) {
    checkPicture("shapes", 120, 80, {
        {40, 30, 0xFF000080, "the navy rectangle"},
        {120, 30, 0xFF008080, "inside the rounded rectangle"},
        {90, 30, 0xFF000000, "its pen, 2 wide on the left edge"},
        {200, 30, 0x80800000, "the half-transparent ellipse"},
        {40, 132, 0, "the even-odd star's centre"},
        {110, 132, 0xFF808000, "the non-zero star's centre"},
        {180, 134, 0xFF800080, "the ten-pointed star"},
        {179, 84, 0xFF008000, "the undashed square's left edge, 1 wide"},
        {180, 84, 0xFF008000, "the undashed square's left edge, 1 wide"},
        {181, 84, 0, "just inside it"},
    });
}

TEST(KeelPictures, Transforms) {
    checkPicture("transforms", 120, 80, {
        {12, 22, 0xFFFF0900, "the long relative gradient, at its red end"},
        {60, 22, 0xFFFFFD00, "its yellow middle"},
        {108, 22, 0xFF0AFF00, "its lime end"},
        {12, 50, 0xFFFF1300, "the short box starts red again"},
        {180, 40, 0xFF7F7FFF, "the rotated box's gradient, half way"},
        {146, 92, 0xFFC06000, "inside the sheared box"},
        {40, 120, 0xFF000000, "a black check of the pattern"},
        {42, 120, 0, "the next check, clear"},
        {90, 110, 0x80000000, "the relative pattern's black quarter, at half opacity"},
        {130, 140, 0x80000000, "its opposite quarter"},
    });
}

TEST(KeelPictures, Masks) {
    checkPicture("masks", 100, 60, {
        {50, 16, 0xFF007EBF, "the ring's gradient, half way from navy to aqua"},
        {50, 50, 0, "the ring's hole"},
        {4, 4, 0, "outside the ring"},
        {150, 50, 0, "the inverted mask's hole"},
        {104, 4, 0xFF800000, "around it, the gradient's maroon end"},
        {0, 110, 0xFF000000, "the strip under the mask ramp, at its full end"},
        {199, 110, 0x01000000, "and at its clear end"},
        {50, 94, 0xAA550055, "the hairline, 0.6 pixels wide, raised by the gamma to more than half"},
    });
}
