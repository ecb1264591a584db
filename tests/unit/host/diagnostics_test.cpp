// Message routing: the level filter, the console and log routes (the stand-in's log shows its lines behind
// "L "), the cut at 2047 characters, percent signs in finished text, the location of a report, the last
// error slot, and the door into the command buffer.
#include <string>

#include "host_fixture.h"

namespace {

class DiagnosticsTest : public HostTest {
protected:
  VarRestorer restoreDebug{tidewright_debug};
  VarRestorer restoreLog{tidewright_debuglog};
  VarRestorer restoreTrace{tidewright_scripttrace};
  VarRestorer restoreLastError{tidewright_lasterror};
};

TEST_F(DiagnosticsTest, LevelAndRouteDecideWhereAMessageGoes) {
  struct Row {
    int debug, debuglog, level;
    bool report;
    const char* printed;
  };
  // The routes at levels 0 and -1, and both log routes, run in the host/diagnostics_routes scenario.
  const Row rows[] = {
      {0, 0, 1, true, ""},
      {3, 0, 3, false, "msg 7\n"},
      {3, 0, 4, false, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "debug " << row.debug << " debuglog " << row.debuglog << " level "
                                    << row.level << (row.report ? " report" : " message"));
    tidewright_debug.SetValue(row.debug);
    tidewright_debuglog.SetValue(row.debuglog);
    OutputCapture out;
    if (row.report)
      ReportScriptError(row.level, "msg %d\n", 7);
    else
      DbgMsg(row.level, "msg %d\n", 7);
    EXPECT_EQ(out.Text(), row.printed);
  }
}

TEST_F(DiagnosticsTest, LogRouteWithoutAnEngineDropsTheMessage) {
  tidewright_debuglog.SetValue(1);
  IVEngineServer* saved = engine;
  engine = nullptr;
  OutputCapture out;
  DbgMsg(0, "lost\n");
  ReportScriptError(0, "lost too\n");
  engine = saved;
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DiagnosticsTest, TextIsCutAt2047CharactersAndPercentSignsStayAsTheyAre) {
  std::string big(3000, 'a');
  OutputCapture out;
  DbgMsg(0, "%s", big.c_str());
  EXPECT_EQ(out.Take(), std::string(2047, 'a'));
  SetLastErrorText("%s", big.c_str());
  EXPECT_EQ(std::string(tidewright_lasterror.GetString()), std::string(2047, 'a'));

  DbgMsg(0, "%s", "100% sure %d %s %n\n");
  EXPECT_EQ(out.Take(), "100% sure %d %s %n\n");
  ReportScriptError(0, "%s", "50% %s\n");
  EXPECT_EQ(out.Take(), "50% %s\n  Error source (console): (no script)\n");
  SetLastErrorText("Syntax %s", "a % b %s");
  EXPECT_STREQ(tidewright_lasterror.GetString(), "Syntax a % b %s");
  EXPECT_EQ(out.Text(), "");
}

// A script line's place runs in the script/error_location scenario; before the first line ran there is none.
TEST_F(DiagnosticsTest, ReportBeforeAnyLineRanNamesNoScript) {
  ip.line = nullptr;
  ip.cmd = nullptr;
  OutputCapture out;
  ReportScriptError(0, "bad\n");
  EXPECT_EQ(out.Take(), "bad\n  Error source (console): (no script)\n");
}

TEST_F(DiagnosticsTest, ImmediateExecuteInsertsAtTheHeadAndTracesAsAsked) {
  struct Row {
    int trace, debug;
    const char* printed;
  };
  const Row rows[] = {
      {0, 0, "first\nlast\n"},
      {1, 0, "first\nlast\n"},
      {2, 0, "[trace] echo first\nfirst\nlast\n"},
      {0, 7, "ImmediateExecuteCommand 1: echo first\n\nfirst\nlast\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "trace " << row.trace << " debug " << row.debug);
    tidewright_scripttrace.SetValue(row.trace);
    tidewright_debug.SetValue(row.debug);
    Standin().Engine().ServerCommand("echo last\n");
    OutputCapture out;
    ImmediateExecuteCommand("echo first\n");
    tidewright_debug.SetValue(0);
    Standin().Settle();
    EXPECT_EQ(out.Text(), row.printed);
  }
}

}  // namespace
