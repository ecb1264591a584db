// The execution engine: lines run through the command buffer in order, nested blocks, frames and block
// arguments, refusals, and handles of lines and blocks that are gone or were never given.
#include <gtest/gtest.h>

#include <string>

#include "language/doors.h"
#include "script_fixture.h"

namespace {

// A condition inside a block, as far as the frame is concerned.
void ConditionFalse_f() { g_scriptMachine.lastIfResult = 0; }
const PlainCommandRow kTestCommands[] = {{"twtest_condition_false", ConditionFalse_f, "Test: a false condition."}};
const CommandTable s_testCommands(kTestCommands);

class MachineTest : public ScriptTest {};

TEST_F(MachineTest, WorkedExampleRunsInBufferOrder) {
  Load("foo",
       "block a\n{\necho a1\n{\necho b1\necho b2\n}\ntw_xdoblock foo/c\necho a2\n}\n"
       "block c\n{\necho c1\n}\n");
  EXPECT_EQ(Run("tw_xdoblock foo/a;echo after"), "a1\nb1\nb2\nc1\na2\nafter\n");
}

TEST_F(MachineTest, CalleeFinishesBeforeTheCallersNextLine) {
  Load("s", "block outer\n{\necho o1\ntw_xdoblock s/inner\necho o2\n}\nblock inner\n{\necho i1\necho i2\n}\n");
  EXPECT_EQ(Run("tw_xdoblock s/outer"), "o1\ni1\ni2\no2\n");
}

TEST_F(MachineTest, SemicolonLineRunsAllItsCommandsFirst) {
  Load("s", "block a\n{\necho x;echo y\necho z\n}\n");
  EXPECT_EQ(Run("tw_xdoblock s/a"), "x\ny\nz\n");
}

TEST_F(MachineTest, CommandsAppendedDuringABlockWaitBehindIt) {
  Load("s", "block a\n{\necho one\necho two\n}\n");
  Standin().Engine().ServerCommand("tw_xdoblock s/a\n");
  Standin().Engine().ServerCommand("echo later\n");
  EXPECT_EQ(Settle(), "one\ntwo\nlater\n");
}

TEST_F(MachineTest, EachLineCostsTwoInsertedCommands) {
  Load("s", "block a\n{\ntw_xset x 1\ntw_xset x 2\n}\n");
  tidewright_scripttrace.SetValue(2);
  std::string out = Run("tw_xdoblock s/a");
  // Per line (tw__sb, two source lines, tw__eb) the line and the tw__ip of its successor.
  size_t inserted = 0;
  for (size_t p = 0; (p = out.find("[trace] ", p)) != std::string::npos; ++p) ++inserted;
  EXPECT_EQ(inserted, 2u * 4u) << out;
}

TEST_F(MachineTest, EndOfBlockResetsTheInstruction) {
  Load("s", "block a\n{\necho x\n}\n");
  Run("tw_xdoblock s/a");
  EXPECT_STREQ(ip.cmd, "(no script)\n");
  EXPECT_STREQ(ip.line, "(console)");
}

TEST_F(MachineTest, ReportInsideALineNamesItsScript) {
  Load("rep", "block a\n{\ntw_xcommandv no_such_var_here\n}\n");
  std::string out = Run("tw_xdoblock rep/a");
  EXPECT_NE(out.find("  Error source tw_rep.txt: tw_xcommandv no_such_var_here\n"), std::string::npos) << out;
}

TEST_F(MachineTest, ReportFromTheConsoleNamesNoScript) {
  std::string out = Run("tw_xcommandv no_such_var_here");
  EXPECT_NE(out.find("  Error source (console): (no script)\n"), std::string::npos) << out;
}

TEST_F(MachineTest, TraceShowsSourceLinesOnly) {
  Load("tr", "block a\n{\necho x\n}\n");
  tidewright_scripttrace.SetValue(1);
  std::string out = Run("tw_xdoblock tr/a");
  tidewright_scripttrace.SetValue(0);
  EXPECT_EQ(out, "[tw_tr.txt] echo x\nx\n");
}

TEST_F(MachineTest, MissingBlockIsNoErrorAndKeepsTheSkipFlag) {
  tidewright_lasterror.SetValue("untouched");
  g_scriptMachine.skipNextBlock = 1;
  EXPECT_EQ(Run("tw_xdoblock foo/missing"), "");
  EXPECT_EQ(Var("tidewright_lasterror"), "untouched");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 1);
}

