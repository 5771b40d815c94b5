#include "cushy/MessageBox.h"
#include "cushy/PopupMenu.h"
#include "cushy/TextEntryDialog.h"
#include "platform/Launcher.h"
#include "platform/QvxDebug.h"

#include "cushy/Editor.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::failure;
using tw::test::formatFailure;

namespace {

using Strings = std::vector<std::string>;

struct Actions : ::testing::Test {
    Editor editor;
    CushyView& view() { return *editor.root; }
    void execute(const std::string& action, const std::string& params) { view().execute(action, params); }
    bool enabled(const std::string& action, const std::string& params = "") { return view().isEnabled(action, params); }
    bool checked(const std::string& action, const std::string& params = "") { return view().isChecked(action, params); }
    std::string& var(const std::string& name) { return editor.host.variables[name]; }
};

}  // namespace

TEST_F(Actions, NopIsEnabledAndDoesNothing) {
    execute("nop", "");
    EXPECT_TRUE(enabled("nop"));
    EXPECT_FALSE(checked("nop"));
    EXPECT_TRUE(editor.host.writes.empty());
    EXPECT_TRUE(editor.host.performed.empty());
}

TEST_F(Actions, SetWritesLiterallyAndComparesForChecked) {
    execute("set", R"~({ "x", "[var]y[/var]" })~");
    EXPECT_EQ(editor.host.writes, (Strings{"x=[var]y[/var]"}));
    EXPECT_TRUE(checked("set", R"~({ x, "[var]y[/var]" })~"));
    EXPECT_FALSE(checked("set", "{ x, other }"));
    // A missing value is the empty string; extra items are cut.
    execute("set", R"~({ "x" })~");
    EXPECT_EQ(var("x"), "");
    execute("set", "{ x, 1, 2 }");
    EXPECT_EQ(var("x"), "1");
    editor.host.readOnly.insert("locked");
    EXPECT_FALSE(enabled("set", "{ locked, 1 }"));
    EXPECT_TRUE(enabled("set", "{ x, 1 }"));
}

TEST_F(Actions, SwitchRunsTheMatchingCase) {
    const std::string params = R"~(variable: "mode", cases: { fine: { set, { picked, "f" } }, wide: { disabled } },
                                  checked: { "fine", "midi" })~";
    var("mode") = "fine";
    EXPECT_TRUE(enabled("switch", params));
    EXPECT_TRUE(checked("switch", params));
    execute("switch", params);
    EXPECT_EQ(var("picked"), "f");
    var("mode") = "wide";
    EXPECT_FALSE(enabled("switch", params));
    EXPECT_FALSE(checked("switch", params));
    // No matching case and no default: disabled, and nothing runs.
    var("mode") = "sync";
    EXPECT_FALSE(enabled("switch", params));
    editor.host.writes.clear();
    execute("switch", params);
    EXPECT_TRUE(editor.host.writes.empty());
    var("mode") = "midi";
    EXPECT_TRUE(checked("switch", params));
    execute("switch", "variable: mode, cases: {}, default: { hostAction, 7 }");
    EXPECT_EQ(editor.host.performed, (Strings{"hostAction 7"}));
    // Without a `checked` list it is never checked.
    EXPECT_FALSE(checked("switch", "variable: mode, default: { nop }"));
}

TEST_F(Actions, BatchRunsInOrderAndAsksAll) {
    execute("batch", "{ { set, { a, 1 } }, { one, p }, { set, { b, 2 } } }");
    EXPECT_EQ(editor.host.writes, (Strings{"a=1", "b=2"}));
    EXPECT_EQ(editor.host.performed, (Strings{"one p"}));
    EXPECT_TRUE(enabled("batch", ""));
    EXPECT_TRUE(checked("batch", ""));
    EXPECT_FALSE(enabled("batch", "{ { nop }, { disabled } }"));
    EXPECT_TRUE(checked("batch", "{ { checked }, { set, { a, 1 } } }"));
    EXPECT_FALSE(checked("batch", "{ { checked }, { nop } }"));
    // A fault ends the whole batch.
    editor.host.writes.clear();
    EXPECT_EQ(formatFailure([&] { execute("batch", "{ { fail, x }, { set, { c, 3 } } }"); }), "Failed: x");
    EXPECT_TRUE(editor.host.writes.empty());
}

