// The controls' tests in one file, longer than most: knobs, sliders, buttons, clusters and
// animations share the layout fixture and the gestures each case drives.
#include "cushy/AnimationView.h"
#include "cushy/ButtonView.h"
#include "cushy/ClickMask.h"
#include "cushy/ClickView.h"
#include "cushy/GroupView.h"
#include "cushy/KnobView.h"
#include "cushy/PagedView.h"
#include "cushy/RasterView.h"
#include "cushy/SliderView.h"

#include "cushy/Editor.h"
#include "graphics/PlainImage.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

using Log = std::vector<std::string>;

Log take(Log& log) {
    Log out;
    out.swap(log);
    return out;
}

template <class T>
T& child(Editor& editor, std::size_t i) {
    return dynamic_cast<T&>(*editor.root->children().at(i));
}

// A film of `frames` frames of 10 by 10, frame i filled with the grey level 10 * (i + 1).
std::shared_ptr<Image> greyFilm(std::int32_t frames) {
    Raster32 raster(IntRect{0, 0, 10, 10 * frames}, true);
    for (std::int32_t y = 0; y < 10 * frames; ++y) {
        const std::uint32_t g = std::uint32_t(10 * (y / 10 + 1));
        for (std::int32_t x = 0; x < 10; ++x) *raster.at(x, y) = 0xFF000000u | g << 16 | g << 8 | g;
    }
    return std::make_shared<RasterImage>(raster);
}

// A knob of 40 by 40 at 10, 10, its variable "v", with the extra keys given.
void loadKnob(Editor& editor, const std::string& keys, const std::string& value = "0.5") {
    editor.host.variables["v"] = value;
    editor.load("views: { { type: knob, bounds: { 10, 10, 40, 40 }, variable: v" + (keys.empty() ? "" : ", " + keys) +
                " } }");
    editor.attach();
    editor.root->refresh();
}

}  // namespace

// ---- masks and action entries

TEST(ClickMask, NamesJoinedByPlusAndTheirFault) {
    EXPECT_EQ(parseClickMask("down+shift"), clickMask::down | clickMask::shift);
    EXPECT_EQ(parseClickMask("click"), clickMask::click);
    EXPECT_EQ(parseClickMask("windows+mac+context"), clickMask::windows | clickMask::mac | clickMask::context);
    EXPECT_EQ(formatFailure([] { parseClickMask("down+middle"); }), "Invalid click mask constant: \"middle\"");
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: click, action: a, mask: \"clack\" } }"); }),
              "Invalid click mask constant: \"clack\"");
}

TEST(ClickMask, TheLastMatchingEntryWins) {
    const std::vector<ActionEntry> entries =
        readActionEntries(parseMap(R"(actions: { { click, any }, { "click+right", right }, { "click+shift", shifted } })"));
    const std::uint32_t leftClick = clickMask::click | clickMask::left | clickMask::windows;
    EXPECT_EQ(findActionEntry(entries, leftClick)->action, "any");
    EXPECT_EQ(findActionEntry(entries, leftClick | clickMask::shift)->action, "shifted");
    EXPECT_EQ(findActionEntry(entries, clickMask::click | clickMask::right | clickMask::shift)->action, "shifted");
    EXPECT_EQ(findActionEntry(entries, clickMask::click | clickMask::right)->action, "right");
    EXPECT_EQ(findActionEntry(entries, clickMask::release), nullptr);
}

// ---- click

TEST(Click, RunsAtThePressAndStopsItUnlessThru) {
    Editor editor;
    editor.load(R"(views: {
      { type: probe, name: below, bounds: { 0, 0, 100, 100 } },
      { type: click, bounds: { 0, 0, 50, 50 }, action: a, params: one },
      { type: click, bounds: { 50, 0, 50, 50 }, action: b, thru: true },
      { type: click, bounds: { 0, 50, 50, 50 }, action: c, mask: "click+right" } })");
    editor.attach();
    editor.window.mouseDown(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"a one"}));
    EXPECT_TRUE(take(editor.log).empty());
    EXPECT_EQ(editor.root->lastClick().x, 10);
    editor.window.mouseUp(10, 10);
    editor.window.mouseDown(60, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"b "}));
    EXPECT_EQ(take(editor.log), (Log{"below down 60,10"}));
    // A left press finds no entry of the right button and goes on below.
    editor.window.mouseDown(10, 60);
    EXPECT_TRUE(editor.host.performed.empty());
    EXPECT_EQ(take(editor.log), (Log{"below down 10,60"}));
    editor.window.mouseDown(10, 60, rightButton);
    EXPECT_EQ(take(editor.host.performed), (Log{"c "}));
}

