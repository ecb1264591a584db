// The execution engine below what a console shows: the cost of a line in the buffer, frames that balance,
// block arguments, and handles of lines and blocks that are gone or were never given. The order in which
// lines run is shown by the script_ scenarios.
#include <gtest/gtest.h>

#include <string>

#include "script_fixture.h"

namespace {

class MachineTest : public ScriptTest {};

TEST_F(MachineTest, LinesCostTwoCommandsAndFramesBalance) {
  std::string text = "block empty\n{\n}\nblock a\n{\ntw_xset x 1\ntw_xset x 2\n}\n";
  const int depth = 500;
  for (int i = 0; i < depth; ++i)
    text += "block b" + std::to_string(i) + "\n{\ntw_xdoblock s/b" + std::to_string(i + 1) + "\n}\n";
  text += "block b" + std::to_string(depth) + "\n{\necho bottom\n}\n";
  Load("s", text);
  tidewright_scripttrace.SetValue(2);
  std::string out = Run("tw_xdoblock s/a");
  tidewright_scripttrace.SetValue(0);
  // Per line (tw__sb, two source lines, tw__eb) the line and the tw__ip of its successor.
  size_t inserted = 0;
  for (size_t p = 0; (p = out.find("[trace] ", p)) != std::string::npos; ++p) ++inserted;
  EXPECT_EQ(inserted, 2u * 4u) << out;
  for (const char* line : {"tw_xdoblock s/empty", "tw_xdoblock s/b0"}) {
    Run(line);
    EXPECT_TRUE(g_scriptMachine.ifResultStack.empty()) << line;
    EXPECT_TRUE(g_scriptMachine.ownsStack.empty()) << line;
    EXPECT_EQ(Standin().Cbuf().PendingBytes(), 0u) << line;
    EXPECT_STREQ(ip.cmd, "(no script)\n");
    EXPECT_STREQ(ip.line, "(console)");
  }
  // DoBlock trims blanks around the name.
  DoBlock("  s/b500 \t\r\n", nullptr);
  EXPECT_EQ(Settle(), "bottom\n");
}

// ---- block arguments ----

TEST_F(MachineTest, BlockArgumentsReachTheCalleeAndTheBlocksItCalls) {
  Load("args",
       "block callee\n{\ntw_xgetargc n\ntw_xgetargv first 0\ntw_xgetargv third 2\ntw_xgetargs all\n"
       "tw_xdoblock args/inner\ntw_xgetargv back 0\n}\n"
       "block inner\n{\ntw_xgetargv inner_second 1\ntw_xgetargc inner_n\ntw_xgetargs inner_all\n}\n"
       "block after\n{\ntw_xgetargv outside 0\n}\n");
  MakeVars({"n", "first", "third", "all", "inner_second", "inner_n", "inner_all", "back", "outside"});
  Set("outside", "stale");
  DoBlock("args/callee", "alpha \"beta gamma\" delta");
  Run("tw_xdoblock args/after");
  EXPECT_EQ(Var("n"), "3");
  EXPECT_EQ(Var("first"), "alpha");
  EXPECT_EQ(Var("third"), "delta");
  EXPECT_EQ(Var("all"), "\"beta gamma\" delta");
  // A block called without arguments sees the caller's, and the caller still has them after it.
  EXPECT_EQ(Var("inner_second"), "beta gamma");
  EXPECT_EQ(Var("inner_n"), "3");
  EXPECT_EQ(Var("inner_all"), "\"beta gamma\" delta");
  EXPECT_EQ(Var("back"), "alpha");
  // Arguments end with their block.
  EXPECT_EQ(Var("outside"), "");
  EXPECT_TRUE(g_scriptMachine.argsStack.empty());
  EXPECT_FALSE(g_scriptMachine.blockOwnsArgs);
}

TEST_F(MachineTest, RefusedBlockTakesNoArguments) {
  Load("args", "block callee\n{\necho never\n}\n");
  g_scriptMachine.skipNextBlock = 1;
  DoBlock("args/callee", "x y");
  EXPECT_EQ(Settle(), "");
  EXPECT_TRUE(g_scriptMachine.argsStack.empty());
  EXPECT_FALSE(g_scriptMachine.argsPending);
}

TEST_F(MachineTest, ResetClosesEveryFrameAndKeepsTheScripts) {
  Load("args", "block callee\n{\necho called\n}\n");
  CScriptMachine& m = g_scriptMachine;
  m.PushArgs("a b");
  m.StartBlock(m.TakeStartingBlock());
  m.StartBlock();
  m.PushArgs("c");
  Instruction start{};
  ASSERT_TRUE(m.ExecBlock("args/callee", start, nullptr));
  m.lastIfResult = m.skipNextBlock = 1;
  m.Reset();
  EXPECT_TRUE(m.ifResultStack.empty() && m.argsStack.empty() && m.ownsStack.empty() && m.startingBlocks.empty() &&
              m.frameBlocks.empty());
  EXPECT_EQ(m.lastIfResult + m.skipNextBlock + m.argsPending + m.blockOwnsArgs, 0);
  ASSERT_NE(m.blockArgs, nullptr);
  EXPECT_EQ(m.blockArgs->Argc(), 0);
  EXPECT_EQ(Run("tw_xdoblock args/callee"), "called\n");
}

// ---- handles that name nothing ----

TEST_F(MachineTest, ForgedHandlesRunNothing) {
  Load("s", "block a\n{\necho never\n}\nevent e\n{\necho event ran\n}\n");
  // Plain forged numbers run in the script/forged_handles scenario; here the ones that aren't numbers or fit none.
  for (const char* forged : {"tw__ip abc", "tw__ip 99999999999999999999", "tw__de zz", "tw__de ffffffffffffffff"}) {
    EXPECT_EQ(Run(forged), "") << forged;
    EXPECT_STREQ(ip.cmd, "(no script)\n");
    EXPECT_STREQ(ip.line, "(console)");
  }
  EXPECT_EQ(Run(EventCommands("e")), "event ran\n");
}

}  // namespace
