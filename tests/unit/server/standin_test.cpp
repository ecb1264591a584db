// The whole stand-in in-process: start-up order, frames, the current command under nesting, wait,
// cheats, level changes, the two factories and a plugin whose Load fails.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "eiface.h"
#include "irecipientfilter.h"
#include "filesystem.h"
#include "icvar.h"
#include "igameevents.h"
#include "iplayerinfo.h"
#include "iservices.h"
#include "options.h"
#include "output_capture.h"
#include "test_server.h"
#include "tier0.h"
#include "vphysics.h"

namespace {

// A plugin that records the engine's calls and gives its Load result on request.
class FakePlugin final : public IServerPluginCallbacks {
public:
  static FakePlugin& Get() {
    static FakePlugin plugin;
    return plugin;
  }
  static void* Factory(const char* name, int* rc) {
    bool ok = strcmp(name, INTERFACEVERSION_ISERVERPLUGINCALLBACKS) == 0;
    if (rc) *rc = ok ? IFACE_OK : IFACE_FAILED;
    return ok ? static_cast<IServerPluginCallbacks*>(&Get()) : nullptr;
  }
  void Reset(bool loadResult) {
    calls.clear();
    load = loadResult;
    engine = nullptr;
  }

  std::vector<std::string> calls;
  bool load = true;
  IVEngineServer* engine = nullptr;