TEST(Click, WithoutAnEnabledEntryItLeavesTheCursorToWhatIsBelow) {
    Editor editor;
    editor.load(R"(views: {
      { type: probe, name: below, bounds: { 0, 0, 100, 100 }, cursor: iBeam },
      { type: click, bounds: { 0, 0, 50, 50 }, action: disabled, cursor: hand } })");
    editor.attach();
    editor.root->refresh();
    EXPECT_FALSE(child<ClickView>(editor, 1).enabled());
    editor.window.mouseMove(10, 10);
    EXPECT_EQ(editor.window.cursor(), Cursor::iBeam);
    editor.window.mouseDown(10, 10);
    EXPECT_TRUE(editor.host.performed.empty());
}

// ---- hover

TEST(Hover, EnterLeaveAndItsVariables) {
    Editor editor;
    editor.load(R"(views: { { type: hover, bounds: { 0, 0, 50, 50 }, enterAction: in, enterParams: "x",
        leaveAction: out, variable: status, value: "Delay time", variables: { { other, "1" } } } })");
    editor.attach();
    editor.window.mouseMove(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"in x"}));
    EXPECT_EQ(editor.host.variables["status"], "Delay time");
    EXPECT_EQ(editor.host.variables["other"], "1");
    editor.window.mouseMove(80, 80);
    EXPECT_EQ(take(editor.host.performed), (Log{"out "}));
}

// ---- button

namespace {

const char* phases = R"(views: { { type: button, bounds: { 10, 10, 40, 20 },
    actions: { { press, pressed }, { down, down }, { up, up }, { release, released }, { click, clicked } } } })";

}  // namespace

TEST(Button, PhasesOfAPressInOrder) {
    Editor editor;
    editor.load(phases);
    editor.attach();
    editor.window.mouseDown(20, 20);
    EXPECT_EQ(take(editor.host.performed), (Log{"pressed ", "down "}));
    EXPECT_TRUE(child<ButtonView>(editor, 0).pressed());
    editor.window.mouseUp(20, 20);
    EXPECT_EQ(take(editor.host.performed), (Log{"up ", "released ", "clicked "}));
    EXPECT_FALSE(editor.window.captured());
}

TEST(Button, ReleasedOutsideRunsUpDuringTheDragAndNoClick) {
    Editor editor;
    editor.load(phases);
    editor.attach();
    editor.window.mouseDown(20, 20);
    take(editor.host.performed);
    editor.window.mouseMove(100, 80, 1);
    EXPECT_EQ(take(editor.host.performed), (Log{"up "}));
    EXPECT_FALSE(child<ButtonView>(editor, 0).pressed());
    editor.window.mouseMove(30, 20, 1);
    EXPECT_EQ(take(editor.host.performed), (Log{"down "}));
    editor.window.mouseMove(100, 80, 1);
    take(editor.host.performed);
    editor.window.mouseUp(100, 80);
    EXPECT_EQ(take(editor.host.performed), (Log{"released "}));
}

TEST(Button, CaptureLostEndsThePressWithoutTheClick) {
    Editor editor;
    editor.load(phases);
    editor.attach();
    editor.window.mouseDown(20, 20);
    take(editor.host.performed);
    editor.client.captureLost();
    EXPECT_EQ(take(editor.host.performed), (Log{"up ", "released "}));
    EXPECT_FALSE(child<ButtonView>(editor, 0).pressed());
}

TEST(Button, AStateChangeDuringAnEntryIsTakenUpWhenItReturns) {
    Editor editor;
    editor.load(R"(views: { { type: button, bounds: { 10, 10, 40, 20 },
        actions: { { down, popup, "items: { { One, one } }" }, { up, up }, { click, clicked } } } })");
    editor.attach();
    // While the menu of the down entry is open, the pointer leaves the button.
    bool moved = false;
    editor.window.user = [&](WindowDouble& window) {
        if (!moved) {
            moved = true;
            editor.window.mouseMove(150, 90, 1);
            EXPECT_TRUE(child<ButtonView>(editor, 0).pressed());
        }
        window.topHelper()->key(Key::escape);
    };
    editor.window.mouseDown(20, 20);
    EXPECT_TRUE(moved);
    EXPECT_FALSE(child<ButtonView>(editor, 0).pressed());
    EXPECT_EQ(editor.host.performed, (Log{"up "}));
    editor.window.mouseUp(150, 90);
    EXPECT_EQ(editor.host.performed, (Log{"up "}));
}

