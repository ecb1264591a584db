// Math: the edges of tw_xmath and tw_xmathparse that the console scenarios don't reach: saturation, odd
// operands, autocreated assignment targets, and random numbers within their bounds.
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

// The operators, failures and parsed texts a console shows run in the library/math and library/mathparse
// scenarios; these are the limits and edges they don't reach.
TEST_F(MathTest, OperatorEdgesAndSaturation) {
  const MathCase cases[] = {
      {"5", "set 9.9", "9"},
      {"2.0", "power 3.9", "8.000000"},  // the exponent is read as an integer
      {"-3.7", "abs", "3"},              // cut toward zero, stored as an integer
      {"", "sin", ""},  // sin of an empty variable stores 0.0, equal to its float: the text stays
      {"1e5", "+ 1", "1e5"},  // not numeric: refused, unchanged
      {"2147483647", "+ 1", "2147483647"},
      {"-2147483648", "- 1", "-2147483648"},
      {"-2147483648", "abs", "2147483647"},
      {"5", "root 0", "2147483647"},
  };
  for (const MathCase& c : cases) {
    SCOPED_TRACE(std::string(c.before) + " " + c.line);
    Set("v", c.before);
    Run(std::string("tw_xmath v ") + c.line);
    EXPECT_EQ(Var("v"), c.after);
  }
}

TEST_F(MathTest, ParsedWholeNumbersPastTheIntegerRangeAndFractions) {
  MakeVars({"v"});
  Run("tw_xmathparse v 1e10");
  EXPECT_EQ(Var("v"), "10000000000");
  Run("tw_xmathparse v \"0.1+0.2\"");
  EXPECT_EQ(Var("v"), "0.300000");
  float result = 0;
  EXPECT_TRUE(Math_Evaluate("6*7", result));
  EXPECT_EQ(result, 42.0f);
}

TEST_F(MathTest, AutocreateMakesTheVariableOfANewName) {
  tidewright_autocreate.SetValue("1");
  Set("mv", "");
  Run("tw_xmathparse mv \"fresh = 5\"");
  ASSERT_NE(FindServerVar("fresh"), nullptr);
  EXPECT_EQ(FindServerVar("fresh")->GetFloat(), 5.0f);
  EXPECT_EQ(Var("fresh"), "");
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
}

}  // namespace
