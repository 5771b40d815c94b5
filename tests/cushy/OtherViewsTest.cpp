#include "cushy/ClusterView.h"
#include "cushy/ConsoleView.h"
#include "cushy/GradientView.h"
#include "cushy/MarkerView.h"
#include "cushy/TransformedView.h"
#include "cushy/VectorView.h"

#include "cushy/Editor.h"
#include "graphics/PlainImage.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

template <class T>
T& child(Editor& editor, std::size_t i) {
    return dynamic_cast<T&>(*editor.root->children().at(i));
}

std::uint32_t pixel(Editor& editor, std::int32_t x, std::int32_t y) { return *editor.window.canvas().at(x, y); }

std::shared_ptr<Image> solid(std::uint32_t colour) {
    Raster32 raster(IntRect{0, 0, 10, 10}, true);
    for (std::int32_t y = 0; y < 10; ++y)
        for (std::int32_t x = 0; x < 10; ++x) *raster.at(x, y) = colour;
    return std::make_shared<RasterImage>(raster);
}

}  // namespace

// ---- gradient

TEST(Gradient, StopsKeptInOrderAndDrawnLinearOrRadial) {
    Editor editor;
    editor.load(R"(views: {
      { type: gradient, bounds: { 0, 0, 100, 10 }, start: { 0, 0 }, end: { 100, 0 },
        stops: { { 1, { 0, 0, 255 } }, { 0, { 255, 0, 0 } } } },
      { type: gradient, bounds: { 0, 20, 40, 40 }, stops: { { 0, white }, { 1, black } } } })");
    editor.attach();
    const auto& stops = child<GradientView>(editor, 0).stops();
    ASSERT_EQ(stops.size(), 2u);
    EXPECT_EQ(stops[0].position, 0);
    EXPECT_EQ(stops[1].value, 0xFF0000FFu);
    editor.window.paintAll();
    EXPECT_GT(pixel(editor, 2, 5) >> 16 & 0xFF, 0xF0u);
    EXPECT_GT(pixel(editor, 97, 5) & 0xFF, 0xF0u);
    // Radial: bright in the middle, dark at the rim.
    EXPECT_GT(pixel(editor, 20, 40) & 0xFF, 0xF0u);
    EXPECT_LT(pixel(editor, 1, 40) & 0xFF, 0x20u);
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: gradient, start: { 0, 0 } } }"); }),
              "No stops defined for gradient");
}

TEST(Gradient, MultiplyMeetsWhatLiesBelow) {
    Editor editor;
    editor.load(R"(views: {
      { type: rectangle, bounds: { 0, 0, 20, 20 }, fill: { 200, 100, 50 } },
      { type: gradient, bounds: { 0, 0, 20, 20 }, start: { 0, 0 }, blend: multiply, stops: { { 0, { 128, 255, 0 } } } } })");
    editor.attach();
    editor.window.paintAll();
    const std::uint32_t p = pixel(editor, 10, 10);
    EXPECT_NEAR(double(p >> 16 & 0xFF), 100, 1);
    EXPECT_NEAR(double(p >> 8 & 0xFF), 100, 1);
    EXPECT_EQ(p & 0xFF, 0u);
}

// ---- vector

TEST(Vector, ASourceBlockLosesItsBraces) {
    Editor editor;
    editor.load(R"(views: { { type: vector, bounds: { 0, 0, 20, 20 }, source: { format keel-1
fill #ff0000
rect 0,0,20,20 } } })");
    editor.attach();
    EXPECT_EQ(child<VectorView>(editor, 0).text().find('{'), std::string::npos);
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 10, 10), 0xFFFF0000u);
    EXPECT_TRUE(editor.host.errors.empty());
}

TEST(Vector, MissingSourceAndARunFault) {
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: vector } }"); }),
              "Missing Keel source, variable or file definition for vector view");
    editor.load(R"(views: { { type: vector, source: "format keel-1\nnonsense 1,2" } })");
    editor.attach();
    editor.window.paintAll();
    editor.window.advance(20);
    EXPECT_EQ(editor.host.errors.size(), 1u);
}