TEST(Button, PressMaskFiresOnTheWayDownTheDefaultOnlyOnAReleaseInside) {
    Editor editor;
    editor.load(R"(views: {
      { type: button, bounds: { 0, 0, 40, 20 }, action: early, mask: press },
      { type: button, bounds: { 50, 0, 40, 20 }, action: late } })");
    editor.attach();
    editor.window.mouseDown(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"early "}));
    editor.window.mouseUp(10, 10);
    EXPECT_TRUE(editor.host.performed.empty());
    editor.window.mouseDown(60, 10);
    EXPECT_TRUE(editor.host.performed.empty());
    editor.window.mouseUp(60, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"late "}));
}

TEST(Button, ShiftedDownEntryHoldsBackTheMenuAndTheClickRunsTheShiftEntry) {
    Editor editor;
    editor.load(R"(views: { { type: button, bounds: { 0, 0, 40, 20 },
        actions: { { "shift+click", repeatLast }, { down, menu }, { "down+shift", nothing } } } })");
    editor.attach();
    editor.window.setModifiers(true, false, false);
    editor.window.mouseDown(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"nothing "}));
    editor.window.mouseUp(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"repeatLast "}));
    editor.window.setModifiers(false, false, false);
    editor.window.mouseDown(10, 10);
    EXPECT_EQ(take(editor.host.performed), (Log{"menu "}));
    // The stored click point is the button's centre, wherever it was hit.
    EXPECT_EQ(editor.root->lastClick().x, 20);
    EXPECT_EQ(editor.root->lastClick().y, 10);
}

TEST(Button, LooksInheritAndFollowTheState) {
    Editor editor;
    editor.load(R"(views: {
      { type: button, bounds: { 0, 0, 40, 20 }, action: checked,
        standard: { fill: red, rect: { 2, 2, 36, 16 } }, down: { fill: blue }, checked: { fill: lime },
        checkedDown: { rect: { 4, 4, 32, 12 } } },
      { type: button, bounds: { 50, 0, 40, 20 }, action: disabled, standard: { fill: red }, disabled: { fill: gray } } })");
    editor.attach();
    editor.root->refresh();
    ButtonView& on = child<ButtonView>(editor, 0);
    EXPECT_TRUE(on.checked());
    EXPECT_EQ(on.currentLook(), ButtonView::checkedLook);
    EXPECT_EQ(on.look(ButtonView::downLook).rect, (IntRect{2, 2, 36, 16}));
    // checkedDown starts from checked: its fill stays, its rect is its own.
    EXPECT_EQ(on.look(ButtonView::checkedDownLook).fill, on.look(ButtonView::checkedLook).fill);
    EXPECT_EQ(on.look(ButtonView::checkedDownLook).rect, (IntRect{4, 4, 32, 12}));
    // Outside `rect` the press goes on below.
    editor.window.mouseDown(1, 1);
    EXPECT_FALSE(on.pressed());
    editor.window.mouseDown(20, 10);
    EXPECT_EQ(on.currentLook(), ButtonView::checkedDownLook);
    editor.window.paintAll();
    EXPECT_EQ(*editor.window.canvas().at(20, 10), 0xFF00FF00u);
    editor.window.mouseUp(20, 10);
    ButtonView& off = child<ButtonView>(editor, 1);
    EXPECT_FALSE(off.enabled());
    EXPECT_EQ(off.currentLook(), ButtonView::disabledLook);
    editor.window.mouseDown(60, 10);
    EXPECT_FALSE(off.pressed());
}

// ---- knob

TEST(Knob, VerticalDragIsOneGestureOfContinuousWrites) {
    Editor editor;
    loadKnob(editor, "", "0.5");
    editor.host.writes.clear();
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 10, 1);
    editor.window.mouseUp(30, 10);
    EXPECT_EQ(editor.host.writes, (Log{"begin v", "v=0.6 continuous", "end v"}));
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), float(0.6));
}

