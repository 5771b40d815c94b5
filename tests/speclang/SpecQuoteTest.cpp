#include "speclang/SpecQuote.h"

#include "speclang/SpecLanguage.h"

#include <gtest/gtest.h>

#include <string>

using namespace tw;

TEST(Unquote, BareValuesStandAsTheyAre) {
    EXPECT_EQ(unquote("right"), "right");
    EXPECT_EQ(unquote("a \\n b"), "a \\n b");
    EXPECT_EQ(unquote(""), "");
}

TEST(Unquote, NamedEscapes) {
    EXPECT_EQ(unquote("'it\\'s'"), "it's");
    EXPECT_EQ(unquote("\"\\b\\f\\n\\r\\t\\v\""), "\b\f\n\r\t\v");
    EXPECT_EQ(unquote("\"\\\"\\'\\\\\\/\\q\""), "\"'\\/q");
    EXPECT_EQ(unquote("\"'\""), "'");
    EXPECT_EQ(unquote("'\"'"), "\"");
}

TEST(Unquote, HexEscapesTakeUpToTwoDigits) {
    EXPECT_EQ(unquote("\"\\x41\\x4a\\x4A\""), "AJJ");
    EXPECT_EQ(unquote("\"\\x414\""), "A4");
    EXPECT_EQ(unquote("\"\\x9z\""), "\tz");
    EXPECT_EQ(unquote("\"\\xg\""), std::string("\0g", 2));
}

TEST(Unquote, DigitEscapesReadACIntegerLiteral) {
    EXPECT_EQ(unquote("\"\\65\""), "A");
    EXPECT_EQ(unquote("\"\\065\""), "5");
    EXPECT_EQ(unquote("\"\\0x41!\""), "A!");
    EXPECT_EQ(unquote("\"\\321\""), "A");  // low 8 bits of 321
    EXPECT_EQ(unquote("\"\\08\""), std::string("\0" "8", 2));
    EXPECT_EQ(unquote("\"\\99999999999\""), "\xFF");
}

TEST(Unquote, StopsAtTheClosingQuoteOrTheEnd) {
    EXPECT_EQ(unquote("\"abc\" def"), "abc");
    EXPECT_EQ(unquote("\"abc"), "abc");
    EXPECT_EQ(unquote("\"abc\\"), "abc");
    EXPECT_EQ(unquote(std::string("\"ab\0cd\"", 7)), "ab");
    // A string continued over a line end keeps its line break.
    std::string raw;
    scanValue("\"one\\\r\ntwo\" rest", raw);
    EXPECT_EQ(unquote(raw), "one\r\ntwo");
}

TEST(Quote, EscapesControlsQuotesAndHighBytes) {
    EXPECT_EQ(quote("plain text"), "\"plain text\"");
    EXPECT_EQ(quote("a\"b'c\\d"), "\"a\\\"b\\'c\\\\d\"");
    EXPECT_EQ(quote("\b\t\n\v\f\r"), "\"\\b\\t\\n\\v\\f\\r\"");
    EXPECT_EQ(quote(std::string("\0\x1A\x7F\xC3\xA9", 5)), "\"\\x00\\x1a\\x7f\\xc3\\xa9\"");
    EXPECT_EQ(quote(""), "\"\"");
}

TEST(Quote, EveryByteValueRoundTrips) {
    std::string all;
    for (int b = 0; b < 256; ++b) {
        const std::string one(1, static_cast<char>(b));
        EXPECT_EQ(unquote(quote(one)), one) << b;
        // Followed by a hexadecimal digit, which a \x escape must not swallow.
        EXPECT_EQ(unquote(quote(one + "f")), one + "f") << b;
        all += one;
    }
    EXPECT_EQ(unquote(quote(all)), all);
    // A quoted text is one value to the scanners, whatever it holds.
    EXPECT_EQ(parseList(quote(all) + ", x").size(), 2u);
}

TEST(UnquoteWide, WideEscapesAndWidenedBytes) {
    EXPECT_EQ(unquoteWide("\"\\u20AC \\u41 \\x41\\0101\""), u"\u20AC A AA");
    EXPECT_EQ(unquoteWide("\"\\l1F600\""), u"\U0001F600");
    EXPECT_EQ(unquoteWide("\"\\l00000041\\u00e9\""), u"A\u00E9");
    // Inside quotes each byte stands for itself.
    EXPECT_EQ(unquoteWide("\"\xC3\xA9\""), u"\u00C3\u00A9");
    // Without quotes the text is UTF-8, and a byte that starts no sequence is replaced.
    EXPECT_EQ(unquoteWide("caf\xC3\xA9 \xE2\x82\xAC"), u"caf\u00E9 \u20AC");
    EXPECT_EQ(unquoteWide("a\xFF" "b\xC3"), u"a\uFFFDb\uFFFD");
    EXPECT_EQ(unquoteWide("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
    // The narrow reader does not know the wide escapes.
    EXPECT_EQ(unquote("\"\\u41\""), "u41");
}

TEST(QuoteWide, EveryCodeUnitRoundTrips) {
    EXPECT_EQ(quoteWide(u"a\u00E9\u20AC\n"), "\"a\\xe9\\u20ac\\n\"");
    std::u16string all;
    for (int c = 0; c < 0x10000; ++c) all += static_cast<char16_t>(c);
    EXPECT_EQ(unquoteWide(quoteWide(all)), all);
}
