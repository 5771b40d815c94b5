#include "speclang/SpecLanguage.h"

#include <gtest/gtest.h>

#include <string>

using namespace tw;

namespace {

std::string rest(const char* text, const char* (*scan)(const char*)) {
    return scan(text);
}

std::string valueOf(const std::string& text, std::string* after = nullptr) {
    std::string out;
    const char* end = scanValue(text.c_str(), out);
    if (after) *after = end;
    return out;
}

SpecList list(std::initializer_list<const char*> items) {
    return SpecList(items.begin(), items.end());
}

}  // namespace

TEST(SkipWhite, CommentsNestAndEndAtTheirLine) {
    EXPECT_STREQ(skipWhite("/* a /* b */ c */ x", false), "x");
    EXPECT_STREQ(skipWhite(" \t\v// note\r\n  x", false), "x");
    EXPECT_STREQ(skipWhite(" // note\r\n  x", true), "\r\n  x");
    EXPECT_STREQ(skipWhite("/* a */ /* b */\n/**/x", false), "x");
    // An unclosed comment runs to the end without complaint.
    EXPECT_STREQ(skipWhite("/* a /* b */ x", false), "");
    EXPECT_STREQ(skipWhite("/* a \x1A */ x", false), "\x1A */ x");
    EXPECT_STREQ(skipWhite("// a \x1A x", false), "\x1A x");
}

TEST(SkipWhite, StopsAtOrdinaryBytes) {
    EXPECT_STREQ(skipWhite("  /x", false), "/x");
    EXPECT_STREQ(skipWhite(" \fx", false), "\fx");
    EXPECT_STREQ(skipWhite("\nx", true), "\nx");
    EXPECT_STREQ(skipWhite("\rx", true), "\rx");
    EXPECT_STREQ(skipWhite(" \x1A x", false), "\x1A x");
}

TEST(ScanString, QuotesEscapesAndLineEnds) {
    EXPECT_EQ(rest("\"a'b\" x", scanString), " x");
    EXPECT_EQ(rest("'a\"b' x", scanString), " x");
    EXPECT_EQ(rest("'it\\'s' x", scanString), " x");
    EXPECT_EQ(rest("\"a\\\r\nb\" x", scanString), " x");
    // Unclosed: the string is the rest of its line.
    EXPECT_EQ(rest("\"abc\r\ndef\"", scanString), "\r\ndef\"");
    EXPECT_EQ(rest("\"abc\x1A\"", scanString), "\x1A\"");
    EXPECT_EQ(rest("\"abc\\", scanString), "");
    // An escaped 0x1A or lone LF is plain text.
    EXPECT_EQ(rest("\"a\\\x1A\" x", scanString), " x");
    EXPECT_EQ(rest("\"a\\\nb\" x", scanString), " x");
}

TEST(ScanBlock, NestsAndPassesStringsAndComments) {
    EXPECT_EQ(rest("{ a { b } c } d", scanBlock), " d");
    EXPECT_EQ(rest("{ \"}\" } d", scanBlock), " d");
    EXPECT_EQ(rest("{ /* } don't */ } d", scanBlock), " d");
    EXPECT_EQ(rest("{ // } don't\n } d", scanBlock), " d");
    // A lone apostrophe in bare text opens a string up to the end of its line.
    EXPECT_EQ(rest("{ don't } \n } d", scanBlock), " d");
    EXPECT_EQ(rest("{ a { b \x1A } }", scanBlock), "\x1A } }");
    EXPECT_EQ(rest("{ a { b", scanBlock), "");
}

TEST(ScanValue, BareValuesShrinkBlanksAndDropComments) {
    std::string after;
    EXPECT_EQ(valueOf("a   b // note\nc", &after), "a b");
    EXPECT_EQ(after, "\nc");
    EXPECT_EQ(valueOf("a\t\vb /* x */ c, d", &after), "a b c");
    EXPECT_EQ(after, ", d");
    EXPECT_EQ(valueOf("1/3"), "1/3");
    EXPECT_EQ(valueOf("h/2 + 1"), "h/2 + 1");
    EXPECT_EQ(valueOf("1 / 3"), "1 / 3");
    EXPECT_EQ(valueOf("a; b"), "a");
    EXPECT_EQ(valueOf("a } b"), "a");
    EXPECT_EQ(valueOf("a\x1A b"), "a");
    // Quotes and braces inside a bare value mean nothing, and form feed is text.
    EXPECT_EQ(valueOf("a \"b c\" {d"), "a \"b c\" {d");
    EXPECT_EQ(valueOf("a\fb"), "a\fb");
    EXPECT_EQ(valueOf(", b"), "");
}

TEST(ScanValue, BlocksAndStringsStandAsWritten) {
    std::string after;
    EXPECT_EQ(valueOf("{ a /* } */, b }  , c", &after), "{ a /* } */, b }");
    EXPECT_EQ(after, ", c");
    EXPECT_EQ(valueOf("\"a \\\" b\"  \"c\"", &after), "\"a \\\" b\"");
    EXPECT_EQ(after, "\"c\"");
    EXPECT_EQ(valueOf("'unclosed\nnext'"), "'unclosed");
}

TEST(ScanLabel, BareAndQuoted) {
    std::string label;
    EXPECT_STREQ(scanLabel("two  words : v", label), ": v");
    EXPECT_EQ(label, "two words");
    EXPECT_STREQ(scanLabel("a=b", label), "=b");
    EXPECT_EQ(label, "a");
    EXPECT_STREQ(scanLabel("{x: v", label), ": v");
    EXPECT_EQ(label, "{x");
    // A quoted label is unquoted at once and may stand apart from its colon.
    EXPECT_STREQ(scanLabel("\"a:b\\n\"\n : v", label), ": v");
    EXPECT_EQ(label, "a:b\n");
    EXPECT_STREQ(scanLabel("k\n: v", label), "\n: v");
    EXPECT_EQ(label, "k");
}