TEST(Knob, ItsOwnRectangleIsAllThatRepaints) {
    Editor editor;
    loadKnob(editor, "cap: { color: gray }, dial: white");
    // The press gives the knob the keyboard focus, whose ring is drawn around it once;
    // the drag then repaints the knob alone.
    editor.window.mouseDown(30, 30);
    editor.window.clearInvalidations();
    editor.window.mouseMove(30, 28, 1);
    EXPECT_EQ(editor.window.invalidations(), (std::vector<IntRect>{{10, 10, 40, 40}}));
    editor.window.mouseUp(30, 28);
}

TEST(Knob, HorizontalZeroIgnoresSidewaysTravel) {
    Editor editor;
    loadKnob(editor, "transmission: { horizontal: 0 }");
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(90, 30, 1);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0.5);
    editor.window.mouseMove(90, 10, 1);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0.6);
    editor.window.mouseUp(90, 10);
}

TEST(Knob, SteppedTransmissionMakesASelector) {
    Editor editor;
    loadKnob(editor, "transmission: { resolution: 20, vertical: 60 }", "0");
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 21, 1);   // 9 pixels: less than half a step
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0);
    editor.window.mouseMove(30, 19, 1);   // 11 pixels: one step
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 1.0 / 3);
    editor.window.mouseUp(30, 19);
}

TEST(Knob, ControlClickSetsTheDefaultAndTheValueDoesNotFollow) {
    Editor editor;
    loadKnob(editor, "default: 0.25", "0.8");
    editor.host.writes.clear();
    editor.window.setModifiers(false, true, false);
    editor.window.mouseDown(30, 30);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0.25);
    editor.window.setModifiers(false, false, false);
    editor.window.mouseMove(30, 0, 1);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0.25);
    editor.window.mouseUp(30, 0);
    EXPECT_EQ(editor.host.writes, (Log{"begin v", "v=0.25 continuous", "end v"}));
}

TEST(Knob, ShiftPressedMidDragDoesNotMoveTheValue) {
    Editor editor;
    loadKnob(editor, "");
    KnobView& knob = child<KnobView>(editor, 0);
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 10, 1);
    EXPECT_DOUBLE_EQ(knob.value(), 0.6);
    editor.window.setModifiers(true, false, false);
    editor.window.mouseMove(30, 10, 1);
    EXPECT_DOUBLE_EQ(knob.value(), 0.6);
    editor.window.mouseMove(30, 0, 1);
    EXPECT_NEAR(knob.value(), 0.605, 1e-12);
    editor.window.setModifiers(false, false, false);
    editor.window.mouseMove(30, 0, 1);
    EXPECT_NEAR(knob.value(), 0.605, 1e-12);
    editor.window.mouseUp(30, 0);
}

TEST(Knob, AltTurnsToThePointersAngle) {
    Editor editor;
    loadKnob(editor, "", "0");
    KnobView& knob = child<KnobView>(editor, 0);
    editor.window.setModifiers(false, false, true);
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 5, 1);   // straight up: the middle of the sweep
    EXPECT_NEAR(knob.value(), 0.5, 1e-9);
    editor.window.mouseMove(55, 30, 1);  // 90 degrees: 225 of 270
    EXPECT_NEAR(knob.value(), 225.0 / 270, 1e-9);
    // Straight down is the middle of the gap: either side of it goes to an end.
    editor.window.mouseMove(29, 60, 1);
    EXPECT_DOUBLE_EQ(knob.value(), 0);
    editor.window.mouseMove(31, 60, 1);
    EXPECT_DOUBLE_EQ(knob.value(), 1);
    editor.window.mouseUp(31, 60);
}

TEST(Knob, SnapHoldsForAStretchFromEitherSide) {
    Editor editor;
    loadKnob(editor, "default: 0.5, snap: true", "0.375");
    KnobView& knob = child<KnobView>(editor, 0);
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 5, 1);    // 0.375 + 0.125 reaches the point
    EXPECT_DOUBLE_EQ(knob.value(), 0.5);
    editor.window.mouseMove(30, 0, 1);    // 0.525 less two times eight pixels' worth: still on it
    EXPECT_DOUBLE_EQ(knob.value(), 0.5);
    editor.window.mouseMove(30, -30, 1);  // 0.675 - 0.08
    EXPECT_NEAR(knob.value(), 0.595, 1e-12);
    editor.window.mouseUp(30, -30);
    // Starting on the point, eight pixels either way stay on it.
    editor.host.variables["v"] = "0.5";
    editor.root->refresh();
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 38, 1);
    EXPECT_DOUBLE_EQ(knob.value(), 0.5);
    editor.window.mouseMove(30, 48, 1);
    EXPECT_NEAR(knob.value(), 0.45, 1e-12);
    editor.window.mouseUp(30, 48);
}

