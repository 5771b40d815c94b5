#include "KetchScript.h"

#include <gtest/gtest.h>

#include <string>

using namespace tw::Ketch;
using namespace tw::Ketch::testing;

TEST(KetchRun, StatementsEndAtLineBreaksAndSemicolons) {
    Script s;
    s.run("i=1;j=2\r\nk=3\rl=4\n\n  \t\nm=5;");
    EXPECT_EQ(s.get("i") + s.get("j") + s.get("k") + s.get("l") + s.get("m"), "12345");
    runExpecting<SyntaxException>(s, "a=1;;b=2", "Invalid intruction");
}

TEST(KetchRun, SeparatorsInsideBracketsAndBracesDoNotSplit) {
    Script s;
    s.run("x=[a;b]; y={[1;2]}\n");
    EXPECT_EQ(s.get("x"), "[a;b]");
    EXPECT_EQ(s.get("y"), "1;2");
    s.run("v=5; w={$v\n + 1}; trace [one\ntwo]");
    EXPECT_EQ(s.get("w"), "6");
    EXPECT_EQ(s.traced(), "[one\ntwo]");
}

TEST(KetchRun, LinesContinueWithTwoDots) {
    Script s;
    s.run("trace a,\n   ..b\r\n\t.. c\nnext=4");
    EXPECT_EQ(s.traced(), "a,b c") << "the break and the dots vanish; blanks after the dots stay";
    EXPECT_EQ(s.get("next"), "4");
    s.run("total={1 +\n 2}");
    EXPECT_EQ(s.get("total"), "3") << "an open brace carries the statement over the line";
    runExpecting<SyntaxException>(s, "trace a\n\n..c", "Invalid intruction");
}

TEST(KetchRun, CommentsAreWhiteSpace) {
    Script s;
    s.run("// leading\na=1 // the rest ; b=2\n/* block\nover lines ; c=3 */ d=4 /* x */ ;e=[5 // kept raw ]\n]");
    EXPECT_EQ(s.get("a"), "1");
    EXPECT_EQ(s.get("d"), "4");
    EXPECT_EQ(s.get("e"), "[5 // kept raw ]\n]");
    EXPECT_THROW(s.get("b"), RunTimeException);
    EXPECT_THROW(s.get("c"), RunTimeException);
    runExpecting<SyntaxException>(s, "a=1 /* open", "Missing */");
}

TEST(KetchRun, BracketsMustClose) {
    Script s;
    runExpecting<SyntaxException>(s, "trace [a [b]\nc=1", "Missing ]");
    runExpecting<SyntaxException>(s, "trace {1 + [2}", "Missing ]");
    runExpecting<SyntaxException>(s, "trace {1 +", "Missing }");
    s.run("trace [a } b]; trace \\[");
    EXPECT_EQ(s.traced(), "[a } b]|[") << "a closer of the other kind is text; an escaped bracket opens nothing";
}

TEST(KetchRun, ExpansionOfStatements) {
    Script s;
    s.run("n=3; name=world");
    s.run("trace   hello,\t$name!  {$n * 2}  /* gone */ [$name {raw}]  \\$name");
    EXPECT_EQ(s.traced(), "hello, world! 6 [$name {raw}] $name");
    s.run("price=5$ (net)");
    EXPECT_EQ(s.get("price"), "5$ (net)") << "a $ without a name is text";
}

TEST(KetchRun, AssignmentsKeepTheNameAndUnescapeTheValue) {
    Script s;
    s.run("Big.Name-1 = a\\tb \\x41");
    EXPECT_EQ(s.get("Big.Name-1"), "a\tb A");
    EXPECT_THROW(s.get("big.name-1"), RunTimeException) << "variable names keep their case";
    s.run("body=[trace $x]; x=7; [$body]");
    EXPECT_EQ(s.traced(), "7");
}

TEST(KetchRun, InstructionsAreCaseInsensitiveAndMetaIsIgnored) {
    Script s;
    s.run("TRACE a; Mark 1,2 x:y; meta anything at all; META too");
    EXPECT_EQ(s.traced(), "a|mark 1,2 x:y");
    runExpecting<SyntaxException>(s, "draw 1", "Unrecognized instruction");
    runExpecting<SyntaxException>(s, "5 = 6", "Invalid intruction");
    s.run("statement=[a=1] b");
    runExpecting<SyntaxException>(s, "$statement", "Syntax error");
}

TEST(KetchRun, BracketStatementsRunInTheSameFrame) {
    Script s;
    s.run("[a=1\nb=2] c=3");
    EXPECT_EQ(s.get("a") + s.get("b") + s.get("c"), "123") << "a leading bracket is a statement of its own";
    s.run("[local inner=1]");
    EXPECT_EQ(s.get("inner"), "1");
}

