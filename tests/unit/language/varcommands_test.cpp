// The server variable commands: assignment, copy, forced values, flags, block arguments, and the commands
// that write to the log, the debug output or the command stream.
#include <gtest/gtest.h>

#include <string>

#include "eiface.h"
#include "edict.h"
#include "host/engine_surface.h"
#include "language/varcommands.h"
#include "language_fixture.h"

namespace {

class VarCommandsTest : public LanguageTest {};

TEST_F(VarCommandsTest, SetMakesAVariableWhateverAutocreateSays) {
  Run("tw_xset vc_new 1");
  ConVar* var = FindServerVar("vc_new");
  ASSERT_NE(var, nullptr);
  EXPECT_STREQ(var->GetString(), "1");
  EXPECT_STREQ(var->GetHelpText(), "Custom server variable.");
}

TEST_F(VarCommandsTest, SetWithHelpKeepsTheHelpOfAnExistingVariable) {
  Run("tw_set vc_help 1 \"my help\"");
  EXPECT_STREQ(FindServerVar("vc_help")->GetHelpText(), "my help");
  Run("tw_set vc_help 2 \"other help\"");
  EXPECT_EQ(Var("vc_help"), "2");
  EXPECT_STREQ(FindServerVar("vc_help")->GetHelpText(), "my help");
}

TEST_F(VarCommandsTest, SetinfoIgnoresAFourthArgument) {
  Run("tw_xsetinfo vc_info value ignored");
  EXPECT_EQ(Var("vc_info"), "value");
}

TEST_F(VarCommandsTest, CopyCopiesTheText) {
  Set("vc_source", "some text");
  MakeVars({"vc_target"});
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw_xcopy vc_target vc_source"), "vc_target = \"some text\"\n");
  EXPECT_EQ(Var("vc_target"), "some text");
}

TEST_F(VarCommandsTest, CopyOntoItselfKeepsTheText) {
  Set("vc_self", "unchanged text");
  Run("tw_xcopy vc_self vc_self");
  EXPECT_EQ(Var("vc_self"), "unchanged text");
}

TEST_F(VarCommandsTest, CopyWantsExactlyTwoNamesAtEveryDoor) {
  EXPECT_EQ(Run("tw_xcopy a b c"), "Syntax: tw_xcopy <varname> <varname2>\n");
  EXPECT_EQ(Run("tw_copy a b c"), "Syntax: tw_xcopy <varname> <varname2>\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Not enough arguments.");
  EXPECT_EQ(Run("tw_xcopy \"\" b"), "Specify a variable!\n");
}

TEST_F(VarCommandsTest, CopyIntoAMissingVariableReportsBoth) {
  Set("vc_source", "x");
  std::string out = Run("tw_xcopy vc_absent vc_source");
  EXPECT_NE(out.find("ERROR: Variable does not exist.\n"), std::string::npos) << out;
  EXPECT_NE(out.find("The var \"vc_absent\" could not be set.\n"), std::string::npos) << out;
  EXPECT_EQ(FindServerVar("vc_absent"), nullptr);
}

TEST_F(VarCommandsTest, CopyFromAMissingVariable) {
  EXPECT_EQ(Run("tw_xcopy vc_target vc_nowhere"), "The var \"vc_nowhere\" could not be found\n");
}

TEST_F(VarCommandsTest, BlockArgumentsOutsideABlock) {
  MakeVars({"vc_argc", "vc_argv", "vc_args"});
  Set("vc_argv", "stale");
  Run("tw_xgetargc vc_argc;tw_xgetargv vc_argv 5;tw_xgetargs vc_args");
  EXPECT_EQ(Var("vc_argc"), "0");
  EXPECT_EQ(Var("vc_argv"), "");
  EXPECT_EQ(Var("vc_args"), "");
}

