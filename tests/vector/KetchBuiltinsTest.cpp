#include "KetchScript.h"

#include <gtest/gtest.h>

#include <string>

using namespace tw::Ketch;
using namespace tw::Ketch::testing;

TEST(KetchBuiltins, IfTakesAConditionExpression) {
    Script s;
    s.run("x=3");
    s.run("if {$x > 2} [trace big] else:[trace small]");
    s.run("if [$x == 4] [trace four] else:[trace other]");
    s.run("if $x [trace nonzero]; if 0 [trace zero]");
    s.run("if no [trace never]");
    EXPECT_EQ(s.traced(), "big|other|nonzero");
    runExpecting<SyntaxException>(s, "if maybe [trace x]", "Invalid boolean (should be 'yes' or 'no')");
    runExpecting<SyntaxException>(s, "if yes", "Missing argument(s)");
    runExpecting<SyntaxException>(s, "if yes [] otherwise:[]", "Unrecognized labels or too many arguments");
}

TEST(KetchBuiltins, ForOverListsForwardAndReversed) {
    Script s;
    s.run("for i in:a,b,c [trace $i]");
    s.run("for i in:[x y {1 + 1}] reverse:yes [trace $i]");
    s.run("for i in:[[p q],r] [trace $i]");
    EXPECT_EQ(s.traced(), "a|b|c|2|y|x|p q|r");
    EXPECT_EQ(s.get("i"), "r") << "the loop variable is an ordinary variable";
    runExpecting<SyntaxException>(s, "for i in:a reverse:perhaps []", "Invalid boolean (should be 'yes' or 'no')");
}

TEST(KetchBuiltins, ForFromToIsInclusiveBothWays) {
    Script s;
    s.run("for i from:3 to:1 [trace $i]");
    s.run("for i from:1 to:3 [trace $i]");
    s.run("for i from:0.5 to:2.7 [trace $i]");
    s.run("for i from:-1 to:-1 [trace $i]");
    EXPECT_EQ(s.traced(), "3|2|1|1|2|3|0.5|1.5|2.5|-1");
    runExpecting<SyntaxException>(s, "for i from:1 []", "Missing argument(s)");
    runExpecting<SyntaxException>(s, "for i from:1 to:x []", "Invalid number");
    runExpecting<SyntaxException>(s, "for i in:a from:1 to:2 []", "Unrecognized labels or too many arguments");
}

TEST(KetchBuiltins, RepeatWithWhileTestedBeforeEachPass) {
    Script s;
    s.run("n=0; repeat 10 while:[$n < 3] [n={$n + 1}]");
    EXPECT_EQ(s.get("n"), "3");
    s.run("n=0; repeat 4 [n={$n + 1}]; repeat -2 [n=99]");
    EXPECT_EQ(s.get("n"), "4");
    s.run("repeat 5 while:[no] [trace never]");
    EXPECT_TRUE(s.executor.traces.empty());
    runExpecting<SyntaxException>(s, "repeat 5 while:no [trace x]", "'while:' condition has to be enclosed in [ ]");
    runExpecting<SyntaxException>(s, "repeat 2.5 []", "Invalid integer");
}

TEST(KetchBuiltins, LocalDeclaresInTheFrameAndMayShadow) {
    Script s;
    s.run("v=outer; local w=mine\\tx");
    EXPECT_EQ(s.get("w"), "mine\tx");
    runExpecting<RunTimeException>(s, "local v=again", "Variable already declared");
    s.run("call [local v=inner; trace $v; local empty; trace <$empty>]; trace $v");
    EXPECT_EQ(s.traced(), "inner|<>|outer");
    runExpecting<SyntaxException>(s, "local", "Missing variable name");
    runExpecting<SyntaxException>(s, "local 9lives", "Invalid variable name");
    runExpecting<SyntaxException>(s, "local a b", "Expected =");
}

