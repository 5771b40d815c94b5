#include "cushy/Transition.h"
#include "cushy/TransitionLayout.h"
#include "cushy/TransformView.h"

#include "cushy/Editor.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

// A root with a "cushy" view with transitions watching `modal`, and two layouts to show.
struct Modal {
    explicit Modal(const std::string& transitions) {
        editor.host.layouts["a"] = "transitions: " + transitions + ", views: { { type: probe, name: a } }";
        editor.host.layouts["b"] = "transitions: " + transitions + ", views: { { type: probe, name: b } }";
        editor.load("views: { { type: cushy, layoutVariable: modal, transitions: true } }");
        editor.attach();
    }
    TransformView& frame() { return dynamic_cast<TransformView&>(*editor.root->children().at(0)); }
    TransitionLayout& layout() { return dynamic_cast<TransitionLayout&>(*frame().children().at(0)); }
    void set(const std::string& name) {
        editor.host.variables["modal"] = name;
        editor.root->refresh();
    }
    // Frames until the transition stops, each one period apart.
    int runOut(std::uint32_t period) {
        int frames = 0;
        while (layout().running() && frames < 1000) {
            editor.window.advance(period);
            ++frames;
        }
        return frames;
    }
    Editor editor;
};

}  // namespace

TEST(Transition, RecordsFromTheBlock) {
    const Transitions t = readTransitions("{ open: { scale: 75%, opacity: 0%, time: 0.3, updateRate: 48 } }");
    ASSERT_TRUE(t.open);
    EXPECT_EQ(t.open->period, 21);
    EXPECT_DOUBLE_EQ(t.open->step, 0.07);
    EXPECT_DOUBLE_EQ(t.open->scale, 0.75);
    EXPECT_DOUBLE_EQ(t.open->opacity, 0);
    EXPECT_FALSE(t.close);
    // `default` is the base of every event and stands in for the missing ones, signed.
    const Transitions d = readTransitions("{ default: { time: 0.5, opacity: 20 }, close: { time: $ * 2, scale: $ + 10 } }");
    ASSERT_TRUE(d.open && d.close && d.swapIn && d.swapOut);
    EXPECT_DOUBLE_EQ(d.open->step, 0.1);
    EXPECT_DOUBLE_EQ(d.swapOut->step, -0.1);
    EXPECT_DOUBLE_EQ(d.close->step, -0.05);
    EXPECT_DOUBLE_EQ(d.close->scale, 1.1);
    EXPECT_DOUBLE_EQ(d.close->opacity, 0.2);
    // A default of time 0 is no default; an event of time 0 happens at once.
    const Transitions z = readTransitions("{ default: { time: 0 }, open: { time: 0 }, close: { rotation: 90 } }");
    EXPECT_FALSE(z.open || z.swapIn);
    ASSERT_TRUE(z.close);
    EXPECT_DOUBLE_EQ(z.close->step, -0.05);
    EXPECT_NEAR(z.close->rotation, std::acos(0.0), 1e-12);
    EXPECT_EQ(formatFailure([] { readTransitions("{ open: { time: (1 } }"); }).empty(), false);
}

TEST(Transition, OpenAtFortyEightAFrameTakesFifteenFrames) {
    Modal modal("{ open: { scale: 75%, opacity: 0%, time: 0.3, updateRate: 48 } }");
    modal.set("a");
    EXPECT_EQ(modal.layout().currentLayout(), "a");
    EXPECT_TRUE(modal.layout().running());
    EXPECT_DOUBLE_EQ(modal.layout().progress(), 0);
    EXPECT_DOUBLE_EQ(modal.frame().opacity(), 0);
    modal.editor.window.advance(21);
    EXPECT_NEAR(modal.layout().progress(), 0.07, 1e-12);
    EXPECT_NEAR(modal.frame().opacity(), 0.07, 1e-12);
    EXPECT_EQ(modal.runOut(21) + 1, 15);
    EXPECT_TRUE(modal.frame().matrix().isIdentity());
    EXPECT_DOUBLE_EQ(modal.frame().opacity(), 1);
}

