#include "KetchScript.h"
#include "tests/Failure.h"

#include "vector/KetchArgumentList.h"
#include "vector/KetchList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tw::Ketch;
using namespace tw::Ketch::testing;

namespace {

using Strings = std::vector<std::string>;

}  // namespace

TEST(KetchArgumentList, PositionalAndLabelledInAnyOrder) {
    Script s;
    const std::string text = "0,0,10,10 Rounded:2 fill:rgb(1,0,0) [a b] /* note */ last";
    ArgumentList args(s.frame, text);
    EXPECT_EQ(args.fetchRequired(0), "0,0,10,10");
    EXPECT_EQ(args.fetchRequired("rounded"), "2") << "labels are lower-cased";
    EXPECT_EQ(args.fetchOptional("fill"), "rgb(1,0,0)");
    EXPECT_EQ(args.fetchRequired(1), "a b");
    EXPECT_EQ(args.fetchRequired(2), "last");
    EXPECT_FALSE(args.fetchOptional(3));
    EXPECT_FALSE(args.fetchOptional("width"));
    EXPECT_NO_THROW(args.finish());
}

TEST(KetchArgumentList, ValuesAreCookedOnceOrLeftRaw) {
    Script s;
    s.run("x=1");
    const std::string text = "[$x {$x + 1}] a\\:b body:[x=$x] ok:";
    ArgumentList args(s.frame, text);
    EXPECT_EQ(args.fetchRequired(0), "1 2");
    EXPECT_EQ(args.fetchRequired(0, ArgumentList::Raw), "[$x {$x + 1}]");
    EXPECT_EQ(args.fetchRequired(1), "a:b") << "an escaped colon is no label";
    EXPECT_EQ(args.fetchRequired("body", ArgumentList::Raw), "[x=$x]");
    EXPECT_EQ(args.fetchRequired("ok"), "") << "an empty value";
    s.run("x=2");
    EXPECT_EQ(args.fetchRequired(0), "1 2") << "cooked once, then cached";
}

TEST(KetchArgumentList, BracketLabels) {
    Script s;
    s.run("name=Odd");
    const std::string text = "[my $name]:1";
    ArgumentList args(s.frame, text);
    EXPECT_EQ(args.labelAt(0), "my odd");
    EXPECT_EQ(args.fetchRequired("my odd"), "1");
}

TEST(KetchArgumentList, FaultsOfLabels) {
    Script s;
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, "a:1 A:2"); }), "Duplicate labels");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, ":1"); }), "Label cannot be empty");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, "[]:1"); }), "Label cannot be empty");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, "1:2"); }), "Syntax error");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, "a:b:c"); }), "Syntax error");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { ArgumentList(s.frame, "a:[b"); }), "Missing ]");
}

TEST(KetchArgumentList, MissingAndLeftOver) {
    Script s;
    const std::string text = "one extra:1";
    ArgumentList args(s.frame, text);
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { args.fetchRequired(1); }), "Missing argument(s)");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { args.fetchRequired("width"); }), "Missing argument(s)");
    args.fetchRequired(0);
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { args.finish(); }), "Unrecognized labels or too many arguments");
    args.fetchOptional("extra");
    EXPECT_NO_THROW(args.finish());
}

TEST(KetchList, SeparatorsAndEmptyItems) {
    Script s;
    EXPECT_EQ(parseList(s.frame, "1,2 3 ,\t4", false, false), (Strings{"1", "2", "3", "4"}));
    EXPECT_EQ(parseList(s.frame, "a,,b,", false, false), (Strings{"a", "", "b", ""}));
    EXPECT_EQ(parseList(s.frame, "a,,b,", false, true), (Strings{"a", "b"}));
    EXPECT_EQ(parseList(s.frame, "  ", false, false), Strings{});
    EXPECT_EQ(parseList(s.frame, "[a, b],c\\,d", false, false), (Strings{"[a, b]", "c\\,d"}));
    EXPECT_EQ(parseList(s.frame, "[a, b],c\\,d", true, false), (Strings{"a, b", "c,d"}));
}

TEST(KetchList, CountBounds) {
    Script s;
    EXPECT_EQ(parseList(s.frame, "1,2,3,4", false, false, 4, 4).size(), 4u);
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { parseList(s.frame, "1,2,3", false, false, 4, 4); }), "Too few list elements");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { parseList(s.frame, "1,2,3,4,5", false, false, 4, 4); }), "Too many list elements");
    EXPECT_EQ(tw::test::failure<SyntaxException>([&] { parseList(s.frame, "1,", false, false, 0, 1); }), "Too many list elements");
}