TEST_F(Actions, ExecuteExpandsAndTakesItsVerbFromVariables) {
    var("which") = "doIt";
    execute("execute", R"~(action: "[var]which[/var]", params: "n=[var]which[/var]")~");
    var("lastAction") = "set";
    var("lastParams") = "{ z, 9 }";
    execute("execute", "actionVariable: lastAction, paramsVariable: lastParams");
    EXPECT_EQ(editor.host.performed, (Strings{"doIt n=doIt"}));
    EXPECT_EQ(var("z"), "9");
    // An empty params variable runs the action with empty params.
    var("lastAction") = "other";
    var("lastParams") = "";
    execute("execute", "actionVariable: lastAction, paramsVariable: lastParams");
    EXPECT_EQ(editor.host.performed.back(), "other ");
    EXPECT_TRUE(checked("execute", "action: checked"));
    EXPECT_FALSE(enabled("execute", "action: disabled"));
    EXPECT_EQ(formatFailure([&] { execute("execute", "params: x"); }), "Invalid execute params : \"params: x\"");
}

TEST_F(Actions, AlertAnswersWithItsReactions) {
    editor.attach();
    editor.window.user = [](WindowDouble& w) {
        WindowDouble* box = w.topHelper();
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->title(), "Question");
        // Tab moves to the next button, Enter presses it.
        box->key(Key::tab);
        box->key(Key::enter);
    };
    execute("alert", R"~(type: question, buttons: "yes no cancel", default: yes, title: "Question",
                        text: "Keep the change?", reactions: { no: { set, { answer, no } }, yes: { set, { answer, yes } } })~");
    EXPECT_EQ(var("answer"), "no");
    EXPECT_TRUE(enabled("alert"));
    EXPECT_FALSE(checked("alert"));
    EXPECT_EQ(formatFailure([&] { execute("alert", "type: loud"); }), "Invalid alert type : \"loud\"");
    EXPECT_EQ(formatFailure([&] { execute("alert", "buttons: \"ok ok\""); }), "Invalid alert buttons : \"ok ok\"");
    EXPECT_EQ(formatFailure([&] { execute("alert", "default: maybe"); }), "Invalid default button : \"maybe\"");
}

TEST_F(Actions, AlertWithoutAWindowTakesTheDefault) {
    execute("alert", "buttons: \"ok cancel\", default: cancel, reactions: { cancel: { set, { a, c } } }");
    EXPECT_EQ(var("a"), "c");
    // A default outside the set falls to the first button.
    execute("alert", "buttons: \"yes no\", default: ignore, reactions: { yes: { set, { a, y } } }");
    EXPECT_EQ(var("a"), "y");
}

TEST_F(Actions, HintShowsAtOnceWhereItIsTold) {
    editor.attach();
    editor.window.mouseMove(50, 40);
    view().setLastClick({100, 10});
    execute("hint", "text: \"Saved [var]n[/var]\", offset: { 5, 5 }");
    ASSERT_TRUE(editor.hintWindow->showing());
    EXPECT_EQ(editor.hintWindow->text(), "Saved ");
    EXPECT_EQ(editor.window.topHelper()->screenX(), 105);
    EXPECT_EQ(editor.window.topHelper()->screenY(), 15);
    EXPECT_EQ(view().hintRect(), (IntRect{45, 35, 11, 11}));
    // With a position the offset is ignored.
    execute("hint", "text: there, position: { 7, 8 }, offset: { 100, 100 }");
    EXPECT_EQ(editor.window.topHelper()->screenX(), 7);
    EXPECT_EQ(editor.window.topHelper()->screenY(), 8);
    // The hint goes when the pointer leaves the square around it.
    editor.window.mouseMove(55, 45);
    EXPECT_TRUE(editor.hintWindow->showing());
    editor.window.mouseMove(56, 40);
    EXPECT_FALSE(editor.hintWindow->showing());
    EXPECT_TRUE(view().hintRect().isEmpty());
    EXPECT_TRUE(enabled("hint"));
    view().setHintWindow(nullptr);
    EXPECT_FALSE(enabled("hint"));
    execute("hint", "text: nobody");
}

TEST_F(Actions, PopupRunsAndStoresTheChoice) {
    editor.attach();
    var("name") = "Dub \"Echo\"";
    std::vector<MenuItem> seen;
    editor.window.user = [&](WindowDouble& w) {
        WindowDouble* menu = w.topHelper();
        ASSERT_NE(menu, nullptr);
        auto& popup = static_cast<PopupMenu&>(menu->client());
        // Down skips the separator; the greyed item can be lit but not chosen.
        menu->key(Key::down);
        menu->key(Key::down);
        EXPECT_EQ(popup.highlighted(), 2);
        menu->key(Key::enter);
        EXPECT_FALSE(popup.closed());
        menu->key(Key::up);
        EXPECT_EQ(popup.highlighted(), 0);
        menu->key(Key::enter);
    };
    const std::string params = R"~(items: {
        { "&Rename [var]name[/var]", set, { renamed, yes } },
        -,
        { "&Grey", disabled },
        { "&Checked", checked }
      }, storeAction: lastAction, storeParams: lastParams, position: { 3, 4 })~";
    execute("popup", params);
    EXPECT_EQ(var("renamed"), "yes");
    EXPECT_EQ(var("lastAction"), "set");
    EXPECT_EQ(var("lastParams"), "{ renamed, yes }");
    // The repeat gesture is "execute" with the stored pair.
    var("renamed") = "";
    execute("execute", "actionVariable: lastAction, paramsVariable: lastParams");
    EXPECT_EQ(var("renamed"), "yes");
}