TEST(Transition, TimeZeroAndNoBlockShowAtOnce) {
    Modal zero("{ open: { time: 0 } }");
    zero.set("a");
    EXPECT_FALSE(zero.layout().running());
    EXPECT_DOUBLE_EQ(zero.layout().progress(), 1);
    Modal none("{}");
    none.set("a");
    EXPECT_FALSE(none.layout().running());
    none.set("b");
    EXPECT_EQ(none.layout().currentLayout(), "b");
    none.set("");
    EXPECT_EQ(none.layout().currentLayout(), "");
}

TEST(Transition, SwapPlaysOutThenIn) {
    Modal modal("{ default: { time: 0.1, opacity: 0 } }");
    modal.set("a");
    modal.runOut(50);
    modal.set("b");
    EXPECT_EQ(modal.layout().active(), TransitionLayout::Event::swapOut);
    EXPECT_EQ(modal.layout().currentLayout(), "a");
    modal.runOut(50);
    EXPECT_EQ(modal.layout().currentLayout(), "b");
    EXPECT_EQ(modal.layout().active(), TransitionLayout::Event::swapIn);
    modal.runOut(50);
    EXPECT_DOUBLE_EQ(modal.layout().progress(), 1);
    modal.set("");
    modal.runOut(50);
    EXPECT_EQ(modal.layout().currentLayout(), "");
    EXPECT_EQ(modal.layout().watchedLayout(), "");
}

TEST(Transition, ReversalMidFlightDoesNotJump) {
    Modal modal("{ open: { time: 1, scale: 50, opacity: 0, offset: { 0, 40 }, scaleCurve: 0.8 },"
                " close: { time: 0.5, scale: 120, opacity: 0, opacityCurve: 0.3 } }");
    modal.set("a");
    for (int i = 0; i < 6; ++i) modal.editor.window.advance(50);
    const TransitionLayout::State before = modal.layout().shown();
    modal.set("");
    EXPECT_EQ(modal.layout().active(), TransitionLayout::Event::close);
    const TransitionLayout::State after = modal.layout().shown();
    EXPECT_NEAR(after.opacity, before.opacity, 1e-9);
    EXPECT_NEAR(after.scale, before.scale, 1e-9);
    EXPECT_NEAR(after.offsetY, before.offsetY, 1e-9);
    // And back again before it is gone.
    modal.editor.window.advance(50);
    const TransitionLayout::State closing = modal.layout().shown();
    modal.set("a");
    EXPECT_EQ(modal.layout().active(), TransitionLayout::Event::open);
    EXPECT_NEAR(modal.layout().shown().scale, closing.scale, 1e-9);
    EXPECT_NEAR(modal.layout().shown().opacity, closing.opacity, 1e-9);
    EXPECT_EQ(modal.layout().currentLayout(), "a");
}

TEST(Transition, RestartAlwaysStartsFromTheEnds) {
    Modal modal("{ open: { time: 1, opacity: 0, restart: true }, close: { time: 1, opacity: 0, restart: true } }");
    modal.set("a");
    for (int i = 0; i < 6; ++i) modal.editor.window.advance(50);
    modal.set("");
    EXPECT_DOUBLE_EQ(modal.layout().progress(), 1);
    EXPECT_DOUBLE_EQ(modal.layout().shown().opacity, 1);
}

TEST(Transition, MousePointsReachTheLayoutThroughTheTransform) {
    Modal modal("{ open: { time: 1, scale: 50 } }");
    modal.set("a");
    for (int i = 0; i < 5; ++i) modal.editor.window.advance(50);
    // Half way in, scaled about 0.75 round the centre of 200 by 100: the corner is inside.
    modal.editor.window.mouseDown(100, 50);
    modal.editor.window.mouseDown(2, 2);
    EXPECT_EQ(modal.editor.log.size(), 1u);
    EXPECT_EQ(modal.editor.log.at(0), "a down 100,50");
}
