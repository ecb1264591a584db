// The server variable commands where a console can't see the outcome: bounds passed by forcevalue, flag bits,
// a null record of block arguments, and a command text too long for a line. The rest runs in the
// language_varcommands scenario.
#include <gtest/gtest.h>

#include <string>

#include "language_fixture.h"

namespace {

class VarCommandsTest : public LanguageTest {};

TEST_F(VarCommandsTest, ForceValuePassesTheMaximumUntilTheNextSet) {
  static ConVar limited("vc_limited", "1", 0, "limited", true, 0, true, 10);
  Run("tw_xforcevalue vc_limited 50");
  EXPECT_EQ(Var("vc_limited"), "50");
  EXPECT_EQ(limited.GetInt(), 50);
  Run("vc_limited 60");
  EXPECT_EQ(limited.GetInt(), 10);
}

TEST_F(VarCommandsTest, FlagsOfVariablesAndCommands) {
  Set("vc_flags", "1");
  ConVar* var = FindServerVar("vc_flags");
  Run("tw_xflags add CHEAT vc_flags");
  EXPECT_TRUE(var->IsBitSet(FCVAR_CHEAT));
  Run("tw_xflags remove cheat vc_flags");
  EXPECT_FALSE(var->IsBitSet(FCVAR_CHEAT));
  int before = var->GetFlagsRaw();
  EXPECT_EQ(Run("tw_xflags add nosuchword vc_flags"), "");
  EXPECT_EQ(var->GetFlagsRaw(), before);
  Run("tw_makepublic vc_flags");
  EXPECT_TRUE(var->IsBitSet(FCVAR_NOTIFY | FCVAR_REPLICATED));
  Run("tw_xflags add dontrecord tw_xgetgame");
  EXPECT_TRUE(FindCommand("tw_xgetgame")->IsBitSet(FCVAR_DONTRECORD));
  Run("tw_xflags remove dontrecord tw_xgetgame");
  EXPECT_FALSE(FindCommand("tw_xgetgame")->IsBitSet(FCVAR_DONTRECORD));
}

TEST_F(VarCommandsTest, NullBlockArgumentsStoreEmptyText) {
  CommandArgs* saved = g_scriptMachine.blockArgs;
  g_scriptMachine.blockArgs = nullptr;
  MakeVars({"vc_args", "vc_argc"});
  Set("vc_args", "stale");
  Run("tw_xgetargs vc_args;tw_xgetargc vc_argc");
  g_scriptMachine.blockArgs = saved;
  EXPECT_EQ(Var("vc_args"), "");
  EXPECT_EQ(Var("vc_argc"), "0");
}

TEST_F(VarCommandsTest, CommandvRefusesATextThatDoesNotFitALine) {
  Set("vc_command", ("echo " + std::string(2100, 'c')).c_str());
  std::string out = Run("tw_xcommandv vc_command");
  EXPECT_NE(out.find("too long to run"), std::string::npos);
  EXPECT_EQ(out.find("cccc"), std::string::npos);
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
}

}  // namespace
