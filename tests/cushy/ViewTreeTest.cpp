#include "cushy/DebugOverlay.h"

#include "cushy/Editor.h"
#include "graphics/SavePicture.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

// Two probes that overlap at 30..59, 10..39; "top" comes later and so lies above.
const char* overlapping = R"~(
views: {
  { type: probe, name: bottom, bounds: { 10, 10, 50, 30 }, cursor: "hand", color: red },
  { type: probe, name: top, bounds: { 30, 10, 50, 30 }, cursor: "iBeam", color: blue }
})~";

std::vector<std::string> take(std::vector<std::string>& log) {
    std::vector<std::string> out;
    out.swap(log);
    return out;
}

using Log = std::vector<std::string>;

}  // namespace

TEST(ViewTree, OverlappingViewsPressTheTopMoveBoth) {
    Editor editor;
    editor.load(overlapping);
    editor.attach();
    editor.window.mouseMove(40, 20);
    EXPECT_EQ(take(editor.log), (Log{"bottom enter", "bottom move 30,10", "top enter", "top move 10,10"}));
    // The last to speak, the top one, decides the cursor.
    EXPECT_EQ(editor.window.cursor(), Cursor::iBeam);
    editor.window.mouseDown(40, 20);
    EXPECT_EQ(take(editor.log), (Log{"top down 10,10"}));
    editor.window.mouseMove(15, 20);
    EXPECT_EQ(take(editor.log), (Log{"top leave", "bottom move 5,10"}));
    EXPECT_EQ(editor.window.cursor(), Cursor::hand);
    // Off every view the root's arrow is back.
    editor.window.mouseMove(150, 80);
    EXPECT_EQ(editor.window.cursor(), Cursor::arrow);
}

TEST(ViewTree, AnUnclaimedPressGoesToTheViewBelow) {
    Editor editor;
    editor.load(R"~(views: {
      { type: probe, name: bottom, bounds: { 0, 0, 100, 100 } },
      { type: probe, name: top, bounds: { 0, 0, 100, 100 }, claims: false } })~");
    editor.attach();
    editor.window.mouseDown(5, 5);
    EXPECT_EQ(take(editor.log), (Log{"top down 5,5", "bottom down 5,5"}));
    editor.window.mouseDown(5, 5, rightButton);
    EXPECT_EQ(take(editor.log), (Log{"top right", "bottom right"}));
}

TEST(ViewTree, InvisibleChildrenAreNeitherPaintedNorHit) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a, bounds: { 0, 0, 40, 40 }, color: red } })~");
    editor.attach();
    tw::test::ProbeView& a = editor.probe(0);
    editor.window.mouseMove(10, 10);
    take(editor.log);
    a.setVisible(false);
    editor.window.paintAll();
    EXPECT_EQ(a.paints, 0);
    EXPECT_EQ(*editor.window.canvas().at(10, 10), 0xFF000000u);
    // The hover goes at the next move, and the press finds nothing.
    editor.window.mouseMove(11, 10);
    EXPECT_EQ(take(editor.log), (Log{"a leave"}));
    editor.window.mouseDown(11, 10);
    EXPECT_TRUE(editor.log.empty());
    EXPECT_EQ(editor.root->hitTest({11, 10}), editor.root.get());
    a.setVisible(true);
    editor.window.paintAll();
    EXPECT_EQ(*editor.window.canvas().at(10, 10), 0xFFFF0000u);
    EXPECT_EQ(editor.root->hitTest({11, 10}), &a);
}

TEST(ViewTree, RightAndBottomEdgesAreOutside) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a, bounds: { 10, 10, 20, 20 } } })~");
    editor.attach();
    for (auto [x, y] : {std::pair{30, 15}, {15, 30}, {9, 15}, {15, 9}}) editor.window.mouseDown(x, y);
    EXPECT_TRUE(editor.log.empty());
    editor.window.mouseDown(29, 29);
    editor.window.mouseDown(10, 10);
    EXPECT_EQ(take(editor.log), (Log{"a down 19,19", "a down 0,0"}));
}

