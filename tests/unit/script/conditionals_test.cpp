// Conditionals: a null spelling, absent operands, and the syntax failures that leave both flags as they
// were. What a user sees of conditions runs in the if_ scenarios.
#include <gtest/gtest.h>

#include "script/conditionals.h"
#include "script_fixture.h"

namespace {

class ConditionalsTest : public ScriptTest {};

// The spellings run in the script/if_operators scenario; a console line can't pass a null token.
TEST_F(ConditionalsTest, NullSpellingAndAbsentOperands) {
  EXPECT_EQ(ConditionOperatorCode(nullptr), COMPARE_UNSUPPORTED);
  EXPECT_FALSE(CompareTokens(nullptr, COMPARE_EQUAL, nullptr));
  EXPECT_TRUE(CompareTokens("a", COMPARE_NOT_EQUAL, nullptr));
  EXPECT_FALSE(CompareTokens(nullptr, COMPARE_IN, "a"));
}
TEST_F(ConditionalsTest, SyntaxFailuresLeaveBothFlags) {
  for (const char* line : {"tw_xif (a = b)", "if (a = b)", "tw_xif [a = b) then echo x", "tw_xif (a b c d) then x",
                           "tw_xif (a = b) when echo x", "tw_xif (a = a) then", "tw_xif (a = a) DO",
                           "tw_xif (a = a) Then echo x", "if (server_var = 1) then echo x"}) {
    g_scriptMachine.lastIfResult = 7;
    g_scriptMachine.skipNextBlock = 7;
    Run(line);
    EXPECT_EQ(g_scriptMachine.lastIfResult, 7) << line;
    EXPECT_EQ(g_scriptMachine.skipNextBlock, 7) << line;
  }
}

}  // namespace