TEST_F(Actions, PopupClosedWithoutAChoiceRunsNothing) {
    editor.attach();
    editor.window.user = [](WindowDouble& w) { w.topHelper()->key(Key::escape); };
    editor.host.writes.clear();
    execute("popup", "items: { { One, set, { x, 1 } } }, storeAction: s");
    EXPECT_TRUE(editor.host.writes.empty());
    // Detached there is no menu, and no choice either.
    editor.client.attach(nullptr);
    execute("popup", "items: { { One, set, { x, 1 } } }, storeAction: s");
    EXPECT_TRUE(editor.host.writes.empty());
}

TEST_F(Actions, PopupTakesTheRightButtonAndAccessKeys) {
    editor.attach();
    editor.window.user = [](WindowDouble& w) {
        WindowDouble* menu = w.topHelper();
        auto& popup = static_cast<PopupMenu&>(menu->client());
        const IntRect second = popup.itemRect(1);
        menu->mouseMove(second.left + 5, second.top + 5);
        menu->mouseDown(second.left + 5, second.top + 5, rightButton);
        menu->mouseUp(second.left + 5, second.top + 5, rightButton);
    };
    execute("popup", "items: { { A, set, { x, a } }, { B, set, { x, b } } }");
    EXPECT_EQ(var("x"), "b");
    editor.window.user = [](WindowDouble& w) { w.topHelper()->key(Key::character, U'b'); };
    execute("popup", "items: { { \"&Apple\", set, { x, a } }, { \"&Banana\", set, { x, banana } } }");
    EXPECT_EQ(var("x"), "banana");
}

TEST_F(Actions, EditBracketsTheWriteAndRunsItsReaction) {
    editor.attach();
    var("params.delayTime.human") = "250 ms";
    editor.window.clipboard = "1/8T\nignored";
    editor.window.user = [](WindowDouble& w) {
        WindowDouble* dialog = w.topHelper();
        auto& entry = static_cast<TextEntryDialog&>(dialog->client());
        EXPECT_EQ(entry.value(), "250 ms");
        // The whole value starts selected: typing replaces it.
        w.topHelper()->type(U"300");
        dialog->key(Key::home);
        dialog->key(Key::right, 0, true);
        dialog->key(Key::character, U'4');
        EXPECT_EQ(entry.value(), "400");
        dialog->key(Key::end);
        dialog->key(Key::backspace);
        dialog->key(Key::left);
        dialog->key(Key::del);
        EXPECT_EQ(entry.value(), "4");
        dialog->key(Key::character, U'a', false, true);
        dialog->key(Key::character, U'v', false, true);
        EXPECT_EQ(entry.value(), "1/8T");
        dialog->key(Key::enter);
    };
    execute("edit", "variable: \"params.delayTime.human\", text: \"Delay [var]unit[/var]\", reaction: { done, 1 }");
    EXPECT_EQ(editor.host.writes,
              (Strings{"begin params.delayTime.human", "params.delayTime.human=1/8T continuous", "end params.delayTime.human"}));
    EXPECT_EQ(editor.host.performed, (Strings{"done 1"}));
    // Cancel changes nothing.
    editor.host.writes.clear();
    editor.window.user = [](WindowDouble& w) { w.topHelper()->key(Key::escape); };
    execute("edit", "variable: x, default: \"[uppercase]start[/uppercase]\"");
    EXPECT_TRUE(editor.host.writes.empty());
    editor.host.readOnly.insert("x");
    EXPECT_FALSE(enabled("edit", "variable: x"));
    editor.window.user = nullptr;
    execute("edit", "variable: x");
    EXPECT_TRUE(enabled("edit", "variable: y"));
}