TEST(ViewTree, PaintingIsInOrderAndClippedToFrames) {
    Editor editor({0, 0, 60, 40});
    editor.load(R"~(views: {
      { type: box, bounds: { 10, 10, 30, 20 }, views: {
          { type: probe, name: inner, bounds: { -10, -10, 100, 100 }, color: lime } } },
      { type: probe, name: over, bounds: { 20, 0, 10, 40 }, color: blue } })~");
    editor.attach();
    editor.window.paintAll();
    const Raster32& canvas = editor.window.canvas();
    EXPECT_EQ(*canvas.at(9, 15), 0xFF000000u);    // left of the box: the inner view is cut
    EXPECT_EQ(*canvas.at(10, 10), 0xFF00FF00u);
    EXPECT_EQ(*canvas.at(39, 29), 0xFF00FF00u);
    EXPECT_EQ(*canvas.at(40, 29), 0xFF000000u);
    EXPECT_EQ(*canvas.at(39, 30), 0xFF000000u);
    EXPECT_EQ(*canvas.at(25, 15), 0xFF0000FFu);   // the later view paints over
    EXPECT_EQ(*canvas.at(25, 35), 0xFF0000FFu);
    tw::test::savePicture("cushy-clipping.png", canvas);
    // A paint of part of the window visits only the views that meet it.
    editor.probe(0).paints = editor.probe(1).paints = 0;
    editor.window.invalidate(45, 0, 10, 10);
    editor.window.paintInvalid();
    EXPECT_EQ(editor.probe(0).paints + editor.probe(1).paints, 0);
}

TEST(ViewTree, EmptyLayoutClaimsNothing) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a } })~");
    editor.attach();
    editor.root->load("");
    EXPECT_TRUE(editor.root->children().empty());
    MouseEvent e;
    e.x = 5, e.y = 5;
    EXPECT_FALSE(editor.root->mouseDown(e));
    EXPECT_FALSE(editor.root->rightMouseDown(e));
    EXPECT_FALSE(editor.root->mouseWheel(e));
    EXPECT_EQ(editor.root->hitTest({5, 5}), editor.root.get());
    EXPECT_EQ(editor.root->watchedHints() + editor.root->refresherCount(), 0u);
}

TEST(ViewTree, LayoutFaultsHaveTheirMessages) {
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { bounds: { 0, 0, 1, 1 } } }"); }), "Missing view type");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: probe, bounds: { 10, 0, -1, 5 } } }"); }),
              "View bounds has negative width and/or height");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: \"wobble\" } }"); }),
              "Unrecognized view type : \"wobble\"");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: probe, cursor: \"sideways\" } }"); }),
              "Unrecognized cursor: \"sideways\"");
    EXPECT_TRUE(isViewTypeName("transformed"));
    EXPECT_FALSE(isViewTypeName("probe"));
}

TEST(ViewTree, LayoutBoundsAndNestedBounds) {
    Editor editor({0, 0, 200, 100});
    editor.load(R"~(bounds: { 10, 5, $ - 20, $ - 10 }
      views: { { type: box, bounds: { 20, 20, 50, 40 }, views: { { type: probe, name: p, bounds: { 5, 5, $ - 10, $ - 10 } } } } })~");
    EXPECT_EQ(editor.root->frame(), (IntRect{10, 5, 180, 90}));
    EXPECT_EQ(editor.probe(0).frame(), (IntRect{5, 5, 40, 30}));
    EXPECT_EQ(editor.probe(0).screenFrame(), (IntRect{35, 30, 40, 30}));
    editor.attach();
    editor.window.mouseDown(35, 30);
    EXPECT_EQ(take(editor.log), (Log{"p down 0,0"}));
}

TEST(ViewTree, CaptureSendsMovesAndTheReleaseToItsHolder) {
    Editor editor;
    editor.load(overlapping);
    editor.attach();
    editor.probe(0).capture = true;
    editor.window.mouseDown(15, 20);
    EXPECT_EQ(View::captureHolder(), &editor.probe(0));
    EXPECT_TRUE(editor.window.captured());
    take(editor.log);
    editor.window.mouseMove(150, 90, 1);
    editor.window.mouseUp(150, 90);
    EXPECT_EQ(take(editor.log), (Log{"bottom move 140,80", "bottom up 140,80"}));
    EXPECT_EQ(View::captureHolder(), nullptr);
    EXPECT_FALSE(editor.window.captured());
    // A capture lost to the system ends with the holder released; detaching does the same.
    editor.window.mouseDown(15, 20);
    editor.client.captureLost();
    EXPECT_EQ(View::captureHolder(), nullptr);
    editor.window.mouseDown(15, 20);
    editor.client.attach(nullptr);
    EXPECT_EQ(View::captureHolder(), nullptr);
}