TEST_F(VarCommandsTest, BlockArgumentsBeyondTheCountAreEmpty) {
  Load("vc", "block b\n{\ntw_xgetargv vc_argv 7\ntw_xgetargv vc_neg -1\n}\n");
  MakeVars({"vc_argv", "vc_neg"});
  Set("vc_argv", "stale");
  Set("vc_neg", "stale");
  DoBlock("vc/b", "one two");
  Settle();
  EXPECT_EQ(Var("vc_argv"), "");
  EXPECT_EQ(Var("vc_neg"), "");
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

TEST_F(VarCommandsTest, CommandUseridIsStored) {
  MakeVars({"vc_userid"});
  g_commandUserid = 17;
  Run("tw_getcmduserid vc_userid");
  g_commandUserid = 0;
  EXPECT_EQ(Var("vc_userid"), "17");
}

TEST_F(VarCommandsTest, ForceValuePassesTheMaximumUntilTheNextSet) {
  static ConVar limited("vc_limited", "1", 0, "limited", true, 0, true, 10);
  Run("tw_xforcevalue vc_limited 50");
  EXPECT_EQ(Var("vc_limited"), "50");
  EXPECT_EQ(limited.GetInt(), 50);
  Run("vc_limited 60");
  EXPECT_EQ(limited.GetInt(), 10);
}

TEST_F(VarCommandsTest, ForceValueGrowsTheString) {
  Set("vc_force", "a");
  std::string longText(300, 'f');
  Run("tw_xforcevalue vc_force " + longText);
  EXPECT_EQ(Var("vc_force"), longText);
  EXPECT_EQ(Run("tw_xforcevalue vc_not_there 1"), "The var \"vc_not_there\" could not be found\n");
}

TEST_F(VarCommandsTest, FlagsAddAndRemove) {
  Set("vc_flags", "1");
  ConVar* var = FindServerVar("vc_flags");
  Run("tw_xflags add CHEAT vc_flags");
  EXPECT_TRUE(var->IsBitSet(FCVAR_CHEAT));
  Run("tw_xflags remove cheat vc_flags");
  EXPECT_FALSE(var->IsBitSet(FCVAR_CHEAT));
  int before = var->GetFlagsRaw();
  EXPECT_EQ(Run("tw_xflags add nosuchword vc_flags"), "");
  EXPECT_EQ(var->GetFlagsRaw(), before);
}

TEST_F(VarCommandsTest, FlagsReachCommandsByExactName) {
  Run("tw_xflags add dontrecord tw_xgetgame");
  EXPECT_TRUE(FindCommand("tw_xgetgame")->IsBitSet(FCVAR_DONTRECORD));
  Run("tw_xflags remove dontrecord tw_xgetgame");
  EXPECT_EQ(Run("tw_xflags add cheat TW_XGETGAME"), "tw_xflags: Could not find var or command: TW_XGETGAME\n");
}

TEST_F(VarCommandsTest, MakePublicAddsNotifyAndReplicated) {
  Set("vc_public", "1");
  Run("tw_makepublic vc_public");
  EXPECT_TRUE(FindServerVar("vc_public")->IsBitSet(FCVAR_NOTIFY | FCVAR_REPLICATED));
  EXPECT_EQ(Run("tw_xmakepublic vc_nope"), "The var \"vc_nope\" could not be found\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Variable couldn't be found.");
}

TEST_F(VarCommandsTest, GetGameStoresTheDescription) {
  MakeVars({"vc_game"});
  Run("tw_xgetgame vc_game");
  EXPECT_EQ(Var("vc_game"), gamedll->GetGameDescription());
}

TEST_F(VarCommandsTest, LogRemovesQuotesAndXlogqKeepsThem) {
  EXPECT_EQ(LogOf(Run("tw_xlog say \"hello there\"")), "say hello there\n");
  EXPECT_EQ(LogOf(Run("tw_xlogq say \"hello there\"")), "say \"hello there\"\n");
  EXPECT_EQ(Run("tw_xlogq"), "tw_xlogq: Please provide something to broadcast.\n");
}

TEST_F(VarCommandsTest, LogvWritesTheValue) {
  Set("vc_logged", "logged value");
  EXPECT_EQ(LogOf(Run("tw_xlogv vc_logged")), "logged value\n");
}

TEST_F(VarCommandsTest, MissingVariableOfLogvGivesTwoErrors) {
  std::string out = Run("tw_xlogv vc_none");
  EXPECT_NE(out.find("ERROR: Variable does not exist.\n"), std::string::npos);
  EXPECT_NE(out.find("ERROR: variable vc_none does not exist.\n"), std::string::npos);
  EXPECT_EQ(Var("tidewright_lasterror"), "Variable does not exist");
}

TEST_F(VarCommandsTest, CommandvRunsTheTextUnexpanded) {
  Set("vc_command", "tw_xlogq server_var(x);echo two");
  std::string out = Run("tw_xcommandv vc_command");
  EXPECT_EQ(LogOf(out), "server_var(x)\n");
  EXPECT_NE(out.find("\ntwo\n"), std::string::npos);
}

TEST_F(VarCommandsTest, CommandvRefusesATextThatDoesNotFitALine) {
  Set("vc_command", ("echo " + std::string(2100, 'c')).c_str());
  std::string out = Run("tw_xcommandv vc_command");
  EXPECT_NE(out.find("too long to run"), std::string::npos);
  EXPECT_EQ(out.find("cccc"), std::string::npos);
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
}

TEST_F(VarCommandsTest, DbgmsgPrintsTheRawTextAtItsLevel) {
  EXPECT_EQ(Run("tw_xdbgmsg 0 hello \"world\""), "hello \"world\"\n");
  EXPECT_EQ(Run("tw_xdbgmsg 3 hidden"), "");
  EXPECT_NE(Run("tw_xdbgmsg 0").find("Invalid syntax.\n"), std::string::npos);
  EXPECT_EQ(Var("tidewright_lasterror"), "Invalid syntax");
}

TEST_F(VarCommandsTest, DbgmsgWithoutABlankHasAnEmptyMessage) { EXPECT_EQ(Run("tw_xdbgmsg 0:x"), "\n"); }

TEST_F(VarCommandsTest, DbgmsgvPrintsTheValue) {
  Set("vc_shown", "shown value");
  EXPECT_EQ(Run("tw_xdbgmsgv 0 vc_shown"), "shown value\n");
  EXPECT_EQ(Run("tw_xdbgmsgv 1 vc_shown"), "");
}

TEST_F(VarCommandsTest, VersionAndFrameCount) {
  EXPECT_NE(Run("tidewright_version").find("Version:2.0.0.248\n"), std::string::npos);
  EXPECT_NE(LogOf(Run("tidewright_log")).find("Version:2.0.0.248\n"), std::string::npos);
  EXPECT_EQ(Run("printcount"), std::to_string(gpGlobals->framecount) + "\n");
}

}  // namespace
