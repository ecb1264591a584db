// Conditionals: the operator spellings, the then and do forms with else, the syntax failures that leave both
// flags alone, and the frames that let an else do see the condition of its own level. Every row of the
// operator table runs in the if_operators scenario.
#include <gtest/gtest.h>

#include <string>

#include "script/conditionals.h"
#include "script_fixture.h"

namespace {

class ConditionalsTest : public ScriptTest {
protected:
  // Sets both flags to values no condition below would leave, so that a test sees whether they moved.
  static void MarkFlags() {
    g_scriptMachine.lastIfResult = 7;
    g_scriptMachine.skipNextBlock = 7;
  }
  static void ExpectFlagsUntouched() {
    EXPECT_EQ(g_scriptMachine.lastIfResult, 7);
    EXPECT_EQ(g_scriptMachine.skipNextBlock, 7);
    EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
  }
  static std::string FormatMessage(int number, const std::string& line) {
    return "tw_xif: Format is:\n  tw_xif (<foo> equalto <bar>) then <any typical script line>\n" +
           std::to_string(number) + " Your line was: " + line + "\n";
  }
};

// ---- the operator table ----

TEST_F(ConditionalsTest, SpellingsMapToTheirCodes) {
  EXPECT_EQ(ConditionOperatorCode("=="), COMPARE_EQUAL);
  EXPECT_EQ(ConditionOperatorCode("NotEqualTo"), COMPARE_NOT_EQUAL);
  EXPECT_EQ(ConditionOperatorCode("=>"), COMPARE_NOT_LESS);
  EXPECT_EQ(ConditionOperatorCode("=<"), COMPARE_NOT_GREATER);
  EXPECT_EQ(ConditionOperatorCode("IN"), COMPARE_IN);
  EXPECT_EQ(ConditionOperatorCode("!:"), COMPARE_NOT_IN);
  EXPECT_EQ(ConditionOperatorCode("equals"), COMPARE_UNSUPPORTED);
  EXPECT_EQ(ConditionOperatorCode(""), COMPARE_UNSUPPORTED);
  EXPECT_EQ(ConditionOperatorCode(nullptr), COMPARE_UNSUPPORTED);
}

TEST_F(ConditionalsTest, AbsentOperandsAreUnequal) {
  EXPECT_FALSE(CompareTokens(nullptr, COMPARE_EQUAL, nullptr));
  EXPECT_TRUE(CompareTokens("a", COMPARE_NOT_EQUAL, nullptr));
  EXPECT_FALSE(CompareTokens(nullptr, COMPARE_IN, "a"));
}

TEST_F(ConditionalsTest, EmptyQuotedOperandsAreEqualText) {
  EXPECT_EQ(Run("tw_xif (\"\" = \"\") then echo empty"), "empty\n");
}

TEST_F(ConditionalsTest, UnsupportedOperatorIsAFalseConditionWithItsMessage) {
  g_scriptMachine.lastIfResult = 1;
  EXPECT_EQ(Run("tw_xif (a equals a) then echo never"),
            "tw_xif: Unsupported comparison operator. Your line was:\n  (a equals a) then echo never\n");
  EXPECT_EQ(g_scriptMachine.lastIfResult, 0);
  EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
}

TEST_F(ConditionalsTest, UnsupportedOperatorRefusesTheBlockOfADo) {
  Run("tw_xif (a equals a) do");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 1);
}

// ---- then ----

TEST_F(ConditionalsTest, ThenCommandKeepsItsQuotes) {
  MakeVars({"then_kept"});
  Run("tw_xif (1 = 1) then tw_xset then_kept \"a;b c\"");
  EXPECT_EQ(Var("then_kept"), "a;b c");
}

TEST_F(ConditionalsTest, FalseThenChangesOnlyTheResult) {
  g_scriptMachine.lastIfResult = 1;
  g_scriptMachine.skipNextBlock = 1;
  EXPECT_EQ(Run("tw_xif (1 = 2) then echo never"), "");
  EXPECT_EQ(g_scriptMachine.lastIfResult, 0);
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 1);
}

