// The plugin's callbacks after Load: LevelInit and its map start event and class name table, the frame time
// check, the callbacks that become the plugin's own events, and the listener removal between levels.
#include <gtest/gtest.h>

#include <string>

#include "KeyValues.h"
#include "host/plugin.h"
#include "host_fakes.h"
#include "output_capture.h"

namespace {

class LifecycleTest : public ::testing::Test {
protected:
  void SetUp() override {
    world = &ConnectFakeWorld();
    world->Reset();
    // The fake game has no say or changelevel for LevelInit to wrap.
    tidewright_chatevent.SetValue(0);
    tidewright_maphandler.SetValue(0);
    OutputCapture quiet;
    ASSERT_TRUE(g_TidewrightPlugin.Load(&FakeWorld::EngineFactory, &FakeWorld::GameFactory));
    world->events.fired.clear();
    world->engine.clock.clear();
    world->engine.timeCalls = 0;
  }
  void TearDown() override {
    world->engine.edicts.clear();
    world->playerInfo.globals.maxEntities = 0;
  }
  FakeWorld* world = nullptr;
  VarRestorer restoreDebug{tidewright_debug};
  VarRestorer restoreFrameCheck{tidewright_frametimecheck};
  VarRestorer restoreMaster{brannock_tidewright};
  VarRestorer restoreMap{tidewright_currentmap};
  VarRestorer restoreChat{tidewright_chatevent};
  VarRestorer restoreMapHandler{tidewright_maphandler};
};

// ---- LevelInit ----

// Without event files in the fake file system, the default events would add their reports.
TEST_F(LifecycleTest, LevelInitStoresTheMapAndSetsTheLevelFlag) {
  VarRestorer restore(tidewright_defaultevents);
  tidewright_defaultevents.SetValue(0);
  OutputCapture out;
  g_TidewrightPlugin.LevelInit("de_harbour");
  EXPECT_STREQ(tidewright_currentmap.GetString(), "de_harbour");
  EXPECT_EQ(g_levelFlag, 1);
  EXPECT_EQ(out.Text(),
            "[Tidewright] Map Loading Brannock's Tidewright plugin...\n"
            "[Tidewright] Loaded successfully.\n");
}

TEST_F(LifecycleTest, LevelInitFiresMapStart) {
  OutputCapture quiet;
  g_TidewrightPlugin.LevelInit("cs_quay");
  ASSERT_EQ(world->events.fired.size(), 1u);
  EXPECT_EQ(world->events.fired[0].name, "tw_map_start");
  EXPECT_EQ(world->events.fired[0].values.at("mapname"), "cs_quay");
}

TEST_F(LifecycleTest, UndeclaredMapStartIsDroppedSilently) {
  world->events.declared.erase("tw_map_start");
  OutputCapture out;
  g_TidewrightPlugin.LevelInit("x");
  EXPECT_TRUE(world->events.fired.empty());
  EXPECT_TRUE(out.Contains("[Tidewright] Loaded successfully.\n"));
  world->events.declared.insert("tw_map_start");
}

TEST_F(LifecycleTest, LevelInitRefreshesTheCachedSwitches) {
  tidewright_debug.m_nValue = 3;  // written behind the callback's back
  OutputCapture quiet;
  g_TidewrightPlugin.LevelInit("x");
  EXPECT_EQ(g_cached.debug, 3);
}

TEST_F(LifecycleTest, ClassNameTableHoldsLiveEdictsOnly) {
  FakeNetworkable player("player"), prop("prop_physics"), freed("gone");
  edict_t world0, live, freeSlot, noUnknown;
  world0.m_fStateFlags = live.m_fStateFlags = noUnknown.m_fStateFlags = 0;
  world0.m_pNetworkable = &player;
  world0.m_pUnk = &player;
  live.m_pNetworkable = &prop;
  live.m_pUnk = &prop;
  freeSlot.m_pNetworkable = &freed;
  freeSlot.m_pUnk = &freed;  // flags still say free
  noUnknown.m_pNetworkable = &prop;
  world->engine.edicts = {&world0, &live, &freeSlot, &noUnknown, nullptr};
  world->playerInfo.globals.maxEntities = 6;

  OutputCapture quiet;
  g_TidewrightPlugin.LevelInit("x");
  ASSERT_EQ(g_classNameCount, 6);
  EXPECT_STREQ(g_classNames[0], "player");
  EXPECT_STREQ(g_classNames[1], "prop_physics");
  EXPECT_STREQ(g_classNames[2], "");
  EXPECT_STREQ(g_classNames[3], "");
  EXPECT_STREQ(g_classNames[4], "");
  EXPECT_STREQ(g_classNames[5], "");

  world->playerInfo.globals.maxEntities = 2;
  g_TidewrightPlugin.LevelInit("y");
  EXPECT_EQ(g_classNameCount, 2);
  EXPECT_STREQ(g_classNames[1], "prop_physics");
}

TEST_F(LifecycleTest, WithoutAGlobalsBlockTheClassNameTableIsEmpty) {
  CGlobalVars* saved = gpGlobals;
  gpGlobals = nullptr;
  OutputCapture quiet;
  g_TidewrightPlugin.LevelInit("x");
  EXPECT_EQ(g_classNameCount, 0);
  EXPECT_EQ(g_classNames, nullptr);
  gpGlobals = saved;
}

// ---- GameFrame ----

TEST_F(LifecycleTest, LongFrameIsReported) {
  tidewright_frametimecheck.SetValue(1);
  world->engine.clock = {10.0f, 10.02f};
  OutputCapture out;
  g_TidewrightPlugin.GameFrame(true);
  EXPECT_TRUE(out.Contains("[Tidewright] Long frame: 0.0"));
  EXPECT_TRUE(out.Contains(" seconds\n"));
}

TEST_F(LifecycleTest, FrameOfExactlyTheLimitPrintsNothing) {
  tidewright_frametimecheck.SetValue(1);
  world->engine.clock = {0.0f, 0.01f};
  OutputCapture out;
  g_TidewrightPlugin.GameFrame(false);
  EXPECT_EQ(out.Text(), "");
  EXPECT_EQ(world->engine.timeCalls, 2);
}

TEST_F(LifecycleTest, FrameCheckOffReadsNoClock) {
  world->engine.clock = {0.0f, 5.0f};
  OutputCapture out;
  g_TidewrightPlugin.GameFrame(true);
  EXPECT_EQ(world->engine.timeCalls, 0);
  EXPECT_EQ(out.Text(), "");
}

TEST_F(LifecycleTest, FrameCheckWorksWhateverTheMasterSwitch) {
  tidewright_frametimecheck.SetValue(1);
  brannock_tidewright.SetValue(2);
  world->engine.clock = {0.0f, 1.0f};
  OutputCapture out;
  g_TidewrightPlugin.GameFrame(true);
  EXPECT_TRUE(out.Contains("[Tidewright] Long frame: 1.000000 seconds\n"));
}

// ---- callbacks that become events ----

TEST_F(LifecycleTest, SettingsChangeFiresTheUserid) {
  edict_t client;
  world->engine.userids[&client] = 17;
  g_TidewrightPlugin.ClientSettingsChanged(&client);
  ASSERT_EQ(world->events.fired.size(), 1u);
  EXPECT_EQ(world->events.fired[0].name, "tw_player_setting");
  EXPECT_EQ(world->events.fired[0].values.at("userid"), "17");
}

TEST_F(LifecycleTest, ValidatedIdentityFiresAndContinues) {
  EXPECT_EQ(g_TidewrightPlugin.NetworkIDValidated("Ann", "STEAM_0:1:23"), PLUGIN_CONTINUE);
  ASSERT_EQ(world->events.fired.size(), 1u);
  EXPECT_EQ(world->events.fired[0].name, "tw_player_validated");
  EXPECT_EQ(world->events.fired[0].values.at("name"), "Ann");
  EXPECT_EQ(world->events.fired[0].values.at("networkid"), "STEAM_0:1:23");
  EXPECT_EQ(g_TidewrightPlugin.NetworkIDValidated(nullptr, nullptr), PLUGIN_CONTINUE);
  EXPECT_EQ(world->events.fired[1].values.at("name"), "");
}

TEST_F(LifecycleTest, QueryAnswerFiresWithTheStatusSpelledOut) {
  edict_t client;
  world->engine.userids[&client] = 3;
  const char* spelled[] = {"success", "not found", "not variable", "protected"};
  for (int status = 0; status < 4; ++status)
    g_TidewrightPlugin.OnQueryCvarValueFinished(9, &client, EQueryCvarValueStatus(status), "cl_x", "v");
  ASSERT_EQ(world->events.fired.size(), 4u);
  for (int status = 0; status < 4; ++status) {
    const auto& values = world->events.fired[size_t(status)].values;
    EXPECT_EQ(world->events.fired[size_t(status)].name, "tw_player_variable");
    EXPECT_EQ(values.at("status"), spelled[status]);
    EXPECT_EQ(values.at("userid"), "3");
    EXPECT_EQ(values.at("variable"), "cl_x");
    EXPECT_EQ(values.at("value"), "v");
  }
}

TEST_F(LifecycleTest, QueryAnswerWithMissingTextsGivesEmptyTexts) {
  edict_t client;
  g_TidewrightPlugin.OnQueryCvarValueFinished(1, &client, eQueryCvarValueStatus_CvarNotFound, nullptr, nullptr);
  ASSERT_EQ(world->events.fired.size(), 1u);
  EXPECT_EQ(world->events.fired[0].values.at("variable"), "");
  EXPECT_EQ(world->events.fired[0].values.at("value"), "");
}

TEST_F(LifecycleTest, QueryAnswerWithoutAnEdictOnlyTellsAtLevelOne) {
  tidewright_debug.SetValue(1);
  OutputCapture out;
  g_TidewrightPlugin.OnQueryCvarValueFinished(1, nullptr, eQueryCvarValueStatus_ValueIntact, "a", "b");
  EXPECT_TRUE(world->events.fired.empty());
  EXPECT_EQ(out.Text(), "TW: OnQueryCvarValueFinished called but values did not exist.\n");
}

// ---- the rest of the callbacks ----

TEST_F(LifecycleTest, LevelShutdownAndUnloadDropTheListener) {
  world->events.removeListenerCalls = 0;
  g_TidewrightPlugin.LevelShutdown();
  g_TidewrightPlugin.Unload();
  EXPECT_EQ(world->events.removeListenerCalls, 2);
  EXPECT_EQ(world->events.lastRemoved, static_cast<IGameEventListener2*>(&g_TidewrightPlugin));
}

TEST_F(LifecycleTest, SmallCallbacks) {
  g_TidewrightPlugin.ServerActivate(nullptr, 0, 24);
  EXPECT_EQ(MaxClients, 24);
  g_TidewrightPlugin.SetCommandClient(5);
  EXPECT_EQ(g_TidewrightPlugin.GetCommandIndex(), 5);
  bool allow = true;
  char reject[8] = "";
  EXPECT_EQ(g_TidewrightPlugin.ClientConnect(&allow, nullptr, "n", "a", reject, 8), PLUGIN_CONTINUE);
  EXPECT_TRUE(allow);
  std::string description = g_TidewrightPlugin.GetPluginDescription();
  EXPECT_EQ(description.substr(description.size() - 17), "Version:2.0.0.248");
}

// ---- the plugin's resource file ----

TEST(ResourceFile, DeclaresTheEightEventsWithFittingKinds) {
  std::string text = ReadSourceFile("plugin/data/brannock_tidewright.res");
  ASSERT_FALSE(text.empty());
  KeyValues* top = new KeyValues("events");
  ASSERT_TRUE(top->LoadFromBuffer("brannock_tidewright.res", text.c_str()));
  const std::map<std::string, std::map<std::string, std::string>> expected = {
      {"tw_map_start", {{"mapname", "text"}}},
      {"tw_player_chat", {{"userid", "integer"}, {"teamonly", "bool"}, {"text", "text"}}},
      {"tw_client_command", {{"userid", "integer"}, {"command", "text"}, {"commandstring", "text"}}},
      {"tw_player_validated", {{"name", "text"}, {"networkid", "text"}}},
      {"tw_player_setting", {{"userid", "integer"}}},
      {"tw_player_variable", {{"userid", "integer"}, {"status", "text"}, {"variable", "text"}, {"value", "text"}}},
      {"tw_scriptpack_register", {{"scriptpack", "text"}}},
      {"tw_scriptpack_unregister", {{"scriptpack", "text"}}},
  };
  auto kindOf = [](const std::string& type) -> std::string {
    if (type == "string") return "text";
    if (type == "short" || type == "long" || type == "byte") return "integer";
    return type;
  };
  std::map<std::string, std::map<std::string, std::string>> found;
  for (KeyValues* e = top->GetFirstSubKey(); e; e = e->GetNextKey())
    for (KeyValues* f = e->GetFirstSubKey(); f; f = f->GetNextKey())
      found[e->GetName()][f->GetName()] = kindOf(f->GetString());
  EXPECT_EQ(found, expected);
  top->deleteThis();
}

TEST(ResourceFile, DemoGameCarriesTheSameFile) {
  EXPECT_EQ(ReadSourceFile("demo/game/addons/brannock_tidewright.res"),
            ReadSourceFile("plugin/data/brannock_tidewright.res"));
}

}  // namespace