TEST_F(Actions, LaunchTellsAddressesFromFiles) {
    std::vector<std::pair<LaunchKind, std::string>> launched;
    setLaunchSeam([&](LaunchKind kind, const std::string& target) { launched.emplace_back(kind, target); });
    var("site") = "example.org";
    execute("launch", "\"https://[var]site[/var]/\"");
    execute("launch", "\"file://C:/a.pdf\"");
    execute("launch", "mailto:x");
    execute("launch", "telnet://host");
    setLaunchSeam(nullptr);
    EXPECT_EQ(launched, (std::vector<std::pair<LaunchKind, std::string>>{{LaunchKind::url, "https://example.org/"},
                                                                        {LaunchKind::file, "C:/a.pdf"},
                                                                        {LaunchKind::file, "mailto:x"},
                                                                        {LaunchKind::url, "telnet://host"}}));
}

TEST_F(Actions, ReloadActsAfterTheActionReturns) {
    editor.attach();
    execute("reload", "");
    EXPECT_EQ(editor.host.reloads, 0);
    editor.window.advance(0);
    EXPECT_EQ(editor.host.reloads, 1);
}

TEST_F(Actions, AssertComparesVariablesAndActions) {
    var("a") = "1";
    var("b") = "1";
    execute("assert", "variable: a, is: 1");
    execute("assert", "variable: a, sameAs: b");
    execute("assert", "variable: a, isNot: 2, sameAs: nothing");   // the first relation present counts
    EXPECT_EQ(failure<QvxDebug::Assert>([&] { execute("assert", "variable: a, is: 2"); }),
              "Cushy assertion failed: \"1\" is: \"2\"");
    EXPECT_EQ(failure<QvxDebug::Assert>([&] { execute("assert", "variable: a, differsFrom: b"); }),
              "Cushy assertion failed: \"1\" differsFrom: \"1\"");
    execute("assert", "action: nop, enabled: true, checked: false");
    EXPECT_EQ(failure<QvxDebug::Assert>([&] { execute("assert", "action: disabled, params: \"p\", enabled: true"); }),
              "Cushy assertion failed: action \"disabled\" with params \"\\\"p\\\"\" is not enabled");
    EXPECT_EQ(failure<QvxDebug::Assert>([&] { execute("assert", "action: checked, checked: no"); }),
              "Cushy assertion failed: action \"checked\" with params \"\" is checked");
    EXPECT_EQ(formatFailure([&] { execute("assert", "variable: a"); }), "Invalid assert params : \"variable: a\"");
    EXPECT_EQ(formatFailure([&] { execute("assert", "x: 1"); }), "Invalid assert params : \"x: 1\"");
}

TEST_F(Actions, UnknownNamesGoToTheHost) {
    execute("changeParam", "{ delayTime, 0.5 }");
    EXPECT_EQ(editor.host.performed, (Strings{"changeParam { delayTime, 0.5 }"}));
    EXPECT_TRUE(enabled("changeParam"));
    EXPECT_FALSE(enabled("disabled"));
    EXPECT_TRUE(checked("checked"));
    // Names near the built-in ones are not taken for them.
    execute("sets", "");
    execute("Nop", "");
    EXPECT_EQ(editor.host.performed.size(), 3u);
}

TEST_F(Actions, RunActionIsGuardedAndUpdatesOnce) {
    editor.attach();
    view().runAction("disabled", "");
    EXPECT_TRUE(editor.host.performed.empty());
    view().runAction("batch", "{ { one }, { two } }");
    editor.window.advance(0);
    EXPECT_EQ(editor.host.updates, 1);
    view().runAction("fail", "boom");
    EXPECT_EQ(editor.host.errors, (Strings{"Failed: boom"}));
    // A failed assertion is shown like any other fault.
    view().runAction("assert", "variable: nothing, is: something");
    EXPECT_EQ(editor.host.errors.back(), "Cushy assertion failed: \"\" is: \"something\"");
}

TEST_F(Actions, ShowErrorFallsBackToAMessageBox) {
    editor.attach();
    editor.host.reportsErrors = false;
    std::string title, shown;
    editor.window.user = [&](WindowDouble& w) {
        WindowDouble* box = w.topHelper();
        title = box->title();
        auto& message = static_cast<MessageBox&>(box->client());
        shown = message.lines().at(0);
        const IntRect ok = message.buttonRect(AlertButton::ok);
        box->mouseDown(ok.left + 2, ok.top + 2);
        box->mouseUp(ok.left + 2, ok.top + 2);
    };
    view().showError("");
    EXPECT_EQ(title, "Error");
    EXPECT_EQ(shown, "Unexpected error!");
    EXPECT_EQ(editor.host.errors, (Strings{""}));   // the host was asked first, with the message as it came
    // The editor going away while the box is up ends the loop with a lost window.
    editor.window.user = [](WindowDouble& w) { w.lose(); };
    EXPECT_EQ(failure<LostWindowException>([&] { view().showError("x"); }), "Lost window");
}