TEST(Knob, HostValueOutsideTheRangeIsClampedAndAFloat) {
    Editor editor;
    loadKnob(editor, "range: { -1, 1 }", "5");
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 1);
    editor.host.variables["v"] = "-0.1";
    editor.root->refresh();
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), double(-0.1f));
    editor.host.variables["v"] = "not a number";
    editor.root->refresh();
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0);
}

TEST(Knob, AChangingVariableDoesNotMoveAKnobUnderThePointer) {
    Editor editor;
    loadKnob(editor, "");
    KnobView& knob = child<KnobView>(editor, 0);
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 10, 1);
    editor.host.variables["v"] = "0.9";
    editor.root->refresh();
    EXPECT_DOUBLE_EQ(knob.value(), 0.6);
    editor.window.mouseUp(30, 10);
    // The release syncs at once: the model's word stands.
    EXPECT_DOUBLE_EQ(knob.value(), double(0.9f));
}

TEST(Knob, ReadOnlyTakesNoMouse) {
    Editor editor;
    editor.host.readOnly.insert("v");
    loadKnob(editor, "");
    editor.window.mouseDown(30, 30);
    editor.window.mouseMove(30, 10, 1);
    editor.window.mouseWheel(30, 30, 1);
    editor.window.mouseUp(30, 10);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 0.5);
    EXPECT_TRUE(editor.host.writes.empty());
}

TEST(Knob, WheelNotchesAreOneGesture) {
    Editor editor;
    loadKnob(editor, "");
    editor.host.writes.clear();
    editor.window.mouseWheel(30, 30, 1);
    editor.window.advance(100);
    editor.window.mouseWheel(30, 30, 1);
    EXPECT_EQ(editor.host.writes, (Log{"begin v", "v=0.54 continuous", "v=0.58 continuous"}));
    editor.window.advance(WheelGesture::idleMilliseconds - 1);
    EXPECT_EQ(editor.host.writes.size(), 3u);
    editor.window.advance(1);
    EXPECT_EQ(editor.host.writes.back(), "end v");
    // Shift gives the fine step, downwards too.
    editor.host.writes.clear();
    editor.host.variables["v"] = "0.5";
    editor.root->refresh();
    editor.window.setModifiers(true, false, false);
    editor.window.mouseWheel(30, 30, -1);
    editor.window.advance(WheelGesture::idleMilliseconds);
    EXPECT_EQ(editor.host.writes, (Log{"begin v", "v=0.496 continuous", "end v"}));
}

TEST(Knob, WheelOfASelectorTurnsOneStep) {
    Editor editor;
    loadKnob(editor, "transmission: { resolution: 20, vertical: 60 }", "0");
    editor.window.mouseWheel(30, 30, 1);
    EXPECT_DOUBLE_EQ(child<KnobView>(editor, 0).value(), 1.0 / 3);
}

TEST(Knob, FilmFrameFollowsTheValue) {
    Editor editor;
    editor.host.images["grey"] = greyFilm(5);
    loadKnob(editor, "film: { image: grey, frames: 5 }", "0.5");
    KnobView& knob = child<KnobView>(editor, 0);
    EXPECT_EQ(knob.frameIndex(), 2);
    editor.window.paintAll();
    EXPECT_EQ(*editor.window.canvas().at(12, 12), 0xFF1E1E1Eu);
    editor.host.variables["v"] = "1";
    editor.root->refresh();
    EXPECT_EQ(knob.frameIndex(), 4);
    editor.host.variables["v"] = "0.12";
    editor.root->refresh();
    EXPECT_EQ(knob.frameIndex(), 0);
    // With in-between frames the index counts 256 for each frame.
    Editor smooth;
    smooth.host.images["grey"] = greyFilm(5);
    loadKnob(smooth, "film: { image: grey, frames: 5, interpolate: true }", "0.5");
    EXPECT_EQ(child<KnobView>(smooth, 0).frameIndex(), 512);
}

TEST(Knob, CapTakesPressesOnlyInsideItsDisc) {
    Editor editor;
    loadKnob(editor, "cap: { size: 20 }");
    editor.window.mouseDown(12, 12);
    EXPECT_FALSE(editor.window.captured());
    editor.window.mouseDown(30, 30);
    EXPECT_TRUE(editor.window.captured());
    editor.window.mouseUp(30, 30);
}

