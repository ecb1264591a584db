// Message routing: the level filter, the console and log routes, the cut at 2047 characters, percent signs
// in finished text, the location of a report, the last error slot, and the door into the command buffer.
#include <gtest/gtest.h>

#include <string>

#include "host_fakes.h"
#include "output_capture.h"

namespace {

class DiagnosticsTest : public ::testing::Test {
protected:
  void SetUp() override {
    world = &ConnectFakeWorld();
    world->engine.logged.clear();
    world->engine.inserted.clear();
    ClearInstruction();
  }
  void TearDown() override {
    engine = &world->engine;
    ClearInstruction();
  }
  FakeWorld* world = nullptr;
  VarRestorer restoreDebug{tidewright_debug};
  VarRestorer restoreLog{tidewright_debuglog};
  VarRestorer restoreTrace{tidewright_scripttrace};
  VarRestorer restoreLastError{tidewright_lasterror};
};

// ---- the level filter ----

TEST_F(DiagnosticsTest, ThresholdMinusOneSilencesLevelZero) {
  tidewright_debug.SetValue(-1);
  OutputCapture out;
  DbgMsg(0, "[Tidewright] Loaded %s\n", "x");
  ReportScriptError(0, "bad\n");
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DiagnosticsTest, ThresholdZeroPrintsLevelZeroOnly) {
  OutputCapture out;
  DbgMsg(0, "zero\n");
  DbgMsg(1, "one\n");
  EXPECT_EQ(out.Text(), "zero\n");
}

TEST_F(DiagnosticsTest, MessagePassesAtItsOwnLevel) {
  tidewright_debug.SetValue(3);
  OutputCapture out;
  DbgMsg(3, "three\n");
  DbgMsg(4, "four\n");
  EXPECT_EQ(out.Text(), "three\n");
}

// ---- routes ----

TEST_F(DiagnosticsTest, DebuglogOneSendsToTheServerLogOnly) {
  tidewright_debuglog.SetValue(1);
  OutputCapture out;
  DbgMsg(0, "to the log %d\n", 7);
  EXPECT_EQ(out.Text(), "");
  ASSERT_EQ(world->engine.logged.size(), 1u);
  EXPECT_EQ(world->engine.logged[0], "to the log 7\n");
}

TEST_F(DiagnosticsTest, DebuglogTwoBehavesAsZero) {
  tidewright_debuglog.SetValue(2);
  OutputCapture out;
  DbgMsg(0, "console\n");
  EXPECT_EQ(out.Text(), "console\n");
  EXPECT_TRUE(world->engine.logged.empty());
}

TEST_F(DiagnosticsTest, LogRouteWithoutAnEngineDropsTheMessage) {
  tidewright_debuglog.SetValue(1);
  engine = nullptr;
  OutputCapture out;
  DbgMsg(0, "lost\n");
  ReportScriptError(0, "lost too\n");
  EXPECT_EQ(out.Text(), "");
}

// ---- text safety ----

TEST_F(DiagnosticsTest, LongMessageIsCutAt2047Characters) {
  std::string big(3000, 'a');
  OutputCapture out;
  DbgMsg(0, "%s", big.c_str());
  EXPECT_EQ(out.Text(), std::string(2047, 'a'));
}

TEST_F(DiagnosticsTest, PercentSignsInFinishedTextPrintAsTheyAre) {
  OutputCapture out;
  DbgMsg(0, "%s", "100% sure %d %s %n\n");
  EXPECT_EQ(out.Text(), "100% sure %d %s %n\n");
  out.Take();
  ReportScriptError(0, "%s", "50% %s\n");
  EXPECT_EQ(out.Text(), "50% %s\n  Error source (console): (no script)\n");
}

// ---- reports ----

TEST_F(DiagnosticsTest, ReportFromTheConsoleNamesNoScript) {
  OutputCapture out;
  ReportScriptError(0, "ERROR: Variable does not exist.\n");
  EXPECT_EQ(out.Text(), "ERROR: Variable does not exist.\n  Error source (console): (no script)\n");
}

TEST_F(DiagnosticsTest, ReportNamesTheRunningLine) {
  ip.line = "tw_mygame.txt";
  ip.cmd = "tw_set x 1\n";
  OutputCapture out;
  ReportScriptError(0, "bad\n");
  EXPECT_EQ(out.Text(), "bad\n  Error source tw_mygame.txt: tw_set x 1\n");
}

TEST_F(DiagnosticsTest, ReportWithUnsetLocationNamesNoScript) {
  ip.line = nullptr;
  ip.cmd = nullptr;
  OutputCapture out;
  ReportScriptError(0, "bad\n");
  EXPECT_EQ(out.Text(), "bad\n  Error source (console): (no script)\n");
}

TEST_F(DiagnosticsTest, ReportToTheLogWordsTheLocationDifferently) {
  tidewright_debuglog.SetValue(1);
  OutputCapture out;
  ReportScriptError(0, "bad %d\n", 1);
  EXPECT_EQ(out.Text(), "");
  ASSERT_EQ(world->engine.logged.size(), 2u);
  EXPECT_EQ(world->engine.logged[0], "bad 1\n");
  EXPECT_EQ(world->engine.logged[1], "  Error location (console): (no script)\n");
}

TEST_F(DiagnosticsTest, ReportAboveTheThresholdPrintsNothing) {
  OutputCapture out;
  ReportScriptError(1, "hidden\n");
  EXPECT_EQ(out.Text(), "");
}

// ---- the last error ----

TEST_F(DiagnosticsTest, LastErrorHoldsTheTextAndPrintsNothing) {
  OutputCapture out;
  SetLastErrorText("Syntax %s", "error");
  EXPECT_STREQ(tidewright_lasterror.GetString(), "Syntax error");
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DiagnosticsTest, LastErrorIsCutAt2047Characters) {
  std::string big(3000, 'e');
  SetLastErrorText("%s", big.c_str());
  EXPECT_EQ(std::string(tidewright_lasterror.GetString()), std::string(2047, 'e'));
}

TEST_F(DiagnosticsTest, LastErrorKeepsPercentSignsOfItsArguments) {
  SetLastErrorText("%s", "a % b %s");
  EXPECT_STREQ(tidewright_lasterror.GetString(), "a % b %s");
}

// ---- the door into the command buffer ----

TEST_F(DiagnosticsTest, ImmediateExecuteInsertsAtTheHead) {
  OutputCapture out;
  ImmediateExecuteCommand("tw__ip 5\n");
  ASSERT_EQ(world->engine.inserted.size(), 1u);
  EXPECT_EQ(world->engine.inserted[0], "tw__ip 5\n");
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DiagnosticsTest, TraceTwoShowsEveryInsertedText) {
  tidewright_scripttrace.SetValue(2);
  OutputCapture out;
  ImmediateExecuteCommand("tw__sb a\n");
  EXPECT_EQ(out.Text(), "[trace] tw__sb a\n");
}

TEST_F(DiagnosticsTest, TraceOneShowsNothingHere) {
  tidewright_scripttrace.SetValue(1);
  OutputCapture out;
  ImmediateExecuteCommand("say hi\n");
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DiagnosticsTest, LevelSevenShowsTheEifaceSwitch) {
  tidewright_debug.SetValue(7);
  OutputCapture out;
  ImmediateExecuteCommand("say 100%\n");
  EXPECT_EQ(out.Text(), "ImmediateExecuteCommand 1: say 100%\n\n");
}

}  // namespace