TEST(ViewTree, ModifierChangesRefreshTheHover) {
    Editor editor;
    editor.load(overlapping);
    editor.attach();
    editor.window.mouseMove(40, 20);
    take(editor.log);
    MouseEvent e;
    e.x = 40, e.y = 20, e.shift = true;
    editor.client.modifiersChanged(e);
    EXPECT_EQ(take(editor.log), (Log{"bottom move 30,10", "top move 10,10"}));
}

TEST(Timers, AutoRefreshEmptyMeansThirtyASecond) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a, autoRefresh: }, { type: probe, name: b, autoRefresh: 60 } })~");
    editor.attach();
    editor.window.advance(1000);
    // 33 ms and 17 ms periods, kept from the due tick, so neither drifts.
    EXPECT_EQ(editor.probe(0).refreshes, 30);
    EXPECT_EQ(editor.probe(1).refreshes, 58);
}

TEST(Timers, AutoexecDelayCountsFromAttachment) {
    Editor editor;
    editor.host.layouts["test"] = R"~(autoexecs: {
      { action: "tick", params: "once", delay: 0.1 sec },
      { action: "tick", params: "every", delay: 0, repeat: 0.25 },
      { action: "tick", params: "now" } })~";
    editor.root->load("test");
    // Loaded while detached: nothing runs, however long we wait.
    editor.window.advance(500);
    EXPECT_TRUE(editor.host.performed.empty());
    editor.attach();
    editor.window.advance(0);
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"tick every", "tick now"}));
    editor.window.advance(99);
    EXPECT_EQ(editor.host.performed.size(), 2u);
    editor.window.advance(1);
    EXPECT_EQ(editor.host.performed.back(), "tick once");
    editor.window.advance(400);
    EXPECT_EQ(std::count(editor.host.performed.begin(), editor.host.performed.end(), "tick every"), 3);
    // Each autoexec ran through the guarded path, which updates afterwards.
    EXPECT_GE(editor.host.updates, 4);
    // Detached, the layout has no timers at all.
    editor.client.attach(nullptr);
    EXPECT_EQ(editor.window.timers().waitTime(editor.window.now()), -1);
}

TEST(Timers, ReloadAndUpdateArePostedEvents) {
    Editor editor;
    editor.attach();
    editor.root->postEvent(CushyView::reloadEvent);
    editor.root->postEvent(CushyView::updateEvent);
    EXPECT_EQ(editor.host.reloads + editor.host.updates, 0);
    editor.window.advance(0);
    EXPECT_EQ(editor.host.reloads, 1);
    EXPECT_EQ(editor.host.updates, 1);
    // A reload that fails shows its message.
    editor.host.onReload = [](CushyView&) { throw FormatException("Resource not found: x"); };
    editor.root->postEvent(CushyView::reloadEvent);
    editor.window.advance(0);
    EXPECT_EQ(editor.host.errors, (std::vector<std::string>{"Resource not found: x"}));
}

TEST(Hints, ShowAfterTheDelayWithPatternsAndLiveText) {
    Editor editor;
    editor.host.variables["name"] = "Time";
    editor.load(R"~(views: {
      { type: probe, name: a, bounds: { 0, 0, 50, 50 }, value: "250 ms", hint: "Delay % (100%%)" },
      { type: probe, name: b, bounds: { 100, 0, 50, 50 }, hint: "[var]name[/var] knob" },
      { type: probe, name: c, bounds: { 150, 0, 50, 50 }, hint: "" } })~");
    editor.attach();
    HintWindow& hint = *editor.hintWindow;
    editor.window.mouseMove(10, 10);
    editor.window.advance(999);
    EXPECT_FALSE(hint.showing());
    editor.window.advance(1);
    ASSERT_TRUE(hint.showing());
    EXPECT_EQ(hint.text(), "Delay 250 ms (100%)");
    WindowDouble* popup = editor.window.topHelper();
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->screenX(), 10);
    EXPECT_EQ(popup->screenY(), 32);
    EXPECT_EQ(popup->width(), hint.width());
    EXPECT_EQ(popup->height(), 16);
    // Leaving the view hides its hint; the next one waits its delay again.
    editor.window.mouseMove(110, 10);
    EXPECT_FALSE(hint.showing());
    editor.window.advance(1000);
    ASSERT_TRUE(hint.showing());
    EXPECT_EQ(hint.text(), "Time knob");
    EXPECT_EQ(hint.owner(), &editor.probe(1));
    // A hint with a variable follows it at refresh.
    editor.host.variables["name"] = "Feedback";
    editor.root->refresh();
    EXPECT_EQ(hint.text(), "Feedback knob");
    editor.window.paintInvalid();
    tw::test::savePicture("cushy-hint.png", editor.window.screenshot());
    // An empty hint hides any hint; leaving hides the owner's; a press hides it too.
    editor.window.mouseMove(160, 10);
    EXPECT_FALSE(hint.showing());
    editor.window.mouseMove(10, 10);
    editor.window.mouseDown(10, 10);
    editor.window.advance(2000);
    EXPECT_FALSE(hint.showing());
}

