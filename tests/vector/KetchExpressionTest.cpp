#include "KetchScript.h"

#include "vector/KetchExpression.h"

#include <gtest/gtest.h>

#include <string>

using namespace tw::Ketch;
using namespace tw::Ketch::testing;

namespace {

class KetchExpression : public ::testing::Test {
protected:
    Script script;

    std::string eval(std::string_view text) { return evaluate(script.frame, text).toString(); }

    template <typename E>
    void expectError(std::string_view text, std::string_view message) {
        try {
            evaluate(script.frame, text);
            ADD_FAILURE() << "no exception for " << text;
        } catch (const E& e) {
            EXPECT_EQ(e.message(), message) << text;
        } catch (const Exception& e) {
            ADD_FAILURE() << "wrong type for " << text << ": " << e.message();
        }
    }
};

}  // namespace

TEST_F(KetchExpression, Precedence) {
    EXPECT_EQ(eval("1 + 2 * 3"), "7");
    EXPECT_EQ(eval("(1 + 2) * 3"), "9");
    EXPECT_EQ(eval("10 - 4 - 3"), "3") << "left to right";
    EXPECT_EQ(eval("2 ** 3 ** 2"), "512") << "power groups to the right";
    EXPECT_EQ(eval("-2 ** 2"), "-4") << "a sign's operand takes in the power";
    EXPECT_EQ(eval("2 * 3 ** 2"), "18");
    EXPECT_EQ(eval("7 % 4 + 1"), "4");
    EXPECT_EQ(eval("1 + 2 < 4"), "yes");
    EXPECT_EQ(eval("1 < 2 && 3 < 2 || 1"), "yes");
    EXPECT_EQ(eval("!1 || 0"), "no");
}

TEST_F(KetchExpression, ComparesNumbersWithRelativeTolerance) {
    EXPECT_EQ(eval("0.1 + 0.2 == 0.3"), "yes");
    EXPECT_EQ(eval("0.1 + 0.2 != 0.3"), "no");
    EXPECT_EQ(eval("1e20 == 1e20 + 1000"), "yes");
    EXPECT_EQ(eval("1 == 1.000000001"), "no");
    EXPECT_EQ(eval("0 == 1e-20"), "no") << "tolerance is relative, so nothing is near zero but zero";
    EXPECT_EQ(eval("[10] > 9"), "yes") << "text that reads as a number compares as one";
    EXPECT_EQ(eval("[10] > [9x]"), "no") << "a number sorts before text";
    EXPECT_EQ(eval("abc < abd"), "yes");
    EXPECT_EQ(eval("ab < abc"), "yes");
    EXPECT_EQ(eval("[\xC3] > z"), "yes") << "bytes compare unsigned";
    EXPECT_EQ(eval("2 >= 2"), "yes");
    EXPECT_EQ(eval("2 <= 1"), "no");
    EXPECT_EQ(eval("1 < 2 < 3"), "yes") << "comparisons group to the right: 1 < (2 < 3), a number before text";
}

TEST_F(KetchExpression, LogicalOperatorsAcceptSingleCharacters) {
    EXPECT_EQ(eval("yes & no"), "no");
    EXPECT_EQ(eval("no | yes"), "yes");
    EXPECT_EQ(eval("1 && 2"), "yes");
}

TEST_F(KetchExpression, UntakenBranchesAreNotComputed) {
    EXPECT_EQ(eval("0 ? 1 / 0 : 5"), "5");
    EXPECT_EQ(eval("1 ? 5 : $missing"), "5");
    EXPECT_EQ(eval("no && 1 / 0"), "no");
    EXPECT_EQ(eval("yes || sqrt -1"), "yes");
    EXPECT_EQ(eval("1 ? 2 ? a : b : c"), "a");
    EXPECT_EQ(eval("0 ? x : 0 ? y : z"), "z");
    expectError<SyntaxException>("0 ? 1 / : 2", "Syntax error");
}

TEST_F(KetchExpression, ArithmeticFaults) {
    expectError<RunTimeException>("1 / 0", "Division by zero");
    expectError<RunTimeException>("1 % 0", "Modulo by zero");
    expectError<RunTimeException>("(-1) ** 0.5", "Math error");
    expectError<RunTimeException>("10 ** 400", "Math error");
    expectError<RunTimeException>("sqrt -1", "Math error");
    expectError<RunTimeException>("log 0", "Math error");
    expectError<RunTimeException>("acos 2", "Math error");
    expectError<SyntaxException>("1 + abc", "Invalid number");
    expectError<SyntaxException>("!maybe", "Invalid boolean (should be 'yes' or 'no')");
    EXPECT_EQ(eval("7.5 % 2"), "1.5") << "fmod";
    EXPECT_EQ(eval("-7 % 3"), "-1");
}

