// A layout written for 100 % read at another zoom: which numbers are lengths, how
// rectangles keep their neighbours, which names become the pictures and fonts made at that
// size, and what stays as written.
#include <gtest/gtest.h>

#include "cushy/LayoutZoom.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

namespace {

using namespace tw;

SpecMap view(const std::string& text) { return parseMap(text); }

TEST(LayoutZoom, RectanglesGoEdgeByEdgeSoNeighboursStayNeighbours) {
    const Zoom zoom(125);
    // Two rectangles side by side at 100 % meet at 64; zoomed, they still meet.
    const SpecRect a = parseBounds(zoom.zoomRect("{ 20, 74, 44, 20 }"), {});
    const SpecRect b = parseBounds(zoom.zoomRect("{ 64, 74, 44, 20 }"), {});
    EXPECT_EQ(a.right, b.left);
    EXPECT_EQ(a, (SpecRect{25, 93, 80, 118}));
    EXPECT_EQ(zoom.zoomRect("{ 0, 0, w-10, 4 }"), "{ 0, 0, w-10, 5 }") << "an expression stays as written";
    EXPECT_EQ(Zoom(100).zoomRect("{ 1, 2, 3, 4 }"), "{ 1, 2, 3, 4 }");
    // Numbers past 32 bits are held there, as the readers of bounds hold them.
    EXPECT_EQ(zoom.zoomRect("{ 0, 0, 1e37, -1e37 }"), "{ 0, 0, 2147483647, -2147483648 }");
    EXPECT_EQ(zoom.length(-1e300), -2147483647 - 1);
}

TEST(LayoutZoom, LengthsScaleAndLinesStayAtLeastAPixel) {
    const SpecMap v = Zoom(150).zoomView(view(
        "type: rectangle, bounds: { 8, 8, 24, 24 }, rounded: { 4, 4 }, frame: { color: { 1, 2, 3 }, stroke: 1 }"));
    EXPECT_EQ(lookup(v, "bounds"), "{ 12, 12, 36, 36 }");
    EXPECT_EQ(lookup(v, "rounded"), "{ 6, 6 }");
    EXPECT_EQ(lookup(parseMap(lookup(v, "frame")), "stroke"), "2");
    EXPECT_EQ(lookup(parseMap(lookup(v, "frame")), "color"), "{ 1, 2, 3 }") << "colours are no lengths";
    // An outline without a width is a pixel wide at 100 %: it gets the zoomed width.
    const SpecMap plain = Zoom(200).zoomView(view("type: button, standard: { frame: { color: { 1, 2, 3 } } }"));
    EXPECT_EQ(lookup(parseMap(lookup(parseMap(lookup(plain, "standard")), "frame")), "stroke"), "2");
    EXPECT_EQ(Zoom(125).lineWidth(1), 1) << "a hairline at 125 % stays one pixel, on the pixel grid";
    EXPECT_EQ(Zoom(175).lineWidth(1.5), 3);
}

TEST(LayoutZoom, PicturesAndFontsAreTheOnesMadeAtTheZoom) {
    const SpecMap v = Zoom(175).zoomView(view(
        "type: knob, film: { image: Tidewake_knob_big, frames: 96 }, "
        "standard: { icon: { name: Tidewake_icons, clip: { 0, 16, 16, 16 } }, font: { fnt: Tidewake_sans_11, color: { 1, 2, 3 } } }"));
    const SpecMap film = parseMap(lookup(v, "film"));
    EXPECT_EQ(unquote(lookup(film, "image")), "Tidewake_knob_big_x175");
    EXPECT_EQ(lookup(film, "frames"), "96") << "a count is no length";
    const SpecMap standard = parseMap(lookup(v, "standard"));
    const SpecMap icon = parseMap(lookup(standard, "icon"));
    EXPECT_EQ(unquote(lookup(icon, "name")), "Tidewake_icons_x175");
    EXPECT_EQ(lookup(icon, "clip"), "{ 0, 28, 28, 28 }") << "cut from the zoomed picture";
    EXPECT_EQ(unquote(lookup(parseMap(lookup(standard, "font")), "fnt")), "Tidewake_sans_11_x175");
    // The product's own font, named by no face, is asked for at the zoom.
    const SpecMap system = Zoom(150).zoomView(view("type: caption, font: { color: { 1, 2, 3 } }"));
    EXPECT_EQ(lookup(parseMap(lookup(system, "font")), "zoom"), "150");
}

TEST(LayoutZoom, ChildrenVectorsAndProportionsFollowTheirOwnRules) {
    const SpecMap group = Zoom(200).zoomView(view(
        "type: group, views: { { type: rectangle, bounds: { 1, 2, 3, 4 } } { type: vector, bounds: { 0, 0, 8, 8 }, source: { rect 0,0,8,8 } } }"));
    const SpecList children = parseList(lookup(group, "views"));
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(lookup(parseMap(children[0]), "bounds"), "{ 2, 4, 6, 8 }");
    // A picture drawn by its program draws at the zoom; its source stays as written.
    const SpecMap vector = parseMap(children[1]);
    EXPECT_EQ(lookup(vector, "scale"), "200");
    EXPECT_EQ(lookup(vector, "source"), "{ rect 0,0,8,8 }");
    // A knob's cap scale and a marker's start angle are proportions, not lengths.
    const SpecMap knob = Zoom(200).zoomView(view("type: knob, cap: { size: 20, scale: 90 }"));
    EXPECT_EQ(lookup(parseMap(lookup(knob, "cap")), "size"), "40");
    EXPECT_EQ(lookup(parseMap(lookup(knob, "cap")), "scale"), "90");
    EXPECT_EQ(lookup(Zoom(200).zoomView(view("type: marker, start: 30, size: { 4, 4 }")), "start"), "30");
    // A whole layout: its bounds and views, its transitions left alone.
    const SpecMap layout = Zoom(150).zoomLayout(parseMap(
        "bounds: { 0, 0, 10, 10 }\ntransitions: { open: { scale: 80 } }\nviews: { { type: rectangle, bounds: { 2, 2, 2, 2 } } }"));
    EXPECT_EQ(lookup(layout, "bounds"), "{ 0, 0, 15, 15 }");
    EXPECT_EQ(lookup(layout, "transitions"), "{ open: { scale: 80 } }");
    EXPECT_EQ(lookup(parseMap(parseList(lookup(layout, "views"))[0]), "bounds"), "{ 3, 3, 3, 3 }");
}

TEST(LayoutZoom, LevelsAreHeldToTheNearestAndNamesKeptAtOneHundred) {
    EXPECT_EQ(Zoom(130).percent(), 125);
    EXPECT_EQ(Zoom(1000).percent(), 200);
    EXPECT_EQ(Zoom(-5).percent(), 100);
    EXPECT_EQ(Zoom(100).resourceName("Tidewake_logo"), "Tidewake_logo");
    EXPECT_EQ(Zoom(125).resourceName("Tidewake_logo"), "Tidewake_logo_x125");
    const SpecMap v = view("type: raster, image: Tidewake_logo, bounds: { 1, 1, 1, 1 }");
    EXPECT_EQ(Zoom(100).zoomView(v), v);
}

}  // namespace