TEST(Hints, OnlyWhileTheEditorIsActive) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a, hint: "A" } })~");
    editor.attach();
    editor.window.setActive(false);
    editor.window.mouseMove(10, 10);
    editor.window.advance(1500);
    EXPECT_FALSE(editor.hintWindow->showing());
}

TEST(ModalLayouts, ACushyChildShowsTheLayoutItsVariableNames) {
    Editor editor;
    editor.host.layouts["about"] = R"~(views: { { type: probe, name: about, color: white } })~";
    editor.load(R"~(views: {
      { type: probe, name: main, color: navy },
      { type: cushy, layoutVariable: "modalLayout" } })~");
    editor.attach();
    editor.root->refresh();
    auto& modal = static_cast<CushyView&>(*editor.root->children().back());
    EXPECT_TRUE(modal.children().empty());
    editor.host.variables["modalLayout"] = "about";
    editor.root->refresh();
    EXPECT_EQ(modal.currentLayout(), "about");
    ASSERT_EQ(modal.children().size(), 1u);
    EXPECT_EQ(modal.hintWindow(), editor.hintWindow);
    // Being last it takes the press; the main view underneath still refreshes.
    editor.window.mouseDown(5, 5);
    EXPECT_EQ(take(editor.log), (Log{"about down 5,5"}));
    const int before = editor.probe(0).refreshes;
    editor.root->refresh();
    EXPECT_EQ(editor.probe(0).refreshes, before + 1);
    editor.host.variables["modalLayout"] = "";
    editor.root->refresh();
    EXPECT_TRUE(modal.children().empty());
    editor.window.mouseDown(5, 5);
    EXPECT_EQ(take(editor.log), (Log{"main down 5,5"}));
    // A layout that fails to load is shown as an error.
    editor.host.variables["modalLayout"] = "missing";
    editor.root->refresh();
    EXPECT_TRUE(editor.host.errors.empty());   // shown after the refresh, not inside it
    editor.window.advance(0);
    EXPECT_EQ(editor.host.errors, (std::vector<std::string>{"Resource not found: missing"}));
}

TEST(ModalLayouts, SettingTheVariableFromInsideTheLayoutDestroysItSafely) {
    Editor editor;
    editor.host.layouts["about"] = R"~(views: { { type: probe, name: about } }
      autoexecs: { { action: "set", params: "{ modalLayout, \"\" }", delay: 0.05 } })~";
    editor.load(R"~(views: { { type: cushy, layoutVariable: modalLayout } })~");
    editor.host.variables["modalLayout"] = "about";
    editor.attach();
    editor.root->refresh();
    auto& modal = static_cast<CushyView&>(*editor.root->children().back());
    ASSERT_EQ(modal.children().size(), 1u);
    std::weak_ptr<View> about = modal.children()[0];
    editor.probes.clear();
    // The autoexec of the modal layout empties the variable; the update that follows
    // destroys the layout that ran it, after the action has returned.
    editor.window.advance(50);
    EXPECT_TRUE(modal.children().empty());
    EXPECT_TRUE(about.expired());
    EXPECT_TRUE(editor.host.errors.empty());
    // And directly, from inside a view's own action.
    editor.host.variables["modalLayout"] = "about";
    editor.root->refresh();
    modal.runAction("batch", "{ { set, { modalLayout, \"\" } }, { reload } }");
    editor.host.update(modal);
    EXPECT_TRUE(modal.children().empty());
}