TEST_F(ConditionalsTest, ExpandedFormExpandsOperandsAndCommand) {
  Set("cond_x", "7");
  EXPECT_EQ(Run("if (server_var(cond_x) = 7) then echo got server_var(cond_x)"), "got 7\n");
  EXPECT_EQ(Run("tw_xif (1 = 1) then echo got server_var(cond_x)"), "got server_var ( cond_x )\n");
}

TEST_F(ConditionalsTest, ThenInsideABlockRunsBeforeTheNextLine) {
  Load("c", "block a\n{\ntw_xif (1 = 1) then tw_xdoblock c/b\necho last\n}\nblock b\n{\necho from b\n}\n");
  EXPECT_EQ(Run("tw_xdoblock c/a"), "from b\nlast\n");
}

// ---- do ----

TEST_F(ConditionalsTest, TrueDoClearsALeftoverRefusal) {
  g_scriptMachine.skipNextBlock = 1;
  Run("tw_xif (1 = 1) do");
  EXPECT_EQ(g_scriptMachine.lastIfResult, 1);
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 0);
}

TEST_F(ConditionalsTest, DoBlockRunsOnlyWhenTrue) {
  Load("c", "block a\n{\ntw_xif (a = b) do\n{\necho inside\n}\necho after\n}\n");
  EXPECT_EQ(Run("tw_xdoblock c/a"), "after\n");
  Load("d", "block a\n{\nif (server_var(cond_y) = 0) do\n{\necho inside\n}\necho after\n}\n");
  EXPECT_EQ(Run("tw_xdoblock d/a"), "inside\nafter\n");
}

TEST_F(ConditionalsTest, DoAndElseDoPickOneBlockEachWay) {
  Load("c",
       "block pick\n{\ntw_xgetargv which 1\nif (server_var(which) = yes) do\n{\necho then-block\n}\n"
       "else do\n{\necho else-block\n}\necho end\n}\n");
  MakeVars({"which"});
  DoBlock("c/pick", "pick yes");
  EXPECT_EQ(Settle(), "then-block\nend\n");
  DoBlock("c/pick", "pick no");
  EXPECT_EQ(Settle(), "else-block\nend\n");
}

TEST_F(ConditionalsTest, NestedConditionsDoNotDisturbTheOuterElse) {
  // Inside the true block a false condition runs last; the outer else do still sees its own true result.
  Load("c",
       "block a\n{\ntw_xif (1 = 1) do\n{\necho outer-true\ntw_xif (1 = 2) do\n{\necho never\n}\n"
       "tw_xelse do\n{\necho inner-else\n}\ntw_xif (1 = 2) then echo never\n}\n"
       "tw_xelse do\n{\necho outer-else\n}\necho end\n}\n");
  EXPECT_EQ(Run("tw_xdoblock c/a"), "outer-true\ninner-else\nend\n");
  EXPECT_TRUE(g_scriptMachine.ifResultStack.empty());
}

TEST_F(ConditionalsTest, NestedConditionsInsideAnElseBlock) {
  Load("c",
       "block a\n{\ntw_xif (1 = 2) do\n{\necho never\n}\ntw_xelse do\n{\ntw_xif (b in abc) do\n{\necho nested-true\n}\n"
       "tw_xelse do\n{\necho never\n}\n}\necho end\n}\n");
  EXPECT_EQ(Run("tw_xdoblock c/a"), "nested-true\nend\n");
}

TEST_F(ConditionalsTest, DoWithoutItsBlockRefusesTheNextBlockAnywhere) {
  Load("c", "block a\n{\necho a ran\n}\n");
  Run("tw_xif (1 = 2) do");
  EXPECT_EQ(Run("tw_xdoblock c/a"), "");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 0);
  EXPECT_EQ(Run("tw_xdoblock c/a"), "a ran\n");
}

// ---- else ----

TEST_F(ConditionalsTest, XElseRunsItsCommandOnlyAfterAFalseCondition) {
  g_scriptMachine.lastIfResult = 0;
  EXPECT_EQ(Run("tw_xelse echo fallback \"a;b\""), "fallback a;b\n");
  g_scriptMachine.lastIfResult = 1;
  EXPECT_EQ(Run("tw_xelse echo fallback"), "");
  g_scriptMachine.lastIfResult = 0;
  EXPECT_EQ(Run("tw_xelse"), "");
}

