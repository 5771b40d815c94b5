// Keys in a layout in memory: the names a layout gives keys, the layout's own keys, and the
// focus walk over its controls (what stops it, what a modal layer hides, the ring's room).
#include "cushy/FocusRing.h"
#include "cushy/KeyBinding.h"
#include "cushy/KeyboardFocus.h"
#include "cushy/KnobView.h"
#include "cushy/Editor.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

KeyEvent keyEvent(Key key, char32_t character = 0, bool shift = false, bool ctrl = false) {
    KeyEvent e;
    e.key = key;
    e.character = character;
    e.shift = shift;
    e.ctrl = ctrl;
    return e;
}

TEST(KeyNames, ModifiersMustMatchExactlyAndLettersInEitherCase) {
    const KeyBinding redo = parseKeyName("ctrl+shift+z");
    EXPECT_TRUE(redo.matches(keyEvent(Key::character, U'Z', true, true)));
    EXPECT_TRUE(redo.matches(keyEvent(Key::character, U'z', true, true)));
    EXPECT_FALSE(redo.matches(keyEvent(Key::character, U'z', false, true))) << "Ctrl+Z is undo, not redo";
    EXPECT_FALSE(redo.matches(keyEvent(Key::character, U'x', true, true)));
    EXPECT_TRUE(parseKeyName("space").matches(keyEvent(Key::character, U' ')));
    EXPECT_TRUE(parseKeyName("pageDown").matches(keyEvent(Key::pageDown)));
    EXPECT_FALSE(parseKeyName("f1").matches(keyEvent(Key::f2)));
    EXPECT_FALSE(parseKeyName("left").matches(keyEvent(Key::left, 0, true))) << "Shift is a modifier like any";
    for (const char* bad : {"", "ctrl+", "F13", "leftish", "ctrl+shift+"})
        EXPECT_THROW(parseKeyName(bad), FormatException) << bad;
    const std::vector<KeyBinding> list = parseKeyBindings("{ { ctrl+z, undo }, { f1, show, \"{ page: 1 }\" } }");
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[1].action, "show");
    EXPECT_EQ(list[1].params, "{ page: 1 }");
    EXPECT_EQ(findKeyBinding(list, keyEvent(Key::f1)), &list[1]);
    EXPECT_EQ(findKeyBinding(list, keyEvent(Key::f2)), nullptr);
}

constexpr const char* controls = R"({
  keys: { { ctrl+z, undo }, { f1, tour } }
  views: {
    { type: knob, bounds: { 0, 0, 40, 40 }, variable: a }
    { type: knob, bounds: { 40, 0, 40, 40 }, variable: b, readonly: true }
    { type: box, bounds: { 80, 0, 120, 40 }, views: {
      { type: button, bounds: { 0, 0, 40, 20 }, action: pick, params: "{ what: s, to: 0 }" }
      { type: button, bounds: { 40, 0, 40, 20 }, action: pick, params: "{ what: s, to: 1 }" }
      { type: button, bounds: { 80, 0, 40, 20 }, action: other } } }
    { type: click, bounds: { 0, 60, 80, 20 }, action: open, keys: { { right, next } } }
    { type: click, bounds: { 80, 60, 80, 20 }, action: nothing }
  }
})";

TEST(FocusWalk, StopsAtWritableControlsSelectorsOnceAndClickAreasWithKeys) {
    Editor editor;
    editor.attach();
    editor.load(controls);
    const std::vector<View*> stops = keyboardFocus::stops(*editor.root);
    ASSERT_EQ(stops.size(), 4u) << "knob a, the selector, the other button, the click area with keys";
    EXPECT_EQ(dynamic_cast<KnobView*>(stops[0])->variableName(), "a");
    EXPECT_EQ(stops[1]->frame().left, 0) << "the selector's first segment holds its focus";
    EXPECT_EQ(stops[2]->frame().left, 80);
    double radius = 0;
    EXPECT_EQ(stops[1]->focusOutline(radius), (IntRect{0, 0, 80, 20})) << "the ring goes round both segments";
    EXPECT_EQ(stops[0]->focusOutline(radius), (IntRect{0, 0, 40, 40}));
    EXPECT_DOUBLE_EQ(radius, 20) << "and round a knob";

    EXPECT_TRUE(editor.window.key(Key::tab));
    EXPECT_EQ(View::focusHolder(), stops[0]);
    editor.window.key(Key::tab, 0, true);
    EXPECT_EQ(View::focusHolder(), stops[3]) << "Shift-Tab wraps back";
    editor.host.performed.clear();
    EXPECT_TRUE(editor.window.key(Key::right));
    EXPECT_TRUE(editor.window.key(Key::enter));
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"next ", "open "}));
    editor.host.performed.clear();
    EXPECT_TRUE(editor.window.key(Key::character, U'z', false, true));
    EXPECT_TRUE(editor.window.key(Key::f1));
    EXPECT_FALSE(editor.window.key(Key::f2)) << "a key nobody uses is left to the host";
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"undo ", "tour "}));
    EXPECT_TRUE(editor.window.key(Key::escape));
    EXPECT_EQ(View::focusHolder(), nullptr);
    EXPECT_FALSE(editor.window.key(Key::escape)) << "the window double never had the keyboard";
}

TEST(FocusWalk, AModalLayerKeepsTheWalkToItself) {
    Editor editor;
    editor.attach();
    editor.host.layouts["modal"] = "{ views: { { type: knob, bounds: { 0, 0, 20, 20 }, variable: m } } }";
    editor.load(R"({ views: {
        { type: knob, bounds: { 0, 0, 40, 40 }, variable: a }
        { type: cushy, layoutVariable: modal } } })");
    EXPECT_EQ(keyboardFocus::stops(*editor.root).size(), 1u);
    editor.host.setVariable(*editor.root, "modal", "modal", false);
    editor.root->refresh();
    const std::vector<View*> stops = keyboardFocus::stops(*editor.root);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(dynamic_cast<KnobView*>(stops[0])->variableName(), "m");
}

TEST(FocusRingSize, GrowsWithTheControlAndNeverVanishes) {
    const FocusRingGeometry small = focusRingGeometry(IntRect{0, 0, 40, 20});
    const FocusRingGeometry knob = focusRingGeometry(IntRect{0, 0, 48, 48});
    const FocusRingGeometry doubled = focusRingGeometry(IntRect{0, 0, 96, 96});
    EXPECT_GE(small.width, 1.0);
    EXPECT_DOUBLE_EQ(doubled.width, 2 * knob.width) << "at twice the size, twice the line";
    EXPECT_DOUBLE_EQ(doubled.gap, 2 * knob.gap);
    const IntRect bounds = focusRingBounds(IntRect{10, 10, 48, 48});
    EXPECT_LE(bounds.left, 10 - knob.gap - knob.glow / 2);
    EXPECT_GE(bounds.right(), 58 + knob.gap + knob.glow / 2);
}

}  // namespace
}  // namespace tw::test