  bool Load(CreateInterfaceFn engineFactory, CreateInterfaceFn) override {
    calls.push_back("Load");
    engine = static_cast<IVEngineServer*>(engineFactory(INTERFACEVERSION_VENGINESERVER, nullptr));
    if (engine) engine->ServerCommand("echo queued by Load\n");
    return load && engine;
  }
  void Unload() override { calls.push_back("Unload"); }
  void Pause() override {}
  void UnPause() override {}
  const char* GetPluginDescription() override { return "fake"; }
  void LevelInit(const char* map) override { calls.push_back(std::string("LevelInit ") + map); }
  void ServerActivate(edict_t* list, int count, int maxClients) override {
    calls.push_back("ServerActivate " + std::to_string(count) + " " + std::to_string(maxClients));
  }
  void GameFrame(bool) override {
    if (calls.empty() || calls.back() != "GameFrame") calls.push_back("GameFrame");
  }
  void LevelShutdown() override { calls.push_back("LevelShutdown"); }
  void ClientActive(edict_t*) override {}
  void ClientDisconnect(edict_t*) override {}
  void ClientPutInServer(edict_t*, const char*) override {}
  void SetCommandClient(int) override {}
  void ClientSettingsChanged(edict_t*) override {}
  PLUGIN_RESULT ClientConnect(bool*, edict_t*, const char*, const char*, char*, int) override { return PLUGIN_CONTINUE; }
  PLUGIN_RESULT ClientCommand(edict_t*) override { return PLUGIN_CONTINUE; }
  PLUGIN_RESULT NetworkIDValidated(const char*, const char*) override { return PLUGIN_CONTINUE; }
  void OnQueryCvarValueFinished(QueryCvarCookie_t, edict_t*, EQueryCvarValueStatus, const char*,
                                const char*) override {}
};

std::string Joined(const std::vector<std::string>& v) {
  std::string s;
  for (const std::string& x : v) s += x + "\n";
  return s;
}

TestServer::Options WithFake(bool load = true) {
  FakePlugin::Get().Reset(load);
  TestServer::Options o;
  o.plugin = &FakePlugin::Factory;
  o.files = {{"cfg/autoexec.cfg", "echo autoexec\n"}, {"cfg/server.cfg", "echo server.cfg\n"}};
  return o;
}

TEST(StandInStartup, StepsRunInOrderEachToItsEnd) {
  TestServer::Options o = WithFake();
  o.args = {"+echo", "plus one", "+echo", "two", "--map", "start_map", "--maxplayers", "8"};
  TestServer server(o);
  EXPECT_EQ(server.StartupOutput(), "queued by Load\nautoexec\nplus one\ntwo\nLevel \"start_map\" started\nserver.cfg\n");
  EXPECT_EQ(Joined(FakePlugin::Get().calls), "Load\nLevelInit start_map\nServerActivate 2048 8\nGameFrame\n");
}

TEST(StandInStartup, FailedLoadIsReportedAndTheServerRunsOn) {
  TestServer server(WithFake(false));
  EXPECT_NE(server.StartupOutput().find("failed to load; running without it"), std::string::npos);
  EXPECT_EQ(server.Run("echo alive"), "alive\n");
  EXPECT_EQ(Joined(FakePlugin::Get().calls), "Load\n");
}

TEST(StandInStartup, WithheldInterfacesReachNeitherFactory) {
  TestServer::Options o = WithFake();
  o.args = {"--without", "VEngineServer021,IEffects001"};
  TestServer server(o);
  EXPECT_EQ(FakePlugin::Get().engine, nullptr);
  EXPECT_EQ(CStandIn::GameFactory(IEFFECTS_INTERFACE_VERSION, nullptr), nullptr);
  EXPECT_NE(CStandIn::GameFactory(INTERFACEVERSION_PLAYERINFOMANAGER, nullptr), nullptr);
}

TEST(StandInInterfaces, EveryInterfaceExists) {
  TestServer server;
  for (const char* name : {"VEngineServer021", "GAMEEVENTSMANAGER002", "VFileSystem012", "VEngineCvar002",
                           "VoiceServer001", "ISERVERPLUGINHELPERS001", "EngineTraceServer003",
                           "IEngineSoundServer003", "VEngineServerStringTable001", "VEngineRandom001",
                           "VPhysics030"}) {
    int rc = -1;
    EXPECT_NE(CStandIn::EngineFactory(name, &rc), nullptr) << name;
    EXPECT_EQ(rc, IFACE_OK);
  }
  for (const char* name : {"PlayerInfoManager002", "IEffects001", "ServerGameEnts001", "ServerGameDLL005",
                           "ServerGameClients003"})
    EXPECT_NE(CStandIn::GameFactory(name, nullptr), nullptr) << name;
  int rc = -1;
  EXPECT_EQ(CStandIn::GameFactory("ServerGameDLL004", &rc), nullptr);
  EXPECT_EQ(rc, IFACE_FAILED);
  EXPECT_EQ(CStandIn::EngineFactory("PlayerInfoManager002", nullptr), nullptr);
}

TEST(StandInInterfaces, GlobalsAndEdictsAfterLevelStart) {
  TestServer::Options o;
  o.args = {"--maxplayers", "4", "--map", "m1"};
  TestServer server(o);
  auto* pim = static_cast<IPlayerInfoManager*>(CStandIn::GameFactory("PlayerInfoManager002", nullptr));
  CGlobalVars* g = pim->GetGlobalVars();
  EXPECT_EQ(g->maxClients, 4);
  EXPECT_EQ(g->maxEntities, 2048);
  EXPECT_STREQ(g->mapname, "m1");
  IVEngineServer& engine = server.Server().Engine();
  edict_t* world = engine.PEntityOfEntIndex(0);
  ASSERT_NE(world, nullptr);
  EXPECT_STREQ(world->GetNetworkable()->GetClassName(), "worldspawn");
  EXPECT_EQ(engine.IndexOfEdict(world), 0);
  EXPECT_EQ(engine.PEntityOfEntIndex(1), nullptr);
  EXPECT_EQ(engine.PEntityOfEntIndex(5000), nullptr);
  EXPECT_EQ(engine.GetEntityCount(), 1);
  EXPECT_EQ(engine.GetPlayerUserId(world), -1);
  EXPECT_STREQ(engine.GetPlayerNetworkIDString(world), "");
}

// ---- the current command ----

std::vector<std::string> g_seen;

void Nest_f() {
  IVEngineServer& e = g_standIn->Engine();
  g_seen.push_back(std::string("before ") + e.Cmd_Argv(1));
  e.InsertServerCommand("probe inner\n");
  e.ServerExecute();
  g_seen.push_back(std::string("after ") + e.Cmd_Argv(1) + " args=" + e.Cmd_Args());
}
void Probe_f() { g_seen.push_back(std::string("probe ") + g_standIn->Engine().Cmd_Argv(1)); }
void Deep_f() {
  IVEngineServer& e = g_standIn->Engine();
  int n = atoi(e.Cmd_Argv(1));
  if (n <= 0) return;
  e.InsertServerCommand("tw__ip 1234567\n");
  e.InsertServerCommand(("deep " + std::to_string(n - 1) + "\n").c_str());
}
void Cheat_f() { g_seen.push_back("cheat ran"); }

const ConsoleCommandDef kTestCommands[] = {
    {"nest", Nest_f, "", 0},
    {"probe", Probe_f, "", 0},
    {"deep", Deep_f, "", 0},
    {"tw__ip", nullptr, "", 0},
    {"cheaty", Cheat_f, "", FCVAR_CHEAT},
};

TEST(StandInCommands, NestedExecuteRestoresTheOuterCommand) {
  TestServer server;
  server.Server().Console().AddCommands(kTestCommands, std::size(kTestCommands));
  g_seen.clear();
  server.Run("nest \"outer one\" x; probe tail");
  EXPECT_EQ(Joined(g_seen), "before outer one\nprobe inner\nprobe tail\nafter outer one args=\"outer one\" x\n");
}

TEST(StandInCommands, WaitEndsANestedRunAndTheRestComesNextFrame) {
  TestServer server;
  server.Server().Console().AddCommands(kTestCommands, std::size(kTestCommands));
  g_seen.clear();
  IVEngineServer& e = server.Server().Engine();
  e.ServerCommand("probe a;wait;probe b\n");
  int tick = server.Server().Clock().Globals()->tickcount;
  e.ServerExecute();
  EXPECT_EQ(Joined(g_seen), "probe a\n");
  server.Server().Settle();
  EXPECT_EQ(Joined(g_seen), "probe a\nprobe b\n");
  EXPECT_EQ(server.Server().Clock().Globals()->tickcount, tick + 1);
}

TEST(StandInCommands, HundredThousandNestedLevelsRunToTheirEnd) {
  TestServer server;
  server.Server().Console().AddCommands(kTestCommands, std::size(kTestCommands));
  std::string out = server.Run("deep 100000\necho done");
  EXPECT_EQ(out, "done\n");
  EXPECT_TRUE(server.Server().Cbuf().IsEmpty());
}

TEST(StandInCommands, CheatCommandsNeedSvCheats) {
  TestServer server;
  server.Server().Console().AddCommands(kTestCommands, std::size(kTestCommands));
  g_seen.clear();
  EXPECT_EQ(server.Run("cheaty"), "Can't use cheat command cheaty unless sv_cheats is 1\n");
  EXPECT_TRUE(g_seen.empty());
  server.Run("sv_cheats 1\ncheaty");
  EXPECT_EQ(Joined(g_seen), "cheat ran\n");
}

TEST(StandInCommands, NamesAreFoundIgnoringCase) {
  TestServer server;
  EXPECT_EQ(server.Run("ECHO hi\nSv_Gravity"), "hi\n\"sv_gravity\" = \"600\"\n - World gravity.\n");
}

TEST(StandInCommands, SetinfoMakesMissingVariables) {
  TestServer server;
  server.Run("setinfo fresh_var \"two words\"");
  ConVar* v = server.Server().Console().FindVar("FRESH_VAR");
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetString(), "two words");
}