TEST_F(ConditionalsTest, ElseDoSetsOrClearsTheRefusal) {
  g_scriptMachine.lastIfResult = 1;
  Run("tw_xelse DO");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 1);
  g_scriptMachine.lastIfResult = 0;
  Run("else do");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 0);
}

TEST_F(ConditionalsTest, ElseExpandsEvenWhenItWillNotRun) {
  tidewright_debug.SetValue(2);
  Set("cond_x", "7");
  std::string out = Run("tw_xif (1 = 1) then echo yes\nelse echo no server_var(cond_x)");
  tidewright_debug.SetValue(0);
  EXPECT_NE(out.find("yes\n"), std::string::npos) << out;
  EXPECT_NE(out.find("tw_else executing: tw tw_xelse echo no server_var(cond_x)\n"), std::string::npos) << out;
  const std::string expanded = "tw executing: tw_xelse echo no 7\n";
  size_t at = out.find(expanded);
  ASSERT_NE(at, std::string::npos) << out;
  EXPECT_EQ(out.find("no 7\n", at + expanded.size()), std::string::npos) << out;
}

TEST_F(ConditionalsTest, OverlongElseIsRefused) {
  g_scriptMachine.lastIfResult = 0;
  EXPECT_EQ(Run("tw_xelse echo " + std::string(2100, 'e')), "tw_xelse: The command string is too long.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
}

// ---- syntax failures ----

TEST_F(ConditionalsTest, ShortLinePrintsTheUsageOfTheDoorUsed) {
  MarkFlags();
  EXPECT_EQ(Run("tw_xif (a = b)"), "Syntax: tw_xif (<token1> <operator> <token2>) <then/do> [typical script line]\n\n");
  EXPECT_EQ(Run("if (a = b)"), "Syntax: if (<token1> <operator> <token2>) <then/do> [typical script line]\n\n");
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, MissingOpeningParenthesisIsNumberTwo) {
  MarkFlags();
  EXPECT_EQ(Run("tw_xif [a = b) then echo x"), FormatMessage(2, "[a = b) then echo x"));
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, WrongOperandCountIsNumberThree) {
  MarkFlags();
  EXPECT_EQ(Run("tw_xif (a b c d) then x"), FormatMessage(3, "(a b c d) then x"));
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, NeitherThenNorDoIsNumberFour) {
  MarkFlags();
  EXPECT_EQ(Run("tw_xif (a = b) when echo x"), FormatMessage(4, "(a = b) when echo x"));
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, ThenWithNothingBehindIsNumberFive) {
  MarkFlags();
  EXPECT_EQ(Run("tw_xif (a = a) then"),
            "tw_xif: Couldn't find then portion. Format is:\n  tw_xif (<foo> equalto <bar>) then <any typical script "
            "line>\n5 Your line was: (a = a) then\n");
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, PortionSearchIsCaseSensitive) {
  MarkFlags();
  std::string out = Run("tw_xif (a = a) DO");
  EXPECT_NE(out.find("\n5 Your line was: (a = a) DO\n"), std::string::npos) << out;
  out = Run("tw_xif (a = a) Then echo x");
  EXPECT_NE(out.find("\n5 Your line was: (a = a) Then echo x\n"), std::string::npos) << out;
  ExpectFlagsUntouched();
}

TEST_F(ConditionalsTest, FailedDoLetsTheNestedBlockRun) {
  Load("c", "block a\n{\ntw_xif (a = b) DO\n{\necho ran anyway\n}\n}\n");
  std::string out = Run("tw_xdoblock c/a");
  EXPECT_NE(out.find("ran anyway\n"), std::string::npos) << out;
}

TEST_F(ConditionalsTest, ExpansionFailureLeavesTheFlags) {
  MarkFlags();
  EXPECT_NE(Run("if (server_var = 1) then echo x").find("tw: Error parsing command string"), std::string::npos);
  EXPECT_EQ(g_scriptMachine.lastIfResult, 7);
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 7);
}

}  // namespace
