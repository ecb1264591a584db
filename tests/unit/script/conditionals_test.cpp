// Conditionals: the operator spellings, absent operands, and the syntax failures that leave both flags as they
// were. What a user sees of conditions runs in the if_ scenarios.
#include <gtest/gtest.h>

#include "script/conditionals.h"
#include "script_fixture.h"

namespace {

class ConditionalsTest : public ScriptTest {};

TEST_F(ConditionalsTest, SpellingsAndAbsentOperands) {
  const struct {
    const char* spelling;
    CompareCode code;
  } cases[] = {{"==", COMPARE_EQUAL},        {"NotEqualTo", COMPARE_NOT_EQUAL}, {"=>", COMPARE_NOT_LESS},
               {"=<", COMPARE_NOT_GREATER}, {"IN", COMPARE_IN},                {"!:", COMPARE_NOT_IN},
               {"equals", COMPARE_UNSUPPORTED}, {"", COMPARE_UNSUPPORTED},    {nullptr, COMPARE_UNSUPPORTED}};
  for (const auto& c : cases)
    EXPECT_EQ(ConditionOperatorCode(c.spelling), c.code) << (c.spelling ? c.spelling : "null");
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