TEST(ParseList, ItemsAndSeparators) {
    EXPECT_EQ(parseList("{ a, , b }"), list({"a", "", "b"}));
    EXPECT_EQ(parseList("\"a\" \"b\""), list({"\"a\"", "\"b\""}));
    EXPECT_EQ(parseList("a, b"), parseList("{ a, b }"));
    EXPECT_EQ(parseList("a; b;"), list({"a", "b"}));
    EXPECT_EQ(parseList("{ {x} {y}, z }"), list({"{x}", "{y}", "z"}));
    EXPECT_EQ(parseList("  \n"), list({}));
    EXPECT_EQ(parseList("{}"), list({}));
    EXPECT_EQ(parseList(",,"), list({"", ""}));
}

TEST(ParseList, LineEndsSeparateAndACommaOnTheNextLineToo) {
    EXPECT_EQ(parseList("{\n  a b // one\n  c\n  , d\n}"), list({"a b", "c", "d"}));
}

TEST(ParseList, EndsAtTheClosingBraceOrCtrlZ) {
    EXPECT_EQ(parseList("{ a } b, c"), list({"a"}));
    EXPECT_EQ(parseList("a } b"), list({"a"}));
    EXPECT_EQ(parseList("a, b\x1A, c"), list({"a", "b"}));
    EXPECT_EQ(parseList("a, /* \x1A */ c"), list({"a"}));
}

TEST(ParseMap, EntriesAndTheirForms) {
    SpecMap map = parseMap("{ param: \"delaySync\", toggle; to = 0.5 sec, \"quoted label\": {a, b} }");
    EXPECT_EQ(map, (SpecMap{{"param", "\"delaySync\""},
                            {"toggle", ""},
                            {"to", "0.5 sec"},
                            {"quoted label", "{a, b}"}}));
    EXPECT_EQ(parseMap("a: 1\nb: 2"), parseMap("{ a: 1, b: 2 }"));
    EXPECT_EQ(parseMap("{}").size(), 0u);
}

TEST(ParseMap, FirstLabelWinsAndLabelsSortByByte) {
    SpecMap map = parseMap("k: first\nb: x\nk: second\nB: y\nbb: z");
    EXPECT_EQ(lookup(map, "k"), "first");
    std::string order;
    for (const auto& [label, value] : map) order += label + ",";
    EXPECT_EQ(order, "B,b,bb,k,");
}

TEST(ParseMap, AValueStartsOnTheLineOfItsColon) {
    SpecMap map = parseMap("key:\n  next: 2\n");
    EXPECT_EQ(map, (SpecMap{{"key", ""}, {"next", "2"}}));
    // A comment behind the colon does not carry the value over the line end either.
    map = parseMap("key: // later\n  value\n");
    EXPECT_EQ(map, (SpecMap{{"key", ""}, {"value", ""}}));
}

TEST(ParseMap, ACommaOpeningALineIsAnEntryWithAnEmptyLabel) {
    SpecMap map = parseMap("a: 1\n, b: 2");
    EXPECT_EQ(map, (SpecMap{{"", ""}, {"a", "1"}, {"b", "2"}}));
}

TEST(ParseMap, EndsAtTheClosingBraceOrCtrlZ) {
    EXPECT_EQ(parseMap("{ a: 1 } b: 2"), (SpecMap{{"a", "1"}}));
    EXPECT_EQ(parseMap("a: 1\n\x1A b: 2"), (SpecMap{{"a", "1"}}));
    EXPECT_EQ(parseMap("a: x\x1A y"), (SpecMap{{"a", "x"}}));
}

TEST(Lookup, AbsentLabelGivesTheEmptyString) {
    SpecMap map = parseMap("a: 1, b:");
    EXPECT_EQ(lookup(map, "a"), "1");
    EXPECT_EQ(lookup(map, "b"), "");
    EXPECT_EQ(lookup(map, "c"), "");
}

TEST(ToBool, TrueAndFalseInAnyCase) {
    EXPECT_TRUE(toBool("TRUE", false));
    EXPECT_TRUE(toBool("True", false));
    EXPECT_FALSE(toBool("fAlSe", true));
    EXPECT_TRUE(toBool("", true));
    EXPECT_FALSE(toBool("truer", false));
    EXPECT_TRUE(toBool("\"false\"", true));
    EXPECT_FALSE(toBool("1", false));
}

TEST(ToInt, CIntegerLiteralsAtTheStart) {
    EXPECT_EQ(toInt("12 px", 0), 12);
    EXPECT_EQ(toInt("-1", 0), -1);
    EXPECT_EQ(toInt(" +7", 0), 7);
    EXPECT_EQ(toInt("010", 0), 8);
    EXPECT_EQ(toInt("0x1F", 0), 31);
    EXPECT_EQ(toInt("0x", 5), 0);
    EXPECT_EQ(toInt("", 5), 5);
    EXPECT_EQ(toInt("x1", 5), 5);
    EXPECT_EQ(toInt("-", 5), 5);
    EXPECT_EQ(toInt("\"1\"", 5), 5);
    EXPECT_EQ(toInt("99999999999", 0), 2147483647);
    EXPECT_EQ(toInt("-2147483648", 0), -2147483647 - 1);
    EXPECT_EQ(toInt("-99999999999", 0), -2147483647 - 1);
}