TEST_F(KetchExpression, PostfixPercent) {
    EXPECT_EQ(eval("50%"), "0.5");
    EXPECT_EQ(eval("(0 - 50)%"), "0.5") << "the magnitude";
    EXPECT_EQ(eval("50% * 4"), "2");
    EXPECT_EQ(eval("50 % 8"), "2") << "with a right operand it is the modulo";
}

TEST_F(KetchExpression, JuxtapositionConcatenates) {
    EXPECT_EQ(eval("a b"), "ab");
    EXPECT_EQ(eval("1 2"), "12");
    EXPECT_EQ(eval("x (1 + 2) y"), "x3y");
    EXPECT_EQ(eval("5px"), "5px");
    EXPECT_EQ(eval("[a b]\\ [c]"), "a b c");
    EXPECT_EQ(eval("1 + 2 3"), "24") << "juxtaposition binds tighter than +";
}

TEST_F(KetchExpression, Variables) {
    script.run("x=5; name=x; item2=two; i=2");
    EXPECT_EQ(eval("$x * 2"), "10");
    EXPECT_EQ(eval("$$name"), "5") << "a $ of a $";
    EXPECT_EQ(eval("$item$i"), "two") << "the name is built by juxtaposition";
    EXPECT_EQ(eval("$(item 2)"), "two");
    expectError<RunTimeException>("$nothing", "Variable does not exist");
}

TEST_F(KetchExpression, MathematicalFunctions) {
    EXPECT_EQ(eval("abs -3"), "3");
    EXPECT_EQ(eval("floor 2.7 + ceil 2.2"), "5");
    EXPECT_EQ(eval("sqrt 16"), "4");
    EXPECT_EQ(eval("sqrt(9) + 1"), "4");
    EXPECT_EQ(eval("cos 0 + sin 0 + tan 0"), "1");
    EXPECT_EQ(eval("atan 1 * 4"), "3.14159265359");
    EXPECT_EQ(eval("exp 1"), "2.718281828459");
    EXPECT_EQ(eval("log10 1000"), "3");
    EXPECT_EQ(eval("tanh 0 + sinh 0 + cosh 0 + asin 0 + acos 1 + log 1"), "1");
    EXPECT_EQ(eval("SQRT"), "SQRT") << "function names are exact";
    EXPECT_EQ(eval("sqrt-1"), "sqrt-1") << "identifiers take in '-'";
}

TEST_F(KetchExpression, EscapesGiveOneCharacter) {
    EXPECT_EQ(eval("\\x41\\66\\u0043"), "ABC");
    EXPECT_EQ(eval("a\\ b"), "a b");
    EXPECT_EQ(eval("\\n"), "\n");
    expectError<SyntaxException>("\\u0100", "Invalid character escape code inside { } expression");
    expectError<SyntaxException>("\\300", "Invalid character escape code inside { } expression");
    expectError<SyntaxException>("a\\", "Invalid character escape code inside { } expression");
}

TEST_F(KetchExpression, MalformedText) {
    expectError<SyntaxException>("", "Unexpected end");
    expectError<SyntaxException>("1 +", "Unexpected end");
    expectError<SyntaxException>("sin", "Unexpected end");
    expectError<SyntaxException>("1 = 2", "Syntax error");
    expectError<SyntaxException>("1 ! 2", "Syntax error");
    expectError<SyntaxException>("(1 + 2", "Syntax error");
    expectError<SyntaxException>("1 + 2)", "Syntax error");
    expectError<SyntaxException>("1, 2", "Syntax error");
    expectError<SyntaxException>("*", "Syntax error");
    expectError<SyntaxException>("1 ? 2", "Expected :");
    expectError<SyntaxException>("[abc", "Missing ]");
}

TEST_F(KetchExpression, DeepNestingIsBoundedNotFatal) {
    EXPECT_EQ(eval(std::string(150, '(') + "1" + std::string(150, ')')), "1");
    expectError<SyntaxException>(std::string(100000, '(') + "1", "Expression nested too deeply");
    expectError<SyntaxException>(std::string(100000, '-') + "1", "Expression nested too deeply");
    expectError<SyntaxException>(std::string(100000, '$') + "x", "Expression nested too deeply");
}