TEST(Vector, AFaultInAnAnimatedDrawingShowsOnceAndStopsTheView) {
    // A drawing that follows a variable repainted at every frame, failing at every run:
    // one message, and the view draws and refreshes no more, while its neighbour goes on.
    Editor editor;
    editor.host.variables["angle"] = "1";
    editor.host.variables["drawing"] = "format keel-1\nfill #00ff00\nrect 0,0,10,10\nnonsense $angle";
    editor.host.variables["good"] = "format keel-1\nfill #0000ff\nrect 0,0,10,10";
    editor.load(R"(views: {
      { type: vector, bounds: { 0, 0, 10, 10 }, variable: drawing, guiVariables: true },
      { type: vector, bounds: { 20, 0, 10, 10 }, variable: good } })");
    editor.attach();
    VectorView& failing = child<VectorView>(editor, 0);
    VectorView& good = child<VectorView>(editor, 1);
    for (int frame = 0; frame < 30; ++frame) {
        editor.host.variables["angle"] = std::to_string(frame);
        editor.root->refresh();
        editor.window.paintAll();
        editor.window.advance(10);
    }
    ASSERT_EQ(editor.host.errors.size(), 1u);
    EXPECT_NE(editor.host.errors[0].find("nonsense"), std::string::npos) << editor.host.errors[0];
    EXPECT_TRUE(failing.stopped());
    EXPECT_EQ(failing.runs(), 1) << "stopped after its first fault";
    EXPECT_FALSE(good.stopped());
    EXPECT_EQ(pixel(editor, 5, 5), 0xFF000000u) << "its faulty drawing is not shown again";
    editor.host.variables["good"] = "format keel-1\nfill #ff0000\nrect 0,0,10,10";
    editor.root->refresh();
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 25, 5), 0xFFFF0000u) << "the rest of the screen lives on";
}

TEST(Views, AFaultInAnyViewsPaintOrRefreshStopsOnlyThatView) {
    // Views of any kind that throw while painting or refreshing go the same way.
    Editor editor;
    editor.load(R"(views: { { type: probe, bounds: { 0, 0, 10, 10 } }, { type: probe, bounds: { 20, 0, 10, 10 } } })");
    editor.attach();
    auto& paintFault = editor.probe(0);
    auto& refreshFault = editor.probe(1);
    paintFault.paintFault = "Paint fault";
    refreshFault.refreshFault = "Refresh fault";
    for (int frame = 0; frame < 10; ++frame) {
        editor.root->refresh();
        editor.window.paintAll();
        editor.window.advance(10);
    }
    ASSERT_EQ(editor.host.errors.size(), 2u);
    EXPECT_EQ(editor.host.errors[0], "Refresh fault");
    EXPECT_EQ(editor.host.errors[1], "Paint fault");
    EXPECT_EQ(paintFault.paints, 1);
    EXPECT_EQ(refreshFault.refreshes, 1);
    EXPECT_TRUE(paintFault.stopped() && refreshFault.stopped());
}

TEST(Vector, FollowsItsVariablesAndCachesFromTheSixthUnchangedPaint) {
    Editor editor;
    editor.host.variables["colour"] = "#00ff00";
    editor.host.variables["drawing"] = "format keel-1\nfill $colour\nrect 0,0,10,10";
    editor.load(R"(views: {
      { type: vector, bounds: { 0, 0, 10, 10 }, variable: drawing, guiVariables: true },
      { type: vector, bounds: { 20, 0, 10, 10 }, file: pic } })");
    editor.host.layouts["pic"] = "format keel-1\nfill #0000ff\nrect 0,0,10,10";
    editor.attach();
    editor.root->refresh();
    VectorView& view = child<VectorView>(editor, 0);
    for (int i = 0; i < VectorView::directPaints; ++i) editor.window.paintAll();
    EXPECT_FALSE(view.cached());
    EXPECT_EQ(view.runs(), VectorView::directPaints);
    editor.window.paintAll();
    EXPECT_TRUE(view.cached());
    editor.window.paintAll();
    EXPECT_EQ(view.runs(), VectorView::directPaints + 1);
    EXPECT_EQ(pixel(editor, 5, 5), 0xFF00FF00u);
    // Nothing changed: a refresh leaves the picture alone.
    const std::uint32_t generation = view.generation();
    editor.root->refresh();
    EXPECT_EQ(view.generation(), generation);
    // A variable the program read changed: it runs again.
    editor.host.variables["colour"] = "#ff0000";
    editor.root->refresh();
    EXPECT_EQ(view.generation(), generation + 1);
    EXPECT_FALSE(view.cached());
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 5, 5), 0xFFFF0000u);
    EXPECT_EQ(pixel(editor, 25, 5), 0xFF0000FFu);
}

