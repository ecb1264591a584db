// The plugin's callbacks after Load: LevelInit and its class name table, a query answer that lacks a part,
// the listener between levels and after Unload, and the plugin's resource file.
#include <fstream>
#include <sstream>
#include <string>

#include "edict.h"
#include "eiface.h"
#include "host_fixture.h"

namespace {

class LifecycleTest : public HostTest {
protected:
  static void LevelInit(const char* map) {
    OutputCapture quiet;
    g_TidewrightPlugin.LevelInit(map);
  }
  VarRestorer restoreDebug{tidewright_debug};
  VarRestorer restoreMap{tidewright_currentmap};
};

TEST_F(LifecycleTest, LevelInitRefreshesTheSwitchesAndStoresTheMap) {
  tidewright_debug.m_nValue = 3;  // written behind the callback's back
  LevelInit("de_harbour");
  EXPECT_EQ(g_cached.debug, 3);
  EXPECT_EQ(g_levelFlag, 1);
  EXPECT_STREQ(tidewright_currentmap.GetString(), "de_harbour");
  EXPECT_EQ(MaxClients, STANDIN_DEFAULT_MAXPLAYERS);
}

TEST_F(LifecycleTest, ClassNameTableHoldsLiveEdictsOnly) {
  Run("sim_connect Alice");
  LevelInit("x");
  ASSERT_NE(gpGlobals, nullptr);
  ASSERT_EQ(g_classNameCount, gpGlobals->maxEntities);
  EXPECT_STREQ(g_classNames[0], "worldspawn");
  EXPECT_STREQ(g_classNames[1], "player");
  EXPECT_STREQ(g_classNames[2], "");  // a player slot nobody holds
  Run("sim_disconnect " + std::to_string(engine->GetPlayerUserId(engine->PEntityOfEntIndex(1))));
}

// Each status spelled out runs in the world/voice_queries scenario; here the answers that lack a part.
TEST_F(LifecycleTest, QueryAnswerWithoutNamesOrPlayer) {
  Run("sim_connect Alice\nsim_watch tw_player_variable");
  edict_t* alice = engine->PEntityOfEntIndex(1);
  const std::string userid = std::to_string(engine->GetPlayerUserId(alice));
  OutputCapture out;
  g_TidewrightPlugin.OnQueryCvarValueFinished(1, alice, eQueryCvarValueStatus_CvarNotFound, nullptr, nullptr);
  tidewright_debug.SetValue(1);
  g_TidewrightPlugin.OnQueryCvarValueFinished(1, nullptr, eQueryCvarValueStatus_ValueIntact, "a", "b");
  tidewright_debug.SetValue(0);
  EXPECT_EQ(out.Take(), "event tw_player_variable: userid=" + userid + " status=not found variable= value=\n" +
                            "TW: OnQueryCvarValueFinished called but values did not exist.\n");
  Run("sim_watch off\nsim_disconnect " + userid);
}

TEST_F(LifecycleTest, LevelShutdownAndUnloadDropTheListener) {
  CGameEventManager& events = Standin().Events();
  IGameEventListener2* listener = &g_TidewrightPlugin;
  ASSERT_TRUE(events.FindListener(listener, "tw_map_start"));
  g_TidewrightPlugin.LevelShutdown();
  EXPECT_FALSE(events.FindListener(listener, "tw_map_start"));
  LevelInit("x");
  EXPECT_TRUE(events.FindListener(listener, "tw_map_start"));
  g_TidewrightPlugin.Unload();
  EXPECT_FALSE(events.FindListener(listener, "tw_map_start"));
  LevelInit("x");
}

std::string ReadSourceFile(const std::string& relative) {
  std::ifstream in(std::string(TW_SOURCE_DIR) + "/" + relative, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(ResourceFile, DemoGameCarriesThePluginsFile) {
  std::string file = ReadSourceFile("plugin/data/brannock_tidewright.res");
  EXPECT_NE(file.find("tw_player_variable"), std::string::npos);
  EXPECT_EQ(ReadSourceFile("demo/game/addons/brannock_tidewright.res"), file);
}

}  // namespace
