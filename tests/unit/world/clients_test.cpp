// Clients: the plugin's callbacks in the engine's order as they connect, change, run commands and leave,
// and player info agreeing with the game's state.
#include <gtest/gtest.h>

#include "world_fixture.h"

namespace {

TEST_F(WorldTest, CallbacksComeInTheEnginesOrderEachWithinItsLine) {
  EXPECT_EQ(startup, "Load\nSetCommandClient -1\nLevelInit sim_map\nServerActivate 2048 4\n");
  server.Run("sim_connect Alice STEAM_0:1:42");
  EXPECT_EQ(Plugin().Take(),
            "ClientConnect Alice @1\nClientPutInServer Alice @1\nNetworkIDValidated Alice STEAM_0:1:42\n"
            "ClientActive @1\n");
  // Clients stay over a level change.
  server.Run("map second");
  EXPECT_EQ(Plugin().Take(),
            "LevelShutdown\nLevelInit second\nServerActivate 2048 4\nClientPutInServer Alice @1\nClientActive @1\n");
  EXPECT_EQ(Engine().GetPlayerUserId(Edict(1)), 2);
  server.Server().Shutdown();
  EXPECT_EQ(Plugin().Take(), "LevelShutdown\nUnload\n");
}

TEST_F(WorldTest, ARefusedOrLeavingClientLeavesNothingBehind) {
  Plugin().allowConnect = false;
  EXPECT_NE(server.Run("sim_connect Mallory").find("\"Mallory\" was refused: banned\n"), std::string::npos);
  EXPECT_EQ(Edict(1), nullptr);
  EXPECT_TRUE(World().Clients().empty());
  Plugin().allowConnect = true;
  server.Run("sim_connect Alice");
  edict_t* edict = Edict(1);
  ASSERT_NE(edict, nullptr);
  Plugin().Take();
  server.Run("sim_disconnect 3 kicked");  // the refused connection took userid 2
  EXPECT_EQ(Plugin().Take(), "ClientDisconnect @1\n");
  EXPECT_TRUE(edict->IsFree());
  EXPECT_EQ(Edict(1), nullptr);
  EXPECT_EQ(Engine().GetPlayerUserId(edict), -1);
}

TEST_F(WorldTest, AKillMakesTheVictimDeadBeforeTheEventAndCountsTheDeathAfter) {
  server.Run("sim_connect A\nsim_connect B");
  struct Check : IGameEventListener2 {
    IPlayerInfo* victim = nullptr;
    std::string seen;
    void FireGameEvent(IGameEvent*) override {
      seen = std::to_string(victim->IsDead()) + std::to_string(victim->GetHealth()) +
             std::to_string(victim->GetDeathCount());
    }
  } check;
  check.victim = Info(2);
  server.Server().Events().AddListener(&check, "player_death", true);
  server.Run("sim_kill 2 3");
  server.Server().Events().RemoveListener(&check);
  EXPECT_EQ(check.seen, "100");  // dead, no health, no death counted yet
  EXPECT_EQ(check.victim->GetDeathCount(), 1);
}

// A bot's variables are the game's to set, a person's only the client's; each change reaches the plugin.
TEST_F(WorldTest, ClientVariablesReachThePluginAndOnlyABotsCanBeSetByTheGame) {
  server.Run("sim_connect Alice\nsim_addbot Robo");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_language"), "english");
  EXPECT_STREQ(Engine().GetClientConVarValue(9, "cl_language"), "");
  EXPECT_EQ(Engine().GetPlayerNetInfo(2), nullptr);
  Plugin().Take();
  server.Run("sim_set 2 cvar:cl_language german\nsim_set 2 name Alicia\nsim_client 2 name Ally");
  EXPECT_EQ(Plugin().Take(), "ClientSettingsChanged @1\nClientSettingsChanged @1\nClientSettingsChanged @1\n");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "name"), "Ally");
  OutputCapture out;
  Engine().SetFakeClientConVarValue(Edict(2), "cl_language", "french");
  EXPECT_STREQ(Engine().GetClientConVarValue(2, "cl_language"), "french");
  Engine().SetFakeClientConVarValue(Edict(1), "cl_language", "french");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_language"), "german");
  EXPECT_NE(out.Take().find("not a bot"), std::string::npos);
  EXPECT_EQ(Plugin().Take(), "ClientSettingsChanged @2\n");
  Plugin().commandResult = PLUGIN_STOP;  // the plugin took the command: the game says nothing
  EXPECT_EQ(server.Run("sim_client 2 menuselect 3"), "");
}

}  // namespace
