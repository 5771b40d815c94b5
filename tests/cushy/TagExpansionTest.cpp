#include "cushy/TagExpansion.h"
#include "cushy/VariableCache.h"
#include "cushy/VariableReading.h"
#include "vector/KetchException.h"

#include "cushy/Editor.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::failure;
using tw::test::formatFailure;

namespace {

struct Tags : ::testing::Test {
    Editor editor;
    std::string run(const std::string& text) { return expand(text, editor.host, *editor.root); }
};

}  // namespace

TEST_F(Tags, PlainTextAndBrokenBracketsStayText) {
    editor.host.variables["x"] = "X";
    EXPECT_EQ(run("no tags at all"), "no tags at all");
    EXPECT_EQ(run("a[b"), "a[b");
    EXPECT_EQ(run("a[b[var]x[/var]"), "a[bX");
    EXPECT_EQ(run("[notatag]"), "[notatag]");
    EXPECT_EQ(run("[VAR]x[/VAR]"), "[VAR]x[/VAR]");
    EXPECT_EQ(run("]["), "][");
    // Without a '[' even escapes stay as they are: the fast path returns the text.
    EXPECT_EQ(run("\\\"plain\\\""), "\\\"plain\\\"");
}

TEST_F(Tags, VariablesAndTheirNames) {
    editor.host.variables["patch.name"] = "Dub";
    editor.host.variables["feedbacks.lfoNeedlePositions[9]"] = "0.5";
    editor.host.variables["which"] = "patch.name";
    EXPECT_EQ(run("[var]patch.name[/var]!"), "Dub!");
    EXPECT_EQ(run("[var]feedbacks.lfoNeedlePositions[9][/var]"), "0.5");
    // The name is expanded first, so a variable can name another.
    EXPECT_EQ(run("[var][var]which[/var][/var]"), "Dub");
    // An unset variable is the empty string, never a fault.
    EXPECT_EQ(run("<[var]nobody.set.this[/var]>"), "<>");
    // A tag left open just ends with the text.
    EXPECT_EQ(run("[var]patch.name"), "Dub");
}

TEST_F(Tags, UnexpectedClosingTagsThrow) {
    EXPECT_EQ(formatFailure([&] { run("[/var]"); }), "Unexpected meta tag: [/var]");
    EXPECT_EQ(formatFailure([&] { run("[var]x[/xlate]"); }), "Unexpected meta tag: [/xlate]");
    EXPECT_EQ(formatFailure([&] { run("[uppercase]a[/lowercase]"); }), "Unexpected meta tag: [/lowercase]");
}

TEST_F(Tags, PlatformTagsKeepOnlyThisPlatform) {
    EXPECT_EQ(run("[windows]a[/windows][mac]b[/mac]"), "a");
    // What a dropped part holds is still expanded, faults included.
    EXPECT_EQ(formatFailure([&] { run("[mac][/var][/mac]"); }), "Unexpected meta tag: [/var]");
}

TEST_F(Tags, QuotesProtectTheValuesThatLandInThem) {
    editor.host.variables["v"] = "it's";
    EXPECT_EQ(run("'[var]v[/var]'"), "'it\\'s'");
    EXPECT_EQ(run("[var]v[/var]"), "it's");
    editor.host.variables["q"] = "say \"hi\"\\";
    EXPECT_EQ(run("\"[var]q[/var]\""), "\"say \\\"hi\\\"\\\\\"");
    // A quote of the other kind inside an open one does not close it.
    EXPECT_EQ(run("\"a'[var]v[/var]\""), "\"a'it\\'s\"");
    // The quote state belongs to its level: inside a tag's text it starts closed.
    EXPECT_EQ(run("'[uppercase][var]v[/var][/uppercase]'"), "'IT'S'");
}

TEST_F(Tags, EscapesLoseOneLevel) {
    EXPECT_EQ(run("[var]x[/var]\\\"a\\\""), "\"a\"");
    EXPECT_EQ(run("[var]x[/var]\\n"), "\\n");
    EXPECT_EQ(run("[var]x[/var]\\\\"), "\\");
    EXPECT_EQ(run("[var]x[/var]\\"), "\\");
    // An escaped quote neither opens nor closes the quote.
    editor.host.variables["v"] = "it's";
    EXPECT_EQ(run("\\'[var]v[/var]"), "'it's");
}

TEST_F(Tags, CaseChangesAreLatin1) {
    EXPECT_EQ(toUpperLatin1("abz\xE0\xF7\xFE\xFF"), "ABZ\xC0\xF7\xDE\xFF");
    EXPECT_EQ(toLowerLatin1("ABZ\xC0\xD7\xDE\xDF"), "abz\xE0\xD7\xFE\xDF");
    EXPECT_EQ(run("[uppercase]Delay [var]n[/var][/uppercase]"), "DELAY ");
    EXPECT_EQ(run("[lowercase]MiXed[/lowercase]"), "mixed");
}

