// The whole stand-in in-process: the two factories, the current command under nesting and wait, the
// server log. The order of start-up and of a plugin's callbacks is in the world tests and scenarios.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "eiface.h"
#include "output_capture.h"
#include "test_server.h"
#include "tier0.h"

namespace {

// What withholding looks like to a plugin is in the scenarios host/without and world/missing_interfaces.
TEST(StandInInterfaces, WithheldWrongVersionAndWrongFactoryAreRefused) {
  TestServer::Options o;
  o.args = {"--without", "IEffects001"};
  TestServer server(o);
  int rc = -1;
  EXPECT_NE(CStandIn::GameFactory("ServerGameDLL005", &rc), nullptr);
  EXPECT_EQ(rc, IFACE_OK);
  EXPECT_EQ(CStandIn::GameFactory("IEffects001", &rc), nullptr);
  EXPECT_EQ(rc, IFACE_FAILED);
  EXPECT_EQ(CStandIn::GameFactory("ServerGameDLL004", nullptr), nullptr);
  EXPECT_EQ(CStandIn::EngineFactory("PlayerInfoManager002", nullptr), nullptr);
}

void Nest_f() {
  IVEngineServer& e = g_standIn->Engine();
  Msg("before %s\n", e.Cmd_Argv(1));
  e.InsertServerCommand("probe inner\n");
  e.ServerExecute();
  Msg("after %s args=%s\n", e.Cmd_Argv(1), e.Cmd_Args());
}
void Probe_f() { Msg("probe %s\n", g_standIn->Engine().Cmd_Argv(1)); }

TEST(StandInEngine, NestedExecuteRestoresTheOuterCommandWaitEndsItAndTheLogIsWritten) {
  TestServer server;
  const ConsoleCommandDef commands[] = {{"nest", Nest_f, "", 0}, {"probe", Probe_f, "", 0}};
  server.Server().Console().AddCommands(commands, std::size(commands));
  EXPECT_EQ(server.Run("nest \"outer one\" x; probe tail"),
            "before outer one\nprobe inner\nprobe tail\nafter outer one args=\"outer one\" x\n");
  // A wait ends a nested run; the rest comes next frame.
  IVEngineServer& e = server.Server().Engine();
  OutputCapture out;
  e.ServerCommand("probe a;wait;probe b\n");
  int tick = server.Server().Clock().Globals()->tickcount;
  e.ServerExecute();
  EXPECT_EQ(out.Take(), "probe a\n");
  server.Server().Settle();
  EXPECT_EQ(out.Take(), "probe b\n");
  EXPECT_EQ(server.Server().Clock().Globals()->tickcount, tick + 1);
  // The server log, shown and written.
  e.LogPrint("first line\n");
  e.LogPrint("second");
  EXPECT_EQ(out.Take(), "L first line\nL second\n");
  std::stringstream text;
  text << std::ifstream(server.GameDir() + "/logs/server.log").rdbuf();
  EXPECT_EQ(text.str(), "L first line\nL second\n");
}

}  // namespace