TEST(Lifecycle, SetWindowAndDisposeOrders) {
    Editor editor;
    editor.load(R"~(views: { { type: box, views: { { type: probe, name: a, autoRefresh: 10, hint: "[var]x[/var]" } } } })~");
    EXPECT_EQ(editor.probe(0).window(), nullptr);
    editor.attach();
    EXPECT_EQ(editor.probe(0).window(), &editor.window);
    EXPECT_EQ(editor.root->refresherCount(), 1u);
    EXPECT_EQ(editor.root->watchedHints(), 1u);
    // Removing the box unregisters what was inside it.
    editor.root->removeAllChildren();
    EXPECT_EQ(editor.root->refresherCount(), 0u);
    EXPECT_EQ(editor.root->watchedHints(), 0u);
    EXPECT_EQ(editor.probe(0).window(), nullptr);
    editor.window.advance(100);
    EXPECT_EQ(editor.probe(0).refreshes, 0);
    editor.load(R"~(views: { { type: probe, name: b } })~");
    editor.root->dispose();
    EXPECT_EQ(editor.root->window(), nullptr);
    EXPECT_TRUE(editor.root->children().empty());
    EXPECT_EQ(editor.root->hintWindow(), nullptr);
}

TEST(Lifecycle, RemovedChildrenInvalidateTheirFrames) {
    Editor editor;
    editor.load(R"~(views: { { type: probe, name: a, bounds: { 5, 6, 7, 8 } } })~");
    editor.attach();
    editor.window.clearInvalidations();
    editor.root->removeAllChildren();
    EXPECT_EQ(editor.window.invalidations(), (std::vector<IntRect>{{5, 6, 7, 8}}));
    editor.window.clearInvalidations();
    editor.load(R"~(views: { { type: probe, name: b, bounds: { 1, 2, 3, 4 } } })~");
    EXPECT_EQ(editor.window.invalidations(), (std::vector<IntRect>{{1, 2, 3, 4}}));
    // A view moved repaints where it was and where it is.
    editor.window.clearInvalidations();
    editor.probe(1).moveTo({10, 20});
    EXPECT_EQ(editor.window.invalidations(), (std::vector<IntRect>{{1, 2, 3, 4}, {10, 20, 3, 4}}));
}

TEST(Lifecycle, TheDebugOverlayRecordsEditKeys) {
    Editor editor;
    auto overlay = std::make_shared<DebugOverlay>();
    editor.root->setDebugOverlay(overlay);
    editor.load(R"~(views: { { type: probe, name: a, bounds: { 1, 2, 3, 4 }, edit: "knob 1" }, { type: probe } })~");
    ASSERT_EQ(overlay->entries().size(), 1u);
    EXPECT_EQ(overlay->entries()[0].edit, "\"knob 1\"");
    EXPECT_EQ(overlay->entries()[0].rect, (IntRect{1, 2, 3, 4}));
    EXPECT_EQ(overlay->size(), (IntRect{0, 0, 32000, 32000}));
}

TEST(WindowClient, TilesPaintWhatTheWholeWindowPaints) {
    Editor editor({0, 0, 60, 40});
    editor.load(R"~(views: {
      { type: rectangle, bounds: { 5, 5, 50, 30 }, fill: teal, frame: { color: white, stroke: 1.5 }, rounded: 30 },
      { type: probe, name: p, bounds: { 20, 10, 10, 30 }, color: { 255, 138, 101 } } })~");
    editor.attach();
    editor.window.paintAll();
    const Raster32& whole = editor.window.canvas();
    // The same picture, painted as four tiles into a buffer of its own.
    Raster32 tiled(IntRect{0, 0, 60, 40}, true);
    for (auto [left, top] : {std::pair{0, 0}, {33, 0}, {0, 17}, {33, 17}}) {
        const std::int32_t width = left == 0 ? 33 : 27, height = top == 0 ? 17 : 23;
        editor.client.paint(PixelTile{tiled.at(left, top), tiled.stride(), left, top, width, height});
    }
    for (std::int32_t y = 0; y < 40; ++y)
        for (std::int32_t x = 0; x < 60; ++x) ASSERT_EQ(*tiled.at(x, y), *whole.at(x, y)) << x << "," << y;
}