TEST_F(Tags, TranslationThroughTheStringTable) {
    editor.host.strings.load(editor.resources, "Tidewake");
    editor.host.variables["patch.modified"] = "true";
    EXPECT_EQ(run("[xlate]<modified:[var]patch.modified[/var]>[/xlate]"), "*");
    editor.host.variables["patch.modified"] = "false";
    EXPECT_EQ(run("Dub[xlate]<modified:[var]patch.modified[/var]>[/xlate]"), "Dub");
    EXPECT_EQ(run("[xlate]Change Patch Name[/xlate]"), "Rename Patch");
    EXPECT_EQ(run("[xlate]Error: ^E[/xlate]"), "The operation could not be performed due to the error:\n\n^E");
    // A text without an entry, and the keys that stand commented out, stand for themselves.
    EXPECT_EQ(run("[xlate]Undo[/xlate]"), "Undo");
}

TEST_F(Tags, StringTableReloadReplacesEntries) {
    StringTable table;
    table.read("\"Hello\": \"Hallo\"\n\"Bye\": \"Tsch\\u00FCss\"");
    EXPECT_EQ(table.translate("Hello"), "Hallo");
    EXPECT_EQ(table.translate("Bye"), "Tsch\xC3\xBCss");
    table.read("// a later reading wins\n\"Hello\": \"Moin\"");
    EXPECT_EQ(table.translate("Hello"), "Moin");
    EXPECT_EQ(table.translate("Bye"), "Tsch\xC3\xBCss");
}

TEST(HasVar, LooksForTheFiveBytes) {
    EXPECT_TRUE(hasVar("a [var]x[/var]"));
    EXPECT_FALSE(hasVar("[xlate]x[/xlate]"));
    EXPECT_FALSE(hasVar("[Var]"));
}

TEST(VariableReading, NumbersBooleansAndIntegers) {
    EXPECT_EQ(variableNumber("0.25 ms", 7), 0.25);
    EXPECT_EQ(variableNumber("  -3e2", 7), -300);
    EXPECT_EQ(variableNumber("", 7), 7);
    EXPECT_EQ(variableNumber("abc", 7), 7);
    EXPECT_EQ(variableInteger("12 steps"), 12);
    EXPECT_EQ(variableInteger("x"), 0);
    EXPECT_TRUE(variableBool("TRUE"));
    EXPECT_FALSE(variableBool("false"));
    EXPECT_FALSE(variableBool(""));
    EXPECT_EQ(formatVariableNumber(0.1 + 0.2), "0.3");
    EXPECT_EQ(formatVariableNumber(1e20), "1e+20");
}

TEST_F(Tags, WatchedTextsExpandAgainOnlyWithVariables) {
    editor.host.variables["n"] = "1";
    WatchedText fixed("[uppercase]a[/uppercase]", editor.host, *editor.root);
    WatchedText live("n=[var]n[/var]", editor.host, *editor.root);
    EXPECT_FALSE(fixed.watching());
    EXPECT_EQ(live.text(), "n=1");
    const int reads = editor.host.reads;
    EXPECT_FALSE(fixed.renew(editor.host, *editor.root));
    EXPECT_EQ(editor.host.reads, reads);
    EXPECT_FALSE(live.renew(editor.host, *editor.root));
    editor.host.variables["n"] = "2";
    EXPECT_TRUE(live.renew(editor.host, *editor.root));
    EXPECT_EQ(live.text(), "n=2");
}

TEST_F(Tags, WatchedVariablesReportChanges) {
    WatchedVariable page("page"), none;
    EXPECT_FALSE(page.renew(editor.host, *editor.root));   // unset reads as "", as at the start
    editor.host.variables["page"] = "2";
    EXPECT_TRUE(page.renew(editor.host, *editor.root));
    EXPECT_EQ(variableInteger(page.value()), 2);
    EXPECT_FALSE(page.renew(editor.host, *editor.root));
    EXPECT_FALSE(none.renew(editor.host, *editor.root));
}

TEST_F(Tags, VectorVariableCacheHoldsOneValuePerRun) {
    editor.host.variables["a"] = "1";
    Ketch::VariableMap builtIns;
    builtIns.declare("pi", "3.14");
    VariableCache cache(&builtIns, nullptr, &editor.host, editor.root.get());
    std::string value;
    ASSERT_TRUE(cache.lookup("pi", value));
    EXPECT_EQ(value, "3.14");
    ASSERT_TRUE(cache.lookup("a", value));
    editor.host.variables["a"] = "2";
    ASSERT_TRUE(cache.lookup("a", value));
    EXPECT_EQ(value, "1");   // within a run the first reading stands
    EXPECT_TRUE(cache.changed());
    cache.clear();
    ASSERT_TRUE(cache.lookup("a", value));
    EXPECT_EQ(value, "2");
    EXPECT_FALSE(cache.changed());

    const std::set<std::string, std::less<>> fixed{"a"};
    VariableCache limited(nullptr, &fixed, &editor.host, editor.root.get());
    EXPECT_TRUE(limited.lookup("a", value));
    EXPECT_EQ(failure<Ketch::RunTimeException>([&] { limited.lookup("b", value); }), "Inconsistent variable access");

    VariableCache detached(nullptr, nullptr, nullptr, nullptr);
    EXPECT_FALSE(detached.lookup("a", value));
}