TEST_F(MachineTest, SkipFlagRefusesTheNextExistingBlockOnce) {
  Load("s", "block a\n{\necho ran\n}\n");
  g_scriptMachine.skipNextBlock = 1;
  EXPECT_EQ(Run("tw_xdoblock s/a"), "");
  EXPECT_EQ(g_scriptMachine.skipNextBlock, 0);
  EXPECT_EQ(Run("tw_xdoblock s/a"), "ran\n");
}

TEST_F(MachineTest, QuotedBlockNameIsNotFound) {
  Load("foo", "block a\n{\necho ran\n}\n");
  EXPECT_EQ(Run("tw_xdoblock \"foo/a\""), "");
}

TEST_F(MachineTest, BlankAroundTheNameIsTrimmedButExtraWordsBelongToIt) {
  Load("foo", "block a\n{\necho ran\n}\n");
  DoBlock("  foo/a \t\r\n", nullptr);
  EXPECT_EQ(Settle(), "ran\n");
  EXPECT_EQ(Run("tw_xdoblock foo/a extra"), "");
}

TEST_F(MachineTest, DoblockUsageNamesTheDoorUsed) {
  EXPECT_EQ(Run("tw_xdoblock"), "Syntax: tw_xdoblock <script>/<function>\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
  EXPECT_EQ(Run("tw_doblock"), "Syntax: tw_doblock <script>/<function>\n");
}

TEST_F(MachineTest, ExpandedDoblockExpandsTheName) {
  Load("foo", "block a\n{\necho ran\n}\n");
  Run("tw_xset which_block foo/a");
  EXPECT_EQ(Run("tw_doblock server_var(which_block)"), "ran\n");
}

TEST_F(MachineTest, EmptyBlockBalancesItsFrame) {
  Load("s", "block empty\n{\n}\n");
  Run("tw_xdoblock s/empty");
  EXPECT_TRUE(g_scriptMachine.ifResultStack.empty());
  EXPECT_TRUE(g_scriptMachine.ownsStack.empty());
}

TEST_F(MachineTest, FrameRestoresTheConditionResult) {
  Load("s", "block inner\n{\ntwtest_condition_false\n}\n");
  g_scriptMachine.lastIfResult = 1;
  Run("tw_xdoblock s/inner");
  EXPECT_EQ(g_scriptMachine.lastIfResult, 1);
}

TEST_F(MachineTest, StrayEndBlockLeavesFieldsAlone) {
  g_scriptMachine.lastIfResult = 1;
  Run("tw__eb");
  EXPECT_EQ(g_scriptMachine.lastIfResult, 1);
  EXPECT_NE(g_scriptMachine.blockArgs, nullptr);
}

TEST_F(MachineTest, ChainOfBlocksUnwinds) {
  std::string text;
  const int depth = 500;
  for (int i = 0; i < depth; ++i)
    text += "block b" + std::to_string(i) + "\n{\ntw_xdoblock chain/b" + std::to_string(i + 1) + "\n}\n";
  text += "block b" + std::to_string(depth) + "\n{\necho bottom\n}\n";
  Load("chain", text);
  EXPECT_EQ(Run("tw_xdoblock chain/b0"), "bottom\n");
  EXPECT_TRUE(g_scriptMachine.ifResultStack.empty());
  EXPECT_EQ(Standin().Cbuf().PendingBytes(), 0u);
}

// ---- block arguments ----

TEST_F(MachineTest, BlockArgumentsReachTheCalleeAndTheBlocksItCalls) {
  Load("args",
       "block callee\n{\ntw_xgetargc n\ntw_xgetargv first 0\ntw_xgetargv third 2\ntw_xgetargs all\n"
       "tw_xdoblock args/inner\n}\n"
       "block inner\n{\ntw_xgetargv inner_second 1\n}\n");
  MakeVars({"n", "first", "third", "all", "inner_second"});
  DoBlock("args/callee", "alpha \"beta gamma\" delta");
  Settle();
  EXPECT_EQ(Var("n"), "3");
  EXPECT_EQ(Var("first"), "alpha");
  EXPECT_EQ(Var("third"), "delta");
  EXPECT_EQ(Var("all"), "\"beta gamma\" delta");
  EXPECT_EQ(Var("inner_second"), "beta gamma");
}

TEST_F(MachineTest, ArgumentsEndWithTheirBlock) {
  Load("args", "block callee\n{\ntw_xgetargv inside 0\n}\nblock after\n{\ntw_xgetargv outside 0\n}\n");
  MakeVars({"inside", "outside"});
  SetVarText("outside", "stale", true);
  DoBlock("args/callee", "given");
  Run("tw_xdoblock args/after");
  EXPECT_EQ(Var("inside"), "given");
  EXPECT_EQ(Var("outside"), "");
  EXPECT_TRUE(g_scriptMachine.argsStack.empty());
  EXPECT_FALSE(g_scriptMachine.blockOwnsArgs);
}

TEST_F(MachineTest, NestedArgumentsAreRestoredForTheCaller) {
  Load("args",
       "block outer\n{\ntw__db args/mid\ntw_xgetargv back 0\n}\n"
       "block mid\n{\ntw_xgetargv mid_sees 0\n}\n");
  MakeVars({"mid_sees", "back"});
  // A block with arguments calls one without: it sees the same values, and after it the caller still does.
  DoBlock("args/outer", "outer_arg");
  Settle();
  EXPECT_EQ(Var("mid_sees"), "outer_arg");
  EXPECT_EQ(Var("back"), "outer_arg");
}

TEST_F(MachineTest, RefusedBlockTakesNoArguments) {
  Load("args", "block callee\n{\necho never\n}\n");
  g_scriptMachine.skipNextBlock = 1;
  DoBlock("args/callee", "x y");
  EXPECT_EQ(Settle(), "");
  EXPECT_TRUE(g_scriptMachine.argsStack.empty());
  EXPECT_FALSE(g_scriptMachine.argsPending);
}

// ---- handles that name nothing ----

TEST_F(MachineTest, ForgedInstructionPointerRunsNothing) {
  Load("s", "block a\n{\necho never\n}\n");
  for (const char* forged : {"tw__ip 12345", "tw__ip 0", "tw__ip -1", "tw__ip abc", "tw__ip 99999999999999999999"}) {
    EXPECT_EQ(Run(forged), "") << forged;
    EXPECT_STREQ(ip.cmd, "(no script)\n");
    EXPECT_STREQ(ip.line, "(console)");
  }
}

TEST_F(MachineTest, ForgedEventHandleRunsNothing) {
  Load("s", "event e\n{\necho never\n}\n");
  for (const char* forged : {"tw__de ffff", "tw__de 0", "tw__de zz", "tw__de ffffffffffffffff"})
    EXPECT_EQ(Run(forged), "") << forged;
}

TEST_F(MachineTest, EventHandleRunsItsBlock) {
  Load("s", "event e\n{\necho event ran\n}\n");
  char command[64];
  snprintf(command, sizeof command, "tw__de %llx",
           static_cast<unsigned long long>(g_scriptMachine.registry.GetEventHash("s/e")));
  EXPECT_EQ(Run(command), "event ran\n");
}

TEST_F(MachineTest, QueuedEventOfARemovedScriptRunsNoOtherBlock) {
  Load("gone", "event e\n{\necho gone ran\n}\n");
  Load("stays", "event e\n{\necho stays ran\n}\n");
  char* commands = g_scriptMachine.registry.BuildEventCommands("e");
  Standin().Engine().ServerCommand(commands);
  free(commands);
  g_scriptMachine.registry.RemoveScript("gone");
  EXPECT_EQ(Settle(), "stays ran\n");
}

TEST_F(MachineTest, BlockThatUnloadsItsOwnScriptStopsSafely) {
  Load("self", "block a\n{\necho before\ntw_xunload self\necho after\n}\n");
  std::string out = Run("tw_xdoblock self/a");
  EXPECT_NE(out.find("before\n"), std::string::npos);
  EXPECT_NE(out.find("Script removed: self\n"), std::string::npos);
  EXPECT_EQ(out.find("after\n"), std::string::npos) << out;
  EXPECT_STREQ(ip.cmd, "(no script)\n");
}

TEST_F(MachineTest, LineAfterItsScriptWasRemovedDoesNotRun) {
  Load("s", "block a\n{\necho one\ntw__unload s\necho two\n}\n");
  EXPECT_EQ(Run("tw_xdoblock s/a"), "one\nScript removed: s\n");
}

}  // namespace