TEST(KetchBuiltins, AssignmentReachesTheFrameThatHasTheName) {
    Script s;
    s.run("g=1; call [local l=1; call [g=2; l=2; fresh=3]; trace $l]");
    EXPECT_EQ(s.get("g"), "2");
    EXPECT_EQ(s.get("fresh"), "3") << "a new name is declared globally";
    EXPECT_EQ(s.traced(), "2") << "the caller's local is assigned";
    EXPECT_THROW(s.get("l"), RunTimeException);
}

TEST(KetchBuiltins, ReturnSetsInTheCallerAndGoesOn) {
    Script s;
    s.run("call [return r=first; trace after; local own=7; return own]");
    EXPECT_EQ(s.get("r"), "first");
    EXPECT_EQ(s.get("own"), "7");
    EXPECT_EQ(s.traced(), "after");
    s.run("call [local x=1; call [return x=2]; trace $x]");
    EXPECT_EQ(s.traced(), "after|2") << "the caller's own variable is the one set";
    runExpecting<RunTimeException>(s, "return r=1", "Cannot return in global frame");
}

TEST(KetchBuiltins, StopAborts) {
    Script s;
    const auto e = runExpecting<AbortedException>(s, "a=1; if yes [stop]; a=2", "Encountered STOP instruction");
    EXPECT_EQ(e.statement(), "stop");
    EXPECT_EQ(s.get("a"), "1");
    runExpecting<SyntaxException>(s, "stop now", "Unrecognized labels or too many arguments");
}

TEST(KetchBuiltins, CallPassesArgumentsAsVariables) {
    Script s;
    s.run("show=[trace $n $0 $1 $width]");
    s.run("call ignored:1 $show first [second item] WIDTH:{2 * 3}");
    EXPECT_EQ(s.traced(), "2 first second item 6");
    runExpecting<RunTimeException>(s, "call [trace $ignored]", "Variable does not exist");
    runExpecting<SyntaxException>(s, "call only:labels", "Missing argument(s)");
    s.run("call [trace $n]");
    EXPECT_EQ(s.executor.traces.back(), "0");
}

TEST(KetchBuiltins, IncludeRunsLoadedTextLikeACall) {
    Script s;
    s.executor.files["shapes"] = "trace included $0\nlocal mine=1\nreturn got=$mine";
    s.run("include shapes arg");
    EXPECT_EQ(s.traced(), "included arg");
    EXPECT_EQ(s.get("got"), "1");
    EXPECT_THROW(s.get("mine"), RunTimeException);
    runExpecting<RunTimeException>(s, "include missing", "Could not include file");
}

TEST(KetchBuiltins, TraceAppliesEscapes) {
    Script s;
    s.run("x=5; trace value:\\t$x\\x21 [kept]");
    EXPECT_EQ(s.traced(), "value:\t5! [kept]");
}

TEST(KetchBuiltins, FormatAsksTheExecutor) {
    Script s;
    s.run("format KETCH-1 uses:[Shapes, colours] requires:[Ketch-1]");
    EXPECT_EQ(s.executor.lastUses, (std::vector<std::string>{"shapes", "colours"}));
    EXPECT_TRUE(s.executor.lastRequired.empty()) << "ketch-1 is always there";
    const auto e = runExpecting<FormatException>(s, "format ketch-1 requires:keel-1", "Unsupported data format");
    EXPECT_EQ(s.executor.lastRequired, (std::vector<std::string>{"keel-1"}));
    runExpecting<FormatException>(s, "format keel-1", "Unsupported data format");
    runExpecting<SyntaxException>(s, "format", "Missing argument(s)");
}

TEST(KetchBuiltins, DebugTracesArguments) {
    Script s;
    s.run("x=1; _debug a [$x] label:[{$x + 1}]");
    s.run("_debug a [$x] label:[{$x + 1}] expand:yes");
    EXPECT_EQ(s.traced(), "0=a|1=[$x]|label=[{$x + 1}]|0=a|1=1|label=2");
}
