#include "graphics/ImageKey.h"

#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::failure;
using tw::test::formatFailure;

namespace {

// Reads a spec against a picture of 40 by 30 pixels, counting how often its size is asked.
struct Reader {
    int sizeAsked = 0;
    ImageKey read(const std::string& text) {
        return parseImageSpec(text, [this](const ImageKey& whole) {
            ++sizeAsked;
            EXPECT_FALSE(whole.hasClip());
            EXPECT_FALSE(whole.hasOffset());
            return std::pair<std::int32_t, std::int32_t>(40, 30);
        });
    }
};

}  // namespace

TEST(ImageSpec, PlainNameHasAllDefaults) {
    Reader r;
    const ImageKey key = r.read("knob");
    EXPECT_EQ(key.name, "knob");
    EXPECT_FALSE(key.rle);
    EXPECT_FALSE(key.mask);
    EXPECT_EQ(key.gamma, 0);
    EXPECT_EQ(key.opacity, 1);
    EXPECT_EQ(key.blend, BlendMode::normal);
    EXPECT_FALSE(key.hasClip());
    EXPECT_FALSE(key.hasOffset());
    EXPECT_EQ(r.read("\"back ground\"").name, "back ground");
    EXPECT_EQ(r.sizeAsked, 0);
}

TEST(ImageSpec, MapKeys) {
    Reader r;
    const ImageKey key = r.read("{ name: \"meter\", format: rlemask, gamma: 2.2, opacity: 40 %, blend: add }");
    EXPECT_EQ(key.name, "meter");
    EXPECT_TRUE(key.rle && key.mask);
    EXPECT_DOUBLE_EQ(key.gamma, 2.2);
    EXPECT_DOUBLE_EQ(key.opacity, 0.4);
    EXPECT_EQ(key.blend, BlendMode::add);
    EXPECT_FALSE(r.read("{ name: a, format: rle }").mask);
    EXPECT_FALSE(r.read("{ name: a, format: mask }").rle);
    EXPECT_EQ(formatFailure([&] { r.read("{ name: a, format: RLE }"); }),
              "Invalid image format specification: \"RLE\"");
}

TEST(ImageSpec, GammaAndOpacityAreBounded) {
    Reader r;
    EXPECT_EQ(r.read("{ name: a, gamma: 9 }").gamma, 4);
    EXPECT_EQ(r.read("{ name: a, gamma: -1 }").gamma, 0);
    EXPECT_EQ(r.read("{ name: a, gamma: 0/0 }").gamma, 0);
    EXPECT_EQ(r.read("{ name: a, opacity: 250 }").opacity, 1);
    // A fully transparent picture is a picture, not an error.
    EXPECT_EQ(r.read("{ name: a, opacity: 0 }").opacity, 0);
    EXPECT_EQ(r.read("{ name: a, opacity: -20 }").opacity, 0);
    EXPECT_EQ(r.read("{ name: a, opacity: $ / 2 }").opacity, 0.5);
    EXPECT_EQ(failure([&] { r.read("{ name: a, opacity: half }"); }), "Undefined symbol: \"half\"");
}

TEST(ImageSpec, ClipIsBoundsAgainstThePictureSize) {
    Reader r;
    ImageKey key = r.read("{ name: a, clip: { 0, h/2, w, h/2 } }");
    EXPECT_EQ(key.clip, (SpecRect{0, 15, 40, 30}));
    EXPECT_TRUE(key.hasClip());
    EXPECT_EQ(r.sizeAsked, 1);
    // `$` is what the number would have been: the whole picture.
    EXPECT_EQ(r.read("{ name: a, clip: { $+2, $+1, $-3, $-5 } }").clip, (SpecRect{2, 1, 39, 26}));
    // A clip with nothing inside is still a clip; one with all four sides equal is none.
    EXPECT_TRUE(r.read("{ name: a, clip: { 10, 0, -5, 30 } }").hasClip());
    EXPECT_FALSE(r.read("{ name: a, clip: { 7, 7, 0, 0 } }").hasClip());
}

TEST(ImageSpec, OffsetIsAPair) {
    Reader r;
    const ImageKey key = r.read("{ name: a, offset: { 3, -4 } }");
    EXPECT_EQ(key.offsetX, 3);
    EXPECT_EQ(key.offsetY, -4);
    EXPECT_TRUE(key.hasOffset());
    EXPECT_FALSE(key.hasClip());
    EXPECT_EQ(r.sizeAsked, 0);
    EXPECT_EQ(r.read("{ name: a, offset: { 5 } }").offsetY, 0);
}

TEST(ImageSpec, KeyOrder) {
    auto key = [](const std::string& text) {
        return parseImageSpec(text, [](const ImageKey&) { return std::pair<std::int32_t, std::int32_t>(10, 10); });
    };
    auto same = [](const ImageKey& a, const ImageKey& b) { return !(a < b) && !(b < a); };
    EXPECT_FALSE(key("b") < key("{ name: a, format: rle }"));  // the name decides first
    EXPECT_TRUE(key("{ name: a, format: mask }") < key("{ name: a, format: rle }"));
    EXPECT_TRUE(same(key("{ name: a, opacity: 100 }"), key("a")));
    EXPECT_FALSE(same(key("{ name: a, blend: add }"), key("a")));  // two blend modes, two entries
    ImageKey transient = key("a");
    transient.keep = false;
    EXPECT_TRUE(same(transient, key("a")));
}
