// The console doors: names, help texts, the prologue with its usage line, the current record of the
// expanded twin, and the prefix twin tw_logq.
#include <gtest/gtest.h>

#include <string>

#include "language/doors.h"
#include "language_fixture.h"

namespace {

class DoorsTest : public LanguageTest {};

TEST_F(DoorsTest, EveryBaseHasBothConsoleDoors) {
  for (const char* base : {"doblock", "load", "unload", "_unload", "set", "setinfo", "copy", "getargv", "getargc",
                           "getargs", "getcmduserid", "forcevalue", "flags", "makepublic", "getgame", "log", "logv",
                           "dbgmsg", "dbgmsgv", "commandv", "createvectorfrompoints", "createvectorstring",
                           "splitvectorstring", "getgravityvector"}) {
    EXPECT_NE(FindCommand(("tw_x" + std::string(base)).c_str()), nullptr) << base;
    EXPECT_NE(FindCommand(("tw_" + std::string(base)).c_str()), nullptr) << base;
  }
  for (const char* name : {"tw__ip", "tw__db", "tw__de", "tw__sb", "tw__eb", "tw", "twnq", "tw_xnq", "tw_xlogq",
                           "tw_logq", "printcount", "tidewright_version", "tidewright_log"})
    EXPECT_NE(FindCommand(name), nullptr) << name;
}

TEST_F(DoorsTest, ExpandedTwinHelpAddsTheExpansionSentence) {
  EXPECT_STREQ(FindCommand("tw_xset")->GetHelpText(), "Adds/sets a new server/global variable.");
  EXPECT_STREQ(FindCommand("tw_set")->GetHelpText(),
               "Adds/sets a new server/global variable. Expands event and server variables.");
}

TEST_F(DoorsTest, UsageNamesTheDoorThatWasUsed) {
  EXPECT_EQ(Run("tw_xset"), "Syntax: tw_xset <key> <value> [description]\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
  EXPECT_EQ(Run("tw_set x"), "Syntax: tw_set <key> <value> [description]\n");
}

TEST_F(DoorsTest, PrologueTracesTheArgumentsAtLevelFive) {
  tidewright_debug.SetValue(5);
  std::string out = Run("tw_xset door_x 1");
  EXPECT_NE(out.find("Command: door_x 1;\n"), std::string::npos) << out;
}

TEST_F(DoorsTest, ExpandedTwinReplacesTheCurrentRecord) {
  Set("door_value", "a b");
  Run("tw_set door_target server_var(door_value)");
  EXPECT_EQ(Var("door_target"), "a b");
  ASSERT_NE(g_currentArgs, nullptr);
  EXPECT_STREQ(g_currentArgs->Argv(0), "tw_set");
  EXPECT_STREQ(g_currentArgs->Argv(2), "a b");
}

TEST_F(DoorsTest, FailedExpansionLeavesThePreviousRecord) {
  Run("tw_set door_target kept");
  std::string out = Run("tw_set door_target server_var");
  EXPECT_NE(out.find("tw: Error parsing command string: door_target server_var\n"), std::string::npos) << out;
  EXPECT_EQ(Var("tidewright_lasterror"), "Error while parsing command string.");
  EXPECT_STREQ(g_currentArgs->Argv(2), "kept");
}

TEST_F(DoorsTest, XTwinLeavesTheCurrentRecordAlone) {
  Run("tw_set door_target first");
  CommandArgs* before = g_currentArgs;
  Run("tw_xset door_target second");
  EXPECT_EQ(g_currentArgs, before);
}

TEST_F(DoorsTest, XTwinPassesQuotedTextAsOneArgument) {
  Run("tw_xset door_target \"server_var(x)\"");
  EXPECT_EQ(Var("door_target"), "server_var(x)");
}

TEST_F(DoorsTest, PrefixTwinRunsThroughTw) {
  Set("door_value", "7");
  EXPECT_EQ(LogOf(Run("tw_logq value server_var(door_value) \"two words\"")), "value 7 \"two words\"\n");
}

TEST_F(DoorsTest, PrefixTwinBelowItsMinimum) {
  EXPECT_EQ(Run("tw_logq"), "tw_log: Please provide something to log.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Not enough arguments.");
}

TEST_F(DoorsTest, ValueRuleReportsAVariableThatCannotBeSet) {
  tidewright_autocreate.SetValue("");
  std::string out = Run("tw_xgetargc door_never_made");
  EXPECT_NE(out.find("The var \"door_never_made\" could not be set\n"), std::string::npos) << out;
}

TEST_F(DoorsTest, ValueRulePrintsTheStoredValueAtLevelOne) {
  MakeVars({"door_count"});
  tidewright_debug.SetValue(1);
  EXPECT_NE(Run("tw_xgetargc door_count").find("door_count = 0\n"), std::string::npos);
}

}  // namespace