// ---- transformed

TEST(Transformed, EvaluatedAtEachRefreshAndPressedThroughTheInverse) {
    Editor editor;
    editor.host.variables["s"] = "50";
    editor.load(R"(views: { { type: transformed, bounds: { 0, 0, 100, 100 }, scale: "[var]s[/var]", opacity: 100,
        views: { { type: probe, name: p, bounds: { 0, 0, 100, 100 }, color: red } } } })");
    editor.attach();
    editor.root->refresh();
    TransformedView& view = child<TransformedView>(editor, 0);
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 50, 50), 0xFFFF0000u);
    EXPECT_EQ(pixel(editor, 10, 10), 0xFF000000u);
    editor.window.mouseDown(10, 10);
    EXPECT_TRUE(editor.log.empty());
    editor.window.mouseDown(30, 30);
    ASSERT_EQ(editor.log.size(), 1u);
    EXPECT_EQ(editor.log[0], "p down 11,11");  // the centre of pixel 30 is 30.5
    editor.window.clearInvalidations();
    editor.host.variables["s"] = "100";
    editor.root->refresh();
    EXPECT_TRUE(view.matrix().isIdentity());
    EXPECT_FALSE(editor.window.invalidations().empty());
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 10, 10), 0xFFFF0000u);
}

// ---- cluster

TEST(Cluster, PaintMethodsAcrossTheSwitches) {
    Editor editor;
    editor.host.images["off"] = solid(0xFF000080);
    editor.host.images["on"] = solid(0xFF00FF00);
    editor.host.variables["step[1]"] = "1";
    editor.host.variables["one[0]"] = "1";
    editor.load(R"(views: {
      { type: cluster, bounds: { 0, 0, 40, 10 }, array: step, images: { off, on }, rects: { 4, 1, 10, 10 }, paintMethod: toggle },
      { type: cluster, bounds: { 0, 20, 40, 10 }, array: one, images: { off, on }, rects: { 4, 1, 10, 10 }, paintMethod: exclusive },
      { type: cluster, bounds: { 0, 40, 20, 11 }, array: lvl, images: { off, on }, range: { 0, 10 },
        rects: { { 0, 0, 10, 11 }, { 10, 0, 10, 11 } }, paintMethod: slide } })");
    editor.attach();
    editor.root->refresh();
    ClusterView& steps = child<ClusterView>(editor, 0);
    EXPECT_EQ(steps.pictureOf(1), 1u);
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 15, 5), 0xFF00FF00u);
    // A press on an off switch turns on every switch the drag crosses.
    editor.window.mouseDown(5, 5);
    editor.window.mouseMove(35, 5, 1);
    editor.window.mouseUp(35, 5);
    EXPECT_EQ(editor.host.variables["step[0]"], "1");
    EXPECT_EQ(editor.host.variables["step[3]"], "1");
    EXPECT_EQ(editor.host.writes.front(), "begin step[0]");
    EXPECT_EQ(editor.host.writes.back(), "end step[3]");
    editor.window.mouseDown(25, 25);
    editor.window.mouseUp(25, 25);
    EXPECT_EQ(editor.host.variables["one[2]"], "1");
    EXPECT_EQ(editor.host.variables["one[0]"], "0");
    editor.window.mouseDown(5, 45);
    editor.window.mouseMove(15, 40, 1);
    editor.window.mouseUp(15, 40);
    EXPECT_EQ(editor.host.variables["lvl[0]"], "5");
    EXPECT_EQ(editor.host.variables["lvl[1]"], "10");
}

TEST(Cluster, Faults) {
    Editor editor;
    editor.host.images["off"] = solid(0xFF000080);
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: cluster, rects: { 1, 1, 5, 5 } } }"); }),
              "No images declared for cluster view");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: cluster, images: { off }, rects: { 1, 2 } } }"); }),
              "Invalid rects specification in cluster view");
    EXPECT_EQ(formatFailure([&] {
                  editor.load("views: { { type: cluster, images: { off }, rects: { 1, 1, 5, 5 }, paintMethod: smear } }");
              }),
              "Unrecognized cluster paint method: \"smear\"");
}

