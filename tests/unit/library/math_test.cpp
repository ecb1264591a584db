// Math: tw_xmath's operators by the class of the variable's text, with the text each store leaves; the
// shared parser's live variables, assignments, word operators and bindings across a level start; the texts
// mathparse stores for whole, fractional, huge and undefined results.
#include <gtest/gtest.h>

#include <string>

#include "../script/script_fixture.h"
#include "library/math.h"

namespace {

class MathTest : public ScriptTest {
protected:
  void TearDown() override {
    tidewright_autocreate.SetValue("");
    ScriptTest::TearDown();
  }
};

struct MathCase {
  const char* before;
  const char* line;  // on the variable v
  const char* after;
};

TEST_F(MathTest, OperatorsFollowTheClassOfTheText) {
  const MathCase cases[] = {
      {"5", "+ 1.9", "6"},  // an integer variable reads its value as an integer
      {"5.0", "+ 1.9", "6.900000"},
      {"5", "/ 2", "2.500000"},  // divide always stores a float
      {"5", "ADD 2", "7"},
      {"5", "subtract 7", "-2"},
      {"6", "* 7", "42"},
      {"5", "set 9.9", "9"},
      {"5.5", "= 2.25", "2.250000"},
      {"2", "^ 10", "1024"},
      {"2.0", "power 3.9", "8.000000"},  // the exponent is read as an integer
      {"27", "root 3", "3"},
      {"16.0", "root 2", "4.000000"},
      {"-7", "abs", "7"},
      {"-3.7", "abs", "3"},  // cut toward zero, stored as an integer
      {"0.5", "SIN", "0.479426"},
      {"5", "float", "5.0000000000"},
      {"3.7", "int", "3.000000"},
      {"", "sin", ""},  // sin of an empty variable stores 0.0, equal to its float: the text stays
      {"2147483647", "+ 1", "2147483647"},  // integer results saturate
      {"-2147483648", "- 1", "-2147483648"},
      {"2000000000", "* 3", "2147483647"},
      {"2", "^ 200", "2147483647"},
      {"-2147483648", "abs", "2147483647"},
      {"5", "/ 0", "inf"},  // division by zero is not tested
      {"5", "root 0", "2147483647"},
  };
  for (const MathCase& c : cases) {
    Set("v", c.before);
    Run(std::string("tw_xmath v ") + c.line);
    EXPECT_EQ(Var("v"), c.after) << c.before << " " << c.line;
  }
}

TEST_F(MathTest, FailuresTellWhatWentWrong) {
  struct Case {
    const char* before;
    const char* line;
    const char* output;
    const char* lastError;
  };
  const Case cases[] = {
      {"", "tw_xmath v + 1", "Math function called on a non-numeric value.\n",
       "Math function called on a non-numeric value."},
      {"1e5", "tw_xmath v + 1", "Math function called on a non-numeric value.\n",
       "Math function called on a non-numeric value."},
      {"5", "tw_xmath v + 1 2", "Incorrect number of parameter\n", "Incorrect number of parameters"},
      {"5", "tw_xmath v frob 1", "Bad operation\n", "Invalid operation"},
      {"5.0", "tw_xmath v frob 1", "Bad operation\n", "Bad operation"},
      {"5", "tw_xmath v frob", "Bad operation\n", "Invalid operation"},
      {"5", "tw_xmath", "Specify a var !\nSyntax: tw_xmath <variable> <operator> <value1> [value2]\n",
       "Not enough arguments."},
      {"5", "tw_xmath v_missing + 1", "The var \"v_missing\" could not be found\n", ""},
  };
  for (const Case& c : cases) {
    Set("v", c.before);
    Set("tidewright_lasterror", "");
    EXPECT_EQ(Run(c.line), c.output) << c.line;
    EXPECT_EQ(Var("v"), c.before) << c.line;
    EXPECT_EQ(Var("tidewright_lasterror"), c.lastError) << c.line;
  }
}

TEST_F(MathTest, ParsedResultsAreStoredAsIntegerOrFloatText) {
  struct Case {
    const char* expression;
    const char* stored;
  };
  const Case cases[] = {
      {"2+2", "4"},          {"2/4", "0.500000"}, {"-0", "0"},
      {"1 and 0", "0"},      {"1 or 0", "1"},     {"1 xor 1", "0"},
      {"2 > 1 and 3 > 2", "1"}, {"if(1, 2, 3)", "2"}, {"if(0, 2, 3)", "3"},
      {"!0+1", "0"},  // "!" binds loosest: !(0+1)
      {"!0", "1"},           {"2^10", "1024"},    {"1e10", "10000000000"},
      {"1e30", "1000000015047466219876688855040"},  // past the 64-bit range: the float's whole text
      {"1/0", "inf"},        {"0.1+0.2", "0.300000"},
  };
  MakeVars({"v"});
  for (const Case& c : cases) {
    Run(std::string("tw_xmathparse v \"") + c.expression + "\"");
    EXPECT_EQ(Var("v"), c.stored) << c.expression;
  }
}

TEST_F(MathTest, ExpressionVariablesAreLiveAndAssignmentsReachTheirFloatOnly) {
  Set("mx", "3");
  Set("mv", "");
  Run("tw_xmathparse mv \"2*mx+1\"");
  EXPECT_EQ(Var("mv"), "7");
  Set("mx", "10");
  Run("tw_xmathparse mv \"2*mx+1\"");  // the same expression, compiled once, reads the new value
  EXPECT_EQ(Var("mv"), "21");
  Run("tw_xmathparse mv \"mx = 4\"");
  EXPECT_EQ(Var("mx"), "10");  // the text stays
  EXPECT_EQ(FindServerVar("mx")->GetFloat(), 4.0f);
  Run("tw_xmathparse mv \"mx * 2\"");
  EXPECT_EQ(Var("mv"), "8");
}

TEST_F(MathTest, ANameWithoutVariableReadsTheSpareUntilTheNextLevel) {
  Set("mv", "");
  EXPECT_EQ(Run("tw_xmathparse mv \"late + 1\""),
            "ERROR: Variable does not exist.\n  Error source (console): (no script)\n");
  EXPECT_EQ(Var("mv"), "1");
  Set("late", "41");
  Run("tw_xmathparse mv \"late + 1\"");
  EXPECT_EQ(Var("mv"), "1");  // still bound to the spare
  Math_OnLevelInit();
  Run("tw_xmathparse mv \"late + 1\"");
  EXPECT_EQ(Var("mv"), "42");  // bound anew
}

TEST_F(MathTest, AutocreateMakesTheVariableOfANewName) {
  tidewright_autocreate.SetValue("1");
  Set("mv", "");
  Run("tw_xmathparse mv \"fresh = 5\"");
  ASSERT_NE(FindServerVar("fresh"), nullptr);
  EXPECT_EQ(FindServerVar("fresh")->GetFloat(), 5.0f);
  EXPECT_EQ(Var("fresh"), "");
}

TEST_F(MathTest, ARefusedExpressionChangesNothing) {
  Set("mv", "unchanged");
  Set("tidewright_lasterror", "");
  EXPECT_EQ(Run("tw_xmathparse mv \"1 +\""), "Exception: Unexpected end of expression at position 4!\n");
  EXPECT_EQ(Run("tw_xmathparse mv \"(1\""), "Exception: Missing parenthesis!\n");
  EXPECT_EQ(Run("tw_xmathparse mv \"if(1, 2)\""),
            "Exception: Too few parameters for function \"if\" at expression position 7!\n");
  EXPECT_EQ(Var("mv"), "unchanged");
  EXPECT_EQ(Var("tidewright_lasterror"), "");
  EXPECT_EQ(Run("tw_xmathparse mv_missing 1"), "The var \"mv_missing\" could not be set\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Variable does not exist");
  float result = 0;
  EXPECT_TRUE(Math_Evaluate("6*7", result));
  EXPECT_EQ(result, 42.0f);
}

TEST_F(MathTest, RandomIntegersStayWithinTheirBounds) {
  Set("mr", "");
  for (int i = 0; i < 50; ++i) {
    Run("tw_xrand mr 3 5");
    const int value = atoi(Var("mr").c_str());
    EXPECT_TRUE(value >= 3 && value <= 5) << value;
  }
  Run("tw_rand mr 7 7");
  EXPECT_EQ(Var("mr"), "7");
  EXPECT_EQ(Run("tw_xrand mr 1"), "Syntax: tw_xrand <cvar> <minimum> <maximum>\n");
  EXPECT_EQ(Run("tw_xrand \"\" 1 2"), "Specify a var !\n");
}

}  // namespace
