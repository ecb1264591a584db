// Load and the interfaces it acquires: order, which factory, the required and the tolerated ones, version
// probing, and what Load leaves behind (directories, the queued command line, the user tree, the plugin's
// events, rcon_password). Runs that need a process whose console was never connected run in a child.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "KeyValues.h"
#include "host/plugin.h"
#include "host_fakes.h"
#include "output_capture.h"
#include "vstdlib.h"

namespace {

class LoadTest : public ::testing::Test {
protected:
  void SetUp() override {
    world = &ConnectFakeWorld();
    world->Reset();
    world->engine.appended.clear();
    world->events.loadedFiles.clear();
  }
  void TearDown() override {
    world->Reset();
    ConnectFakeWorld();
  }
  bool Load() { return g_TidewrightPlugin.Load(&FakeWorld::EngineFactory, &FakeWorld::GameFactory); }
  FakeWorld* world = nullptr;
  VarRestorer restoreDebug{tidewright_debug};
  VarRestorer restoreProtect{tidewright_protectrcon};
};

// ---- acquisition ----

TEST_F(LoadTest, InterfacesAreAskedInTheirOrder) {
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  const std::vector<std::string> first = {
      "PlayerInfoManager002", "VoiceServer001",  "VEngineServer021",      "GAMEEVENTSMANAGER002",
      "VFileSystem012",       "ISERVERPLUGINHELPERS001", "EngineTraceServer003", "IEngineSoundServer003",
      "IEffects001",          "VEngineServerStringTable001", "VEngineRandom001", "VPhysics030",
      "ServerGameEnts001",    "ServerGameDLL003",
  };
  ASSERT_GE(world->asked.size(), first.size());
  EXPECT_EQ(std::vector<std::string>(world->asked.begin(), world->asked.begin() + long(first.size())), first);
  auto at = [&](const char* name) { return std::find(world->asked.begin(), world->asked.end(), name); };
  EXPECT_LT(at("ServerGameDLL005"), at("ServerGameClients003"));
  EXPECT_LT(at("ServerGameClients004"), at("VEngineCvar002"));
  EXPECT_EQ(at("ServerGameDLL006"), world->asked.end());  // the first hit ends the search
}

TEST_F(LoadTest, EachInterfaceComesFromItsOwnFactory) {
  world->gameInterfaces["VEngineServer021"] = world->engineInterfaces["VEngineServer021"];
  world->engineInterfaces.erase("VEngineServer021");
  OutputCapture out;
  EXPECT_FALSE(Load());
}

class RequiredInterface : public LoadTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(RequiredInterface, MissingStopsLoadWithTheWarning) {
  const char* name = GetParam();
  world->engineInterfaces.erase(name);
  world->gameInterfaces.erase(name);
  OutputCapture out;
  EXPECT_FALSE(Load());
  EXPECT_TRUE(out.Contains("[Tidewright] Failure in getting the interfaces we need.\n"));
  EXPECT_EQ(world->asked.back(), name);  // nothing after it was asked
  EXPECT_FALSE(out.Contains("plugin loaded"));
}

INSTANTIATE_TEST_SUITE_P(Fatal, RequiredInterface,
                         ::testing::Values("VEngineServer021", "GAMEEVENTSMANAGER002", "VFileSystem012",
                                           "ISERVERPLUGINHELPERS001", "EngineTraceServer003",
                                           "IEngineSoundServer003", "IEffects001", "VEngineServerStringTable001",
                                           "VEngineRandom001"));

struct Tolerated {
  const char* name;
  const char* warning;
};

class ToleratedInterface : public LoadTest, public ::testing::WithParamInterface<Tolerated> {};

TEST_P(ToleratedInterface, MissingWarnsAndLoadGoesOn) {
  world->engineInterfaces.erase(GetParam().name);
  world->gameInterfaces.erase(GetParam().name);
  OutputCapture out;
  EXPECT_TRUE(Load());
  EXPECT_TRUE(out.Contains(GetParam().warning));
  EXPECT_TRUE(out.Contains("[Tidewright] Brannock's Tidewright plugin loaded.\n"));
}

INSTANTIATE_TEST_SUITE_P(Warned, ToleratedInterface,
                         ::testing::Values(
                             Tolerated{"PlayerInfoManager002", "Unable to load playerinfomanager, ignoring\n"},
                             Tolerated{"VoiceServer001", "IVoiceServer not obtained.\n"},
                             Tolerated{"VPhysics030", "IPhysics not obtained.\n"},
                             Tolerated{"ServerGameEnts001", "IServerGameEnts not obtained!\n"}));

TEST_F(LoadTest, WithoutPlayerInfoThereIsNoGlobalsBlock) {
  world->gameInterfaces.erase("PlayerInfoManager002");
  gpGlobals = nullptr;
  OutputCapture quiet;
  EXPECT_TRUE(Load());
  EXPECT_EQ(playerinfomanager, nullptr);
  EXPECT_EQ(gpGlobals, nullptr);
}

// ---- version probing ----

TEST_F(LoadTest, ProbingTakesTheLowestVersionFromThree) {
  world->gameInterfaces.erase("ServerGameDLL005");
  world->gameInterfaces["ServerGameDLL002"] = &world->opaque[12];
  world->gameInterfaces["ServerGameDLL008"] = &world->opaque[13];
  world->gameInterfaces["ServerGameDLL007"] = &world->opaque[14];
  char name[64] = "";
  void* found = ProbeInterfaceVersion(&FakeWorld::GameFactory, "ServerGameDLL", name, sizeof name);
  EXPECT_EQ(found, &world->opaque[14]);
  EXPECT_STREQ(name, "ServerGameDLL007");
  EXPECT_EQ(world->asked.front(), "ServerGameDLL003");
}

TEST_F(LoadTest, ProbingTriesUpTo998AndGivesNullWhenNothingAnswers) {
  void* found = ProbeInterfaceVersion(&FakeWorld::GameFactory, "Nothing", nullptr, 0);
  EXPECT_EQ(found, nullptr);
  ASSERT_EQ(world->asked.size(), 996u);
  EXPECT_EQ(world->asked.back(), "Nothing998");
}

TEST_F(LoadTest, ProbedNamesAreReportedAtLevelOne) {
  tidewright_debug.SetValue(1);
  OutputCapture out;
  ASSERT_TRUE(Load());
  EXPECT_TRUE(out.Contains("[Tidewright] Using ServerGameDLL005 for game.\n"));
  EXPECT_TRUE(out.Contains("[Tidewright] Using ServerGameClients004 for game clients.\n"));
}

TEST_F(LoadTest, NoServerGameDllWarnsAndLoadGoesOn) {
  world->gameInterfaces.erase("ServerGameDLL005");
  OutputCapture out;
  EXPECT_TRUE(Load());
  EXPECT_TRUE(out.Contains("[Tidewright] Failure in getting the serverDLL interface.\n"));
  EXPECT_EQ(gamedll, nullptr);
}

TEST_F(LoadTest, NoServerGameClientsIsSilent) {
  world->gameInterfaces.erase("ServerGameClients004");
  tidewright_debug.SetValue(7);
  OutputCapture out;
  EXPECT_TRUE(Load());
  EXPECT_EQ(gameclients, nullptr);
  EXPECT_FALSE(out.Contains("game clients"));
}

// ---- what Load leaves behind ----

// The fake file system has no corelib: its absence is reported, and Load goes on. It has no event files
// either, whose reports are left out here by turning the default events off.
TEST_F(LoadTest, BannersFrameTheLoad) {
  VarRestorer restore(tidewright_defaultevents);
  tidewright_defaultevents.SetValue(0);
  OutputCapture out;
  ASSERT_TRUE(Load());
  EXPECT_EQ(out.Text(),
            "[Tidewright] Initial Loading of Brannock's Tidewright plugin...\n"
            "[Tidewright]   Automatically loading tw_corelib.txt...\n"
            "Could not open script for addons/tidewright/corelib/tw_corelib.txt\n"
            "  Error source (console): (no script)\n"
            "[Tidewright]   Done loading corelib.\n"
            "[Tidewright] Brannock's Tidewright plugin loaded.\n");
}

TEST_F(LoadTest, DirectoriesAreStored) {
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  EXPECT_STREQ(tidewright_gamedir.GetString(), "/srv/tidewright/game");
  EXPECT_STREQ(tidewright_addondir.GetString(), "/srv/tidewright/game/addons/tidewright");
}

TEST_F(LoadTest, PluginEventsAreDeclaredUnconditionally) {
  VarRestorer restore(tidewright_defaultevents);
  tidewright_defaultevents.SetValue(0);
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  ASSERT_EQ(world->events.loadedFiles.size(), 1u);
  EXPECT_EQ(world->events.loadedFiles[0], "addons/brannock_tidewright.res");
}

TEST_F(LoadTest, CommandLineIsQueuedForLater) {
  CommandLine()->CreateCmdLine("srcds -game demo +map start");
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  ASSERT_EQ(world->engine.appended.size(), 1u);
  EXPECT_EQ(world->engine.appended[0], "tw_xsetinfo tidewright_cmdline \"srcds -game demo +map start\"\n");
}

TEST_F(LoadTest, CommandLineStaysOneQuotedArgument) {
  CommandLine()->CreateCmdLine("srcds -game \"my game\"");
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  EXPECT_EQ(world->engine.appended.at(0), "tw_xsetinfo tidewright_cmdline \"srcds -game 'my game'\"\n");
}

TEST_F(LoadTest, OverlongCommandLineKeepsItsClosingQuoteAndLineEnd) {
  CommandLine()->CreateCmdLine(std::string(5000, 'c').c_str());
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  const std::string& queued = world->engine.appended.at(0);
  EXPECT_EQ(queued.size(), 2047u);
  EXPECT_EQ(queued.substr(queued.size() - 3), "c\"\n");
  CommandLine()->CreateCmdLine("");
}

TEST_F(LoadTest, UserTreeIsMadeOnceWithItsTwoGroups) {
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  ASSERT_NE(g_userTree, nullptr);
  KeyValues* tree = g_userTree;
  EXPECT_STREQ(tree->GetName(), "UserKeys");
  EXPECT_NE(tree->FindKey("UserGroups"), nullptr);
  EXPECT_NE(tree->FindKey("Ungrouped"), nullptr);
  ASSERT_TRUE(Load());
  EXPECT_EQ(g_userTree, tree);
}

TEST_F(LoadTest, RconPasswordIsProtected) {
  ConVar* rcon = FindServerVar("rcon_password");
  if (!rcon) rcon = new ConVar("rcon_password", "secret", 0, "engine's");
  rcon->SetFlagsRaw(rcon->GetFlagsRaw() & ~FCVAR_PROTECTED);
  tidewright_protectrcon.SetValue(0);
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  EXPECT_FALSE(rcon->IsBitSet(FCVAR_PROTECTED));
  tidewright_protectrcon.SetValue(1);
  ASSERT_TRUE(Load());
  EXPECT_TRUE(rcon->IsBitSet(FCVAR_PROTECTED));
}

TEST_F(LoadTest, CurrentInstructionIsCleared) {
  ip.cmd = "stale\n";
  ip.line = "stale.txt";
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  EXPECT_STREQ(ip.cmd, "(no script)\n");
  EXPECT_STREQ(ip.line, "(console)");
}

TEST_F(LoadTest, CachedSwitchesAreReadFromTheVariables) {
  VarRestorer restore(tidewright_eiface);
  tidewright_eiface.m_nValue = 4;  // written behind the callback's back
  OutputCapture quiet;
  ASSERT_TRUE(Load());
  EXPECT_EQ(g_cached.eiface, 4);
}

TEST_F(LoadTest, NullFactoriesFailCleanly) {
  OutputCapture out;
  EXPECT_FALSE(g_TidewrightPlugin.Load(nullptr, nullptr));
  EXPECT_TRUE(out.Contains("[Tidewright] Failure in getting the interfaces we need.\n"));
}

// ---- a process whose console was never connected ----

// Runs `body` in a fresh process: static initialisation only, no test before it.
#define IN_FRESH_PROCESS(body)                                          \
  do {                                                                  \
    GTEST_FLAG_SET(death_test_style, "threadsafe");                     \
    EXPECT_EXIT(body, ::testing::ExitedWithCode(0), "");                \
  } while (0)

[[noreturn]] void ExitWith(bool ok, const char* why) {
  if (!ok) fprintf(stderr, "%s\n", why);
  _exit(ok ? 0 : 1);
}

TEST(LoadFreshProcess, WithoutTheConsoleInterfaceLoadSucceedsAndRegistersNothing) {
  IN_FRESH_PROCESS({
    FakeWorld& world = FakeWorld::instance();
    world.engineInterfaces.erase("VEngineCvar002");
    OutputCapture quiet;
    bool loaded = g_TidewrightPlugin.Load(&FakeWorld::EngineFactory, &FakeWorld::GameFactory);
    if (!loaded) ExitWith(false, "Load failed");
    if (tidewright_debug.IsRegistered()) ExitWith(false, "a variable was registered");
    if (world.cvar.head) ExitWith(false, "the chain holds objects");
    if (cvar) ExitWith(false, "cvar was set");
    ExitWith(quiet.Contains("plugin loaded"), "no final banner");
  });
}

TEST(LoadFreshProcess, ObjectsMadeBeforeLoadRegisterAtLoad) {
  IN_FRESH_PROCESS({
    FakeWorld& world = FakeWorld::instance();
    ConVar* early = new ConVar("hs_early", "1", 0, "made before the engine was known");
    if (early->IsRegistered()) ExitWith(false, "registered before connecting");
    OutputCapture quiet;
    if (!g_TidewrightPlugin.Load(&FakeWorld::EngineFactory, &FakeWorld::GameFactory)) ExitWith(false, "Load");
    if (!early->IsRegistered() || !world.cvar.Holds(early)) ExitWith(false, "early object not registered");
    if (!tidewright_debug.IsRegistered() || !tidewright_debug.IsBitSet(FCVAR_PLUGIN))
      ExitWith(false, "configuration variable not registered as the plugin's");
    ExitWith(FindServerVar("tidewright_exec-cmd") == &tidewright_exec_cmd, "lookup by console name");
  });
}

}  // namespace