// ---- console

TEST(Console, ShowsTheEndOfItsOutputAndSendsTypedLines) {
    Editor editor;
    editor.host.variables["out"] = "one\ntwo\tx\nthree and more";
    editor.load(R"(views: { { type: console, bounds: { 0, 0, 200, 60 }, dimensions: { 8, 3 }, tabSize: 4,
        font: { fnt: Tidewake_sans_11, color: white }, outputVariable: out, inputVariable: in, inputAction: typed,
        cursor: { blinkRate: 0.25 } } })");
    editor.attach();
    editor.root->refresh();
    ConsoleView& console = child<ConsoleView>(editor, 0);
    EXPECT_EQ(console.screen(), (std::vector<std::u16string>{u"two x", u"three an", u"d more"}));
    editor.host.variables["out"] = "a\tb\n";
    editor.root->refresh();
    EXPECT_EQ(console.screen(), (std::vector<std::u16string>{u"a   b", u""}));
    EXPECT_FALSE(editor.window.key(Key::character, U'x'));
    editor.window.mouseDown(10, 10);
    editor.window.type(U"hi!");
    editor.window.key(Key::backspace);
    EXPECT_EQ(console.typedLine(), u"hi");
    EXPECT_EQ(console.screen().back(), u"hi");
    EXPECT_TRUE(console.cursorShown());
    editor.window.advance(250);
    EXPECT_FALSE(console.cursorShown());
    editor.window.key(Key::enter);
    EXPECT_EQ(editor.host.variables["in"], "hi");
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"typed "}));
    EXPECT_TRUE(console.typedLine().empty());
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: console, dimensions: { 0, 3 } } }"); }),
              "Console view has negative or zero dimensions");
}

// ---- marker

// A gamma above 1 raises the partial coverage of the stroke's edges and leaves its full
// coverage as it is; a gamma the rasteriser cannot take is refused.
TEST(Marker, GammaBendsTheEdgesOnly) {
    auto redAt = [](const char* gamma) {
        Editor editor;
        editor.load(std::string("views: { { type: marker, bounds: { 0, 0, 60, 60 }, pen: { color: red, stroke: 3 }") +
                    gamma + " } }");
        editor.attach();
        editor.window.paintAll();
        std::vector<std::uint32_t> red;
        for (std::int32_t y = 0; y < 60; ++y)
            for (std::int32_t x = 0; x < 60; ++x) red.push_back(pixel(editor, x, y) >> 16 & 0xFF);
        return red;
    };
    const std::vector<std::uint32_t> plain = redAt(""), bent = redAt(", gamma: 2.2");
    int raised = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        if (plain[i] == 0 || plain[i] == 0xFF) EXPECT_EQ(bent[i], plain[i]) << "at " << i;
        else if (bent[i] > plain[i]) ++raised;
        else EXPECT_EQ(bent[i], plain[i]) << "at " << i;
    }
    EXPECT_GT(raised, 20);
    Editor editor;
    for (const char* gamma : {"0", "-1", "100"})
        EXPECT_EQ(formatFailure([&] { editor.load(std::string("views: { { type: marker, gamma: ") + gamma + " } }"); }),
                  "Value out of range")
            << gamma;
}

TEST(Marker, DrawsItsStrokeOverTime) {
    Editor editor;
    editor.load(R"(views: { { type: marker, bounds: { 0, 0, 60, 60 }, pen: { color: red, stroke: 3 }, time: 1,
        updateRate: 10, start: 0, sweep: 360 } })");
    editor.attach();
    MarkerView& marker = child<MarkerView>(editor, 0);
    EXPECT_EQ(marker.progress(), 0);
    editor.window.advance(500);
    EXPECT_NEAR(marker.progress(), 0.5, 1e-9);
    editor.window.paintAll();
    // Half way round from the top: the right side is drawn, the left not yet.
    EXPECT_EQ(pixel(editor, 58, 30) >> 16 & 0xFF, 0xFFu);
    EXPECT_EQ(pixel(editor, 1, 30), 0xFF000000u);
    editor.window.advance(500);
    EXPECT_EQ(marker.progress(), 1);
    editor.window.paintAll();
    EXPECT_EQ(pixel(editor, 1, 30) >> 16 & 0xFF, 0xFFu);
}