// ---- animation, raster

TEST(Animation, FrameFromTheCurvedValueRepaintsOnlyOnAChange) {
    Editor editor;
    editor.host.images["grey"] = greyFilm(4);
    editor.host.variables["level"] = "0.5";
    editor.load(R"(views: {
      { type: animation, bounds: { 0, 0, 10, 10 }, variable: level, film: { image: grey, frames: 4 } },
      { type: animation, bounds: { 20, 0, 10, 10 }, variable: level, film: { image: grey, frames: 4 }, curve: 0.8,
        range: { 0, 2 } } })");
    editor.attach();
    editor.root->refresh();
    EXPECT_EQ(child<AnimationView>(editor, 0).frame(), 2);
    // 0.25 bent by 0.8: 0.2 / 0.375, about 0.53, frame 2.
    EXPECT_EQ(child<AnimationView>(editor, 1).frame(), 2);
    editor.window.clearInvalidations();
    editor.host.variables["level"] = "0.55";
    editor.root->refresh();
    EXPECT_TRUE(editor.window.invalidations().empty());
    editor.host.variables["level"] = "7";
    editor.root->refresh();
    EXPECT_EQ(child<AnimationView>(editor, 0).frame(), 3);
    EXPECT_EQ(curveFactor(0.25, 0.5), 0.25);
}

TEST(Raster, OpacityZeroDrawsNothingAndKeepsItsPlace) {
    Editor editor;
    editor.host.images["grey"] = greyFilm(1);
    editor.load(R"(views: {
      { type: raster, bounds: { 0, 0, 10, 10 }, image: grey },
      { type: raster, bounds: { 20, 0, 10, 10 }, image: grey, opacity: 0 },
      { type: raster, bounds: { 40, 0, 10, 10 }, image: grey, opacity: 50 } })");
    editor.attach();
    editor.window.paintAll();
    EXPECT_EQ(editor.root->children().size(), 3u);
    EXPECT_EQ(child<RasterView>(editor, 1).opacity(), 0);
    EXPECT_EQ(child<RasterView>(editor, 2).opacity(), 128);
    EXPECT_EQ(*editor.window.canvas().at(5, 5), 0xFF0A0A0Au);
    EXPECT_EQ(*editor.window.canvas().at(25, 5), 0xFF000000u);
    EXPECT_EQ(*editor.window.canvas().at(45, 5), 0xFF050505u);
}

// ---- group, paged

TEST(Group, VisibilityOffsetAndVarExpansion) {
    Editor editor;
    editor.host.variables["n"] = "1";
    editor.load(R"(views: {
      { type: group, visibility: shown, offset: { dx, dy }, views: { { type: probe, name: a, bounds: { 10, 10, 10, 10 } } } },
      { type: group, varExpansion: true, views: { { type: probe, name: "b[var]n[/var]", bounds: { 50, 0, 10, 10 } } } } })");
    editor.attach();
    editor.root->refresh();
    GroupView& group = child<GroupView>(editor, 0);
    EXPECT_FALSE(group.childrenShown());
    EXPECT_FALSE(group.children().at(0)->visible());
    editor.host.variables["shown"] = "true";
    editor.host.variables["dx"] = "5";
    editor.root->refresh();
    EXPECT_TRUE(group.children().at(0)->visible());
    EXPECT_EQ(group.children().at(0)->frame().left, 15);
    editor.host.variables["dx"] = "2";
    editor.host.variables["dy"] = "-3";
    editor.root->refresh();
    EXPECT_EQ(group.children().at(0)->frame().left, 12);
    EXPECT_EQ(group.children().at(0)->frame().top, 7);
    // The hidden child that had the mouse is told it left.
    editor.window.mouseMove(15, 10);
    take(editor.log);
    editor.host.variables["shown"] = "false";
    editor.root->refresh();
    EXPECT_EQ(take(editor.log), (Log{"a leave"}));

    GroupView& dynamic = child<GroupView>(editor, 1);
    const View* first = dynamic.children().at(0).get();
    editor.root->refresh();
    EXPECT_EQ(dynamic.children().at(0).get(), first);
    editor.host.variables["n"] = "2";
    editor.root->refresh();
    EXPECT_NE(dynamic.children().at(0).get(), first);
    EXPECT_EQ(dynamic.children().size(), 1u);
}

