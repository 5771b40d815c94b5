#include "cushy/CaptionView.h"

#include "cushy/Editor.h"
#include "graphics/SavePicture.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

CaptionView& caption(Editor& editor, std::size_t i) { return static_cast<CaptionView&>(*editor.root->children().at(i)); }

}  // namespace

TEST(Caption, LiveTextRepaintsOnlyWhenItChanged) {
    Editor editor;
    editor.host.variables["params.delayTime.human"] = "250 ms";
    editor.load(R"~(views: {
      { type: caption, bounds: { 0, 0, 100, 20 }, text: "[var]params.delayTime.human[/var]", font: "{ fnt: Tidewake_sans_11, color: white }" },
      { type: caption, bounds: { 0, 20, 100, 20 }, text: "[uppercase]Delay[/uppercase]" } })~");
    editor.attach();
    EXPECT_EQ(caption(editor, 0).text(), "250 ms");
    EXPECT_EQ(caption(editor, 1).text(), "DELAY");
    editor.window.clearInvalidations();
    editor.root->refresh();
    EXPECT_TRUE(editor.window.invalidations().empty());
    editor.host.variables["params.delayTime.human"] = "1/8T";
    editor.root->refresh();
    EXPECT_EQ(caption(editor, 0).text(), "1/8T");
    EXPECT_EQ(editor.window.invalidations(), (std::vector<IntRect>{{0, 0, 100, 20}}));
}

TEST(Caption, TooLongTextsLoseTheirCutSide) {
    Editor editor;
    editor.load(R"~(views: {
      { type: caption, bounds: { 0, 0, 60, 16 }, text: "Feedback Amount Knob", ellipsis: right },
      { type: caption, bounds: { 0, 16, 60, 16 }, text: "Feedback Amount Knob", ellipsis: left },
      { type: caption, bounds: { 0, 32, 60, 16 }, text: "Feedback Amount Knob", ellipsis: { middle, "~" } },
      { type: caption, bounds: { 0, 48, 60, 16 }, text: "Feedback Amount Knob", ellipsis: none },
      { type: caption, bounds: { 0, 64, 200, 16 }, text: "Feedback", ellipsis: both } })~");
    const std::u16string right = caption(editor, 0).fittedText();
    EXPECT_TRUE(right.starts_with(u"Feed") && right.ends_with(u"...")) << toUtf8(right);
    EXPECT_TRUE(caption(editor, 1).fittedText().starts_with(u"...Kn") || caption(editor, 1).fittedText().ends_with(u"Knob"));
    const std::u16string middle = caption(editor, 2).fittedText();
    EXPECT_TRUE(middle.starts_with(u"Fee") && middle.ends_with(u"ob") && middle.find(u'~') != std::u16string::npos)
        << toUtf8(middle);
    EXPECT_EQ(caption(editor, 3).fittedText(), u"Feedback Amount Knob");
    EXPECT_EQ(caption(editor, 4).fittedText(), u"Feedback");
}

TEST(Caption, BadKeysHaveTheirMessages) {
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: caption, align: middle } }"); }),
              "Invalid text alignment: \"middle\"");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: caption, ellipsis: top } }"); }),
              "Invalid ellipsis side: \"top\"");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: rectangle, fill: mauve } }"); }),
              "Invalid color: \"mauve\"");
}

TEST(Rectangle, FillsAndFramesItsShape) {
    Editor editor({0, 0, 60, 40});
    editor.load(R"~(views: {
      { type: rectangle, bounds: { 10, 10, 40, 20 }, fill: { 16, 36, 54 }, frame: { color: aqua, stroke: 2 } },
      { type: rectangle, bounds: { 0, 0, 60, 40 }, fill: white, blend: multiply, rounded: 50 } })~");
    editor.attach();
    editor.window.paintAll();
    const Raster32& canvas = editor.window.canvas();
    tw::test::savePicture("cushy-rectangles.png", canvas);
    EXPECT_EQ(*canvas.at(30, 20), 0xFF102436u);
    EXPECT_EQ(*canvas.at(10, 20), 0xFF00FFFFu);
    EXPECT_EQ(*canvas.at(9, 20), 0xFF000000u);
}