TEST(StandInCommands, DeveloperDrivesDevMsg) {
  TestServer server;
  server.Run("developer 2");
  EXPECT_EQ(GetDeveloperLevel(), 2);
  {
    TestServer inner;
    EXPECT_EQ(GetDeveloperLevel(), 0);
  }
  EXPECT_EQ(GetDeveloperLevel(), 2);
}

TEST(StandInCommands, ExecRunsTheFileBeforeTheNextLine) {
  TestServer::Options o;
  o.files = {{"cfg/packs/x.cfg", "echo in file; echo second\n"}};
  TestServer server(o);
  EXPECT_EQ(server.Run("exec /packs//x.cfg; echo after\necho next"), "in file\nsecond\nafter\nnext\n");
}

// ---- levels, log, time ----

TEST(StandInLevels, MapChangesBetweenFrames) {
  TestServer server(WithFake());
  FakePlugin::Get().calls.clear();
  std::string out = server.Run("map other; echo after");
  EXPECT_EQ(out, "Level \"other\" started\nafter\n");
  EXPECT_EQ(Joined(FakePlugin::Get().calls),
            "GameFrame\nLevelShutdown\nLevelInit other\nServerActivate 2048 16\nGameFrame\n");
  FakePlugin::Get().calls.clear();
  server.Run("quit");
  EXPECT_TRUE(server.Server().QuitRequested());
  server.Server().Shutdown();
  EXPECT_EQ(Joined(FakePlugin::Get().calls), "GameFrame\nLevelShutdown\nUnload\n");
}