TEST(Group, OffsetMustNameTwoVariables) {
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: group, offset: { dx } } }"); }),
              "Invalid offset: \"{ dx }\"");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: group, offset: dx } }"); }), "Invalid offset: \"dx\"");
}

TEST(Paged, AllPagesBuiltOneShownAnEmptyVariableShowsTheEmptyLabel) {
    Editor editor;
    editor.load(R"(views: { { type: paged, index: page, pages: {
        "": { { type: probe, name: none, bounds: { 0, 0, 10, 10 } } },
        sync: { { type: probe, name: s1, bounds: { 0, 0, 10, 10 } }, { type: probe, name: s2, bounds: { 10, 0, 10, 10 } } },
        free: { { type: probe, name: f, bounds: { 0, 0, 10, 10 } } } } },
      { type: paged, index: flag, pages: { true: { { type: probe, name: t, bounds: { 30, 0, 10, 10 } } } } } })");
    editor.attach();
    ASSERT_EQ(editor.probes.size(), 5u);
    editor.root->refresh();
    const auto shown = [&] {
        std::string out;
        for (auto& p : editor.probes)
            if (p->visible()) out += std::string(out.empty() ? "" : " ") + std::to_string(&p - &editor.probes[0]);
        return out;
    };
    EXPECT_EQ(shown(), "0");
    editor.host.variables["page"] = "sync";
    editor.host.variables["flag"] = "yes";
    editor.root->refresh();
    EXPECT_EQ(shown(), "2 3");
    editor.host.variables["flag"] = "true";
    editor.host.variables["page"] = "other";
    editor.root->refresh();
    EXPECT_EQ(shown(), "4");
    // Hidden or not, every child is refreshed.
    EXPECT_EQ(editor.probe(1).refreshes, 3);
}

// ---- slider

TEST(Slider, DragsAlongItsSlitFinerWithShift) {
    Editor editor;
    editor.host.variables["s"] = "0.5";
    editor.load(R"(views: { { type: slider, bounds: { 0, 0, 120, 20 }, variable: s,
        slit: { start: { 10, 10 }, end: { 110, 10 }, thickness: 2, color: gray }, cap: { color: white, rounded: true } } })");
    editor.attach();
    editor.root->refresh();
    SliderView& slider = child<SliderView>(editor, 0);
    EXPECT_DOUBLE_EQ(slider.pointAt(slider.value()).x, 60);
    // Pressed away from the cap: it doesn't jump, it follows the travel.
    editor.window.mouseDown(30, 10);
    EXPECT_DOUBLE_EQ(slider.value(), 0.5);
    editor.window.mouseMove(50, 14, 1);
    EXPECT_NEAR(slider.value(), 0.7, 1e-12);
    editor.window.setModifiers(true, false, false);
    editor.window.mouseMove(60, 10, 1);
    EXPECT_NEAR(slider.value(), 0.7, 1e-12);
    editor.window.mouseMove(80, 10, 1);
    EXPECT_NEAR(slider.value(), 0.72, 1e-12);
    editor.window.mouseUp(80, 10);
    EXPECT_EQ(editor.host.writes.front(), "begin s");
    EXPECT_EQ(editor.host.writes.back(), "end s");
}

TEST(Slider, AnArcSlitAndItsFaults) {
    Editor editor;
    editor.host.variables["s"] = "0";
    editor.load(R"(views: { { type: slider, bounds: { 0, 0, 100, 100 }, variable: s,
        slit: { center: { 50, 50 }, radius: 40, sweep: { -90, 180 } } } })");
    editor.attach();
    editor.root->refresh();
    SliderView& slider = child<SliderView>(editor, 0);
    EXPECT_NEAR(slider.pointAt(0).x, 10, 1e-9);
    EXPECT_NEAR(slider.pointAt(0.5).y, 10, 1e-9);
    editor.window.mouseDown(10, 50);
    editor.window.mouseMove(50, 10, 1);
    EXPECT_NEAR(slider.value(), 0.5, 0.02);
    editor.window.mouseUp(50, 10);
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: slider, cap: { rounded: { 3, 3 } } } }"); }),
              "Unsupported cap roundness: \"{ 3, 3 }\"");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: slider, cap: { rounded: 120 } } }"); }),
              "Unsupported cap roundness: \"120\"");
}
