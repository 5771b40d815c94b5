#include "cushy/MessageBox.h"
#include "cushy/PopupMenu.h"
#include "cushy/TextEntryDialog.h"

#include "cushy/Editor.h"
#include "graphics/SavePicture.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;

namespace {

// Paints a helper client into a picture of its own size.
template <class Client>
Raster32 picture(Client& client) {
    Raster32 canvas(IntRect{0, 0, client.width(), client.height()}, true);
    client.paint(PixelTile{canvas.at(0, 0), canvas.stride(), 0, 0, client.width(), client.height()});
    return canvas;
}

HelperFonts fonts(Editor& editor) { return HelperFonts::load(editor.host, *editor.root); }

}  // namespace

TEST(PopupMenu, AccessKeysAndCaptions) {
    std::int32_t access;
    EXPECT_EQ(PopupMenu::plainCaption("&Open...", access), "Open...");
    EXPECT_EQ(access, 0);
    EXPECT_EQ(PopupMenu::plainCaption("Copy && &Paste", access), "Copy & Paste");
    EXPECT_EQ(access, 7);
    EXPECT_EQ(PopupMenu::plainCaption("None", access), "None");
    EXPECT_EQ(access, -1);
}

TEST(PopupMenu, KeysWalkTheItemsAndSharedAccessKeysTakeTurns) {
    Editor editor;
    PopupMenu menu(fonts(editor), {{"&Save"}, {"", true}, {"&Swap"}, {"&Undo", false, false}});
    menu.keyDown(KeyEvent{Key::end});
    EXPECT_EQ(menu.highlighted(), 3);
    menu.keyDown(KeyEvent{Key::down});
    EXPECT_EQ(menu.highlighted(), 0);   // round to the top
    menu.keyDown(KeyEvent{Key::character, U'S'});
    EXPECT_EQ(menu.highlighted(), 2);
    EXPECT_FALSE(menu.closed());
    menu.keyDown(KeyEvent{Key::character, U'u'});   // a greyed item is lit, not chosen
    EXPECT_EQ(menu.highlighted(), 3);
    EXPECT_FALSE(menu.closed());
    menu.keyDown(KeyEvent{Key::home});
    EXPECT_EQ(menu.highlighted(), 0);
    // The mouse: a release off every item keeps the menu open.
    MouseEvent e;
    e.x = menu.width() + 5, e.y = 5;
    menu.mouseDown(e);
    menu.mouseUp(e);
    EXPECT_FALSE(menu.closed());
    const IntRect swap = menu.itemRect(2);
    e.x = swap.left + 3, e.y = swap.top + 3;
    menu.mouseMove(e);
    menu.mouseDown(e);
    menu.mouseUp(e);
    EXPECT_EQ(menu.choice(), 2);
    tw::test::savePicture("cushy-menu.png", picture(menu));
}

TEST(MessageBox, DefaultsLabelsAndKeys) {
    Editor editor;
    MessageBox box(fonts(editor), "The operation could not be performed due to the error:\n\nInvalid color: \"mauve\"",
                   AlertType::error, AlertButtons::abortRetryIgnore, AlertButton::ignore);
    tw::test::savePicture("cushy-message-box.png", picture(box));
    box.keyDown(KeyEvent{Key::enter});
    EXPECT_TRUE(box.closed());
    EXPECT_EQ(box.result(), AlertButton::ignore);
    MessageBox question(fonts(editor), "Save?", AlertType::question, AlertButtons::yesNoCancel, AlertButton::cancel);
    question.keyDown(KeyEvent{Key::character, U'n'});
    EXPECT_EQ(question.result(), AlertButton::no);
    MessageBox plain(fonts(editor), "Done", AlertType::plain, AlertButtons::ok, AlertButton::cancel);
    plain.closeRequested();
    EXPECT_EQ(plain.result(), AlertButton::ok);
    MessageBox closing(fonts(editor), "?", AlertType::plain, AlertButtons::okCancel, AlertButton::ok);
    closing.keyDown(KeyEvent{Key::escape});
    EXPECT_EQ(closing.result(), AlertButton::cancel);
}

TEST(TextEntryDialog, MouseSelectsAndButtonsAnswer) {
    Editor editor;
    TextEntryDialog dialog(fonts(editor), "Delay Time", "250 ms");
    const IntRect field = dialog.fieldRect();
    MouseEvent e;
    e.x = field.left + 6, e.y = field.top + 5;
    dialog.mouseDown(e);
    EXPECT_EQ(dialog.cursor(), 0u);
    e.x = field.right() - 2;
    dialog.mouseMove(e);
    dialog.mouseUp(e);
    EXPECT_EQ(dialog.anchor(), 0u);
    EXPECT_EQ(dialog.cursor(), 6u);
    dialog.keyDown(KeyEvent{Key::left, 0, true});
    dialog.keyDown(KeyEvent{Key::left, 0, true});
    dialog.keyDown(KeyEvent{Key::left, 0, true});
    tw::test::savePicture("cushy-text-entry.png", picture(dialog));
    dialog.keyDown(KeyEvent{Key::character, U'\u00e9'});
    EXPECT_EQ(dialog.value(), "\xC3\xA9 ms");
    const IntRect ok = dialog.okRect();
    e.x = ok.left + 3, e.y = ok.top + 3;
    dialog.mouseDown(e);
    dialog.mouseUp(e);
    EXPECT_TRUE(dialog.accepted());
}