TEST(KetchRun, FaultsReportTheInnermostStatementExpanded) {
    Script s;
    s.run("x=2");
    const auto e = runExpecting<RunTimeException>(s, "a=1\nif {$x > 1} [\n  b=2\n  trace {$x} $missing\n]", "Variable does not exist");
    EXPECT_EQ(e.statement(), "trace {$x} $missing") << "expansion failed, so the raw text";
    const auto f = runExpecting<SyntaxException>(s, "if yes [\n  frob {$x * 3}\n]", "Unrecognized instruction");
    EXPECT_EQ(f.statement(), "frob 6");
    EXPECT_EQ(f.describe(), "Unrecognized instruction\nin statement: frob 6");
    const auto g = runExpecting<SyntaxException>(s, "a=1\ntrace [open\nmore", "Missing ]");
    EXPECT_EQ(g.statement(), "trace [open");
    EXPECT_EQ(s.get("a"), "1") << "what ran before the fault stays";
}

TEST(KetchRun, StatementLimitCountsEveryStatementAndPass) {
    Script s;
    s.frame.statementsLeft = 5;
    s.run("a=1; b=2; c=3");
    EXPECT_EQ(s.frame.statementsLeft, 2);
    const auto e = runExpecting<RunTimeException>(s, "d=4; e=5; f=6", "Statements limit reached");
    EXPECT_EQ(e.statement(), "f=6");
    EXPECT_EQ(s.get("e"), "5");

    Script loop;
    loop.frame.statementsLeft = 1000;
    runExpecting<RunTimeException>(loop, "repeat 2000000000 []", "Statements limit reached");
    loop.frame.statementsLeft = 1000;
    runExpecting<RunTimeException>(loop, "for i from:0 to:1e300 []", "Statements limit reached");
}

TEST(KetchRun, ExecutorCanAbort) {
    Script s;
    s.executor.abortAfter = 2;
    const auto e = runExpecting<AbortedException>(s, "a=1\nb=2\nc=3", "Aborted");
    EXPECT_EQ(e.statement(), "c=3");
    EXPECT_EQ(s.get("b"), "2");
    EXPECT_THROW(s.get("c"), RunTimeException);
}

TEST(KetchRun, RecursionLimitIsExactAndRestored) {
    Script s;
    const auto e = runExpecting<RunTimeException>(
        s, "f=[local d={$up + 1}; deepest=$d; call $f up:$d]\ncall $f up:0", "Recursion limit reached");
    EXPECT_EQ(s.get("deepest"), "99") << "the global run and 99 nested calls fill the 100 levels";
    EXPECT_EQ(e.statement(), "call [local d={$up + 1}; deepest=$d; call $f up:$d] up:99")
        << "reported at the call that could not start";
    EXPECT_EQ(s.frame.recursionLeft, 100) << "every level is given back as the fault passes";
    s.run("call [trace ok]");
    EXPECT_EQ(s.traced(), "ok");
}

TEST(KetchRun, NestedBlocksCountAsRecursion) {
    // The global run and 99 brackets inside it are exactly the 100 levels.
    Script s;
    const std::string deep(99, '[');
    s.run(deep + "x=1" + std::string(99, ']'));
    EXPECT_EQ(s.get("x"), "1");
    runExpecting<RunTimeException>(s, "[" + deep + "x=2" + std::string(100, ']'), "Recursion limit reached");
    EXPECT_EQ(s.frame.recursionLeft, 100);
    runExpecting<RunTimeException>(s, std::string(100000, '[') + std::string(100000, ']'), "Recursion limit reached");
}

TEST(KetchRun, OverlongTextsStop) {
    Script s;
    s.frame.statementsLeft = 1000;
    runExpecting<RunTimeException>(s, "a=xxxxxxxxxxxxxxxx; repeat 100 [a=$a$a]", "String too long");
    runExpecting<RunTimeException>(s, "a=xxxxxxxxxxxxxxxx; repeat 100 [a={($a) ($a)}]", "String too long");
}

TEST(KetchRun, SiblingFrameRunsWithAnotherExecutor) {
    Script s;
    RecordingExecutor other;
    s.run("x=1");
    Frame sibling(s.frame, other);
    run(sibling, "trace $x; y=2; mark z");
    EXPECT_EQ(s.get("y"), "2") << "the same variables";
    EXPECT_EQ(other.traces.size(), 2u);
    EXPECT_TRUE(s.executor.traces.empty());
    EXPECT_EQ(s.frame.statementsLeft, 1000000 - 4) << "the same statement counter";
}