TEST(StandInLevels, LogPrintWritesTheServerLog) {
  TestServer server;
  IVEngineServer& e = server.Server().Engine();
  OutputCapture out;
  e.LogPrint("first line\n");
  e.LogPrint("second");
  EXPECT_EQ(out.Text(), "L first line\nL second\n");
  std::ifstream log(server.GameDir() + "/logs/server.log");
  std::stringstream text;
  text << log.rdbuf();
  EXPECT_EQ(text.str(), "L first line\nL second\n");
}

TEST(StandInLevels, GameDirAndDedicatedFlag) {
  TestServer::Options o;
  o.args = {"--listen"};
  TestServer server(o);
  char dir[512];
  server.Server().Engine().GetGameDir(dir, sizeof dir);
  EXPECT_EQ(std::string(dir), server.GameDir());
  EXPECT_FALSE(server.Server().Engine().IsDedicatedServer());
  char tiny[4];
  server.Server().Engine().GetGameDir(tiny, sizeof tiny);
  EXPECT_EQ(strlen(tiny), 3u);
}

TEST(StandInLevels, TimeRunsOnAcrossLevels) {
  TestServer server;
  IVEngineServer& e = server.Server().Engine();
  float before = e.Time();
  server.Run("map next");
  EXPECT_GT(e.Time(), before);
}

TEST(StandInOptions, BadOptionsAreRefused) {
  const char* argv1[] = {"s", "--maxplayers", "0"};
  ServerOptions o;
  std::string error;
  EXPECT_FALSE(ParseServerOptions(3, const_cast<char**>(argv1), o, error));
  const char* argv2[] = {"s", "--bogus", "1"};
  EXPECT_FALSE(ParseServerOptions(3, const_cast<char**>(argv2), o, error));
  const char* argv3[] = {"s", "--map"};
  EXPECT_FALSE(ParseServerOptions(2, const_cast<char**>(argv3), o, error));
}

TEST(StandInOptions, PlusCommandsTakeTheirArguments) {
  const char* argv[] = {"s", "+exec", "x.cfg", "+echo", "a b", "--tickrate", "33", "+quit"};
  ServerOptions o;
  std::string error;
  ASSERT_TRUE(ParseServerOptions(8, const_cast<char**>(argv), o, error));
  EXPECT_EQ(o.config.startupCommands, (std::vector<std::string>{"exec x.cfg", "echo \"a b\"", "quit"}));
  EXPECT_EQ(o.config.tickrate, 33);
}

}  // namespace

namespace {

TEST(StandInSharedServer, RunsTheLinkedPluginOnceForTheWholeBinary) {
  TestServer& shared = TestServer::Shared();
  EXPECT_EQ(&shared, &TestServer::Shared());
  EXPECT_NE(shared.Run("echo shared server").find("shared server\n"), std::string::npos);
  {
    TestServer other;
    EXPECT_EQ(other.Run("echo other"), "other\n");
  }
  EXPECT_EQ(g_standIn, &shared.Server());
}

}  // namespace
