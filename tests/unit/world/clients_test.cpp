// Clients: connecting and leaving in the engine's order, identities, player info agreeing with the
// engine's answers, client variables, client commands and the plugin's say on them.
#include <gtest/gtest.h>

#include "iplayerinfo.h"
#include "world_fixture.h"

namespace {

TEST_F(WorldTest, ConnectingRunsTheCallbacksInOrderWithinTheLine) {
  std::string out = server.Run("sim_watch player_connect player_activate\nsim_connect Alice STEAM_0:1:42");
  EXPECT_EQ(Plugin().Take(),
            "ClientConnect Alice @1\nClientPutInServer Alice @1\nNetworkIDValidated Alice STEAM_0:1:42\n"
            "ClientActive @1\n");
  EXPECT_NE(out.find("event player_connect: name=Alice index=0 userid=2 networkid=STEAM_0:1:42 "
                     "address=127.0.0.1:27007\nevent player_activate: userid=2\n"),
            std::string::npos);
  EXPECT_NE(out.find("Client \"Alice\" connected as userid 2\n"), std::string::npos);
}

TEST_F(WorldTest, UseridsCountUpAndAreNeverReused) {
  server.Run("sim_connect A\nsim_connect B\nsim_disconnect 2\nsim_addbot C");
  EXPECT_EQ(World().ClientByUserid(2), nullptr);
  ASSERT_NE(World().ClientByUserid(4), nullptr);
  EXPECT_EQ(World().ClientByUserid(4)->slot, 1);  // the freed slot, with a new userid
  EXPECT_STREQ(Engine().GetPlayerNetworkIDString(Engine().PEntityOfEntIndex(1)), "BOT");
  EXPECT_EQ(Engine().GetPlayerUserId(Engine().PEntityOfEntIndex(2)), 3);
}

TEST_F(WorldTest, ARefusedClientLeavesNothingBehind) {
  Plugin().allowConnect = false;
  std::string out = server.Run("sim_connect Mallory");
  EXPECT_NE(out.find("\"Mallory\" was refused: banned\n"), std::string::npos);
  EXPECT_EQ(Engine().PEntityOfEntIndex(1), nullptr);
  EXPECT_TRUE(World().Clients().empty());
}

TEST_F(WorldTest, LeavingFiresTheEventAndFreesTheEdict) {
  server.Run("sim_connect Alice\nsim_watch player_disconnect");
  edict_t* edict = Engine().PEntityOfEntIndex(1);
  ASSERT_NE(edict, nullptr);
  Plugin().calls.clear();
  std::string out = server.Run("sim_disconnect 2 kicked");
  EXPECT_NE(out.find("event player_disconnect: userid=2 reason=kicked name=Alice networkid=STEAM_0:0:100001\n"),
            std::string::npos);
  EXPECT_EQ(Plugin().Take(), "ClientDisconnect @1\n");
  EXPECT_TRUE(edict->IsFree());
  EXPECT_EQ(edict->GetUnknown(), nullptr);
  EXPECT_EQ(Engine().PEntityOfEntIndex(1), nullptr);
  EXPECT_EQ(Engine().GetPlayerUserId(edict), -1);
}

TEST_F(WorldTest, AFullServerRefusesMore) {
  std::string out = server.Run("sim_connect a\nsim_connect b\nsim_addbot c\nsim_addbot d\nsim_connect e");
  EXPECT_NE(out.find("Server is full (4 slots); \"e\" can't connect\n"), std::string::npos);
  EXPECT_EQ(World().Clients().size(), 4u);
}

TEST_F(WorldTest, PlayerInfoAnswersFromTheSameState) {
  server.Run("sim_connect Alice\nsim_set 2 team 3\nsim_set 2 origin 1,2,3\nsim_set 2 armor 50\nsim_set 2 frags 7");
  auto* manager = GameInterface<IPlayerInfoManager>("PlayerInfoManager002");
  IPlayerInfo* info = manager->GetPlayerInfo(Engine().PEntityOfEntIndex(1));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->GetUserID(), 2);
  EXPECT_EQ(info->GetTeamIndex(), 3);
  EXPECT_EQ(info->GetArmorValue(), 50);
  EXPECT_EQ(info->GetFragCount(), 7);
  EXPECT_EQ(info->GetAbsOrigin(), Vector(1, 2, 3));
  EXPECT_STREQ(info->GetModelName(), "models/player/ct_urban.mdl");
  EXPECT_FALSE(info->IsFakeClient());
  EXPECT_EQ(manager->GetPlayerInfo(Engine().PEntityOfEntIndex(0)), nullptr);
  EXPECT_EQ(manager->GetPlayerInfo(nullptr), nullptr);
  info->ChangeTeam(2);
  EXPECT_EQ(info->GetTeamIndex(), 2);
}

TEST_F(WorldTest, AKillMakesTheVictimDeadBeforeTheEventAndScoresAfter) {
  server.Run("sim_connect A\nsim_connect B\nsim_set 2 weapon weapon_ak47");
  IPlayerInfo* victim = GameInterface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(
      Engine().PEntityOfEntIndex(2));
  struct Check : IGameEventListener2 {
    IPlayerInfo* victim;
    std::string seen;
    void FireGameEvent(IGameEvent* e) override {
      seen = std::string(e->GetName()) + " dead=" + std::to_string(victim->IsDead()) + " health=" +
             std::to_string(victim->GetHealth()) + " deaths=" + std::to_string(victim->GetDeathCount()) +
             " attacker=" + e->GetString("attacker") + " weapon=" + e->GetString("weapon");
    }
  } check;
  check.victim = victim;
  server.Server().Events().AddListener(&check, "player_death", true);
  server.Run("sim_kill 2 3");
  server.Server().Events().RemoveListener(&check);
  EXPECT_EQ(check.seen, "player_death dead=1 health=0 deaths=0 attacker=2 weapon=ak47");
  EXPECT_EQ(victim->GetDeathCount(), 1);
  EXPECT_EQ(World().ClientByUserid(2)->frags, 1);
  EXPECT_NE(server.Run("sim_kill 2 3").find("\"B\" is dead already"), std::string::npos);
  server.Run("sim_spawn 3");
  EXPECT_FALSE(victim->IsDead());
  EXPECT_EQ(victim->GetHealth(), 100);
}

TEST_F(WorldTest, HurtToZeroKills) {
  server.Run("sim_connect A\nsim_watch player_hurt player_death");
  std::string out = server.Run("sim_hurt 0 2 40\nsim_hurt 0 2 100");
  EXPECT_NE(out.find("health=60"), std::string::npos);
  EXPECT_NE(out.find("event player_hurt: userid=2 attacker=0 health=0 armor=0 weapon=world dmg_health=60"),
            std::string::npos);
  EXPECT_NE(out.find("event player_death: userid=2 attacker=0 weapon=world"), std::string::npos);
  EXPECT_EQ(World().ClientByUserid(2)->frags, -1);
}

TEST_F(WorldTest, ClientVariablesAndNamesTellThePlugin) {
  server.Run("sim_connect Alice");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_language"), "english");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_cmdrate"), "66");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "no_such_var"), "");
  EXPECT_STREQ(Engine().GetClientConVarValue(9, "cl_language"), "");
  Plugin().calls.clear();
  server.Run("sim_set 2 cvar:cl_language german\nsim_set 2 name Alicia\nsim_client 2 name Ally");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_language"), "german");
  EXPECT_EQ(Plugin().Take(), "ClientSettingsChanged @1\nClientSettingsChanged @1\nClientSettingsChanged @1\n");
  EXPECT_EQ(World().ClientByUserid(2)->name, "Ally");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "name"), "Ally");
}

TEST_F(WorldTest, BotsHaveNoChannelAndTakeFakeVariables) {
  server.Run("sim_connect Alice\nsim_addbot Robo");
  EXPECT_NE(Engine().GetPlayerNetInfo(1), nullptr);
  EXPECT_STREQ(Engine().GetPlayerNetInfo(1)->GetAddress(), "127.0.0.1:27007");
  EXPECT_EQ(Engine().GetPlayerNetInfo(2), nullptr);
  OutputCapture out;
  Engine().SetFakeClientConVarValue(Engine().PEntityOfEntIndex(2), "cl_language", "french");
  EXPECT_STREQ(Engine().GetClientConVarValue(2, "cl_language"), "french");
  Engine().SetFakeClientConVarValue(Engine().PEntityOfEntIndex(1), "cl_language", "french");
  EXPECT_STREQ(Engine().GetClientConVarValue(1, "cl_language"), "english");
  EXPECT_TRUE(out.Contains("not a bot"));
}

TEST_F(WorldTest, AClientCommandGoesToThePluginFirst) {
  server.Run("sim_connect Alice");
  Plugin().calls.clear();
  std::string out = server.Run("sim_client 2 menuselect 3");
  EXPECT_EQ(Plugin().Take(), "SetCommandClient 0\nClientCommand menuselect [3] @1\nSetCommandClient -1\n");
  EXPECT_EQ(out, "< command from 2: \"menuselect 3\"\n");
  Plugin().commandResult = PLUGIN_STOP;
  EXPECT_EQ(server.Run("sim_client 2 menuselect 3"), "");
}

TEST_F(WorldTest, ClientsReachOnlyTheGamesCommands) {
  server.Run("sim_connect Alice");
  std::string out = server.Run("sim_client 2 quit_not\nsim_client 2 \"sv_cheats 1; echo hi\"");
  EXPECT_EQ(out, "< command from 2: \"quit_not\"\n< command from 2: \"sv_cheats 1\"\n< command from 2: \"echo hi\"\n");
  EXPECT_FALSE(server.Server().QuitRequested());
  EXPECT_EQ(server.Server().Console().FindVar("sv_cheats")->GetInt(), 0);
}

TEST_F(WorldTest, ChatReachesEveryHumanAndTeamChatTheTeam) {
  server.Run("sim_connect A\nsim_connect B\nsim_addbot C\nsim_set 2 team 2\nsim_set 3 team 3");
  EXPECT_EQ(server.Run("sim_say 2 hello \"you\""), "> chat to 2,3: \"A: hello \\\"you\\\"\"\n");
  EXPECT_EQ(server.Run("sim_sayteam 3 \"go go\""), "> chat to 3: \"(TEAM) B: go go\"\n");
  EXPECT_EQ(server.Run("say from here"), "> chat to 2,3: \"Console: from here\"\n");
  EXPECT_EQ(server.Run("sim_messages off\nsay quiet"), "sim_messages is off\n");
}

TEST_F(WorldTest, EngineClientCommandComesBackAFrameLater) {
  server.Run("sim_connect Alice");
  std::string out;
  {
    OutputCapture capture;
    Engine().ClientCommand(Engine().PEntityOfEntIndex(1), "%s", "say hi; jointeam 2");
    EXPECT_EQ(capture.Take(), "> cexec to 2: \"say hi; jointeam 2\"\n");
    server.Server().Settle();
    out = capture.Take();
  }
  EXPECT_EQ(out, "> chat to 2: \"Alice: hi\"\n< command from 2: \"jointeam 2\"\n");
  EXPECT_EQ(World().ClientByUserid(2)->entity->fields.teamNum, 2);
}

TEST_F(WorldTest, ClientsStayOverALevelChange) {
  server.Run("sim_connect Alice\nsim_set 2 frags 3");
  Plugin().calls.clear();
  server.Run("map second");
  EXPECT_EQ(Plugin().Take(), "ClientPutInServer Alice @1\nClientActive @1\n");
  EXPECT_EQ(Engine().GetPlayerUserId(Engine().PEntityOfEntIndex(1)), 2);
  EXPECT_EQ(World().ClientByUserid(2)->frags, 3);
}

TEST_F(WorldTest, StatusListsThePlayers) {
  server.Run("sim_connect Alice\nsim_addbot Robo");
  std::string out = server.Run("status");
  EXPECT_NE(out.find("players : 2 (4 max)\n"), std::string::npos);
  EXPECT_NE(out.find("# userid name uniqueid connected ping loss state adr\n"
                     "# 2 \"Alice\" STEAM_0:0:100001 00:00 50 0 active 127.0.0.1:27007\n"
                     "# 3 \"Robo\" BOT active\n"),
            std::string::npos);
}

TEST_F(WorldTest, BadSimInputIsRefusedWithAMessage) {
  EXPECT_EQ(server.Run("sim_say 9 hi"), "sim_say: no client has userid \"9\"\n");
  EXPECT_NE(server.Run("sim_connect Bob NOTASTEAMID").find("isn't of the form"), std::string::npos);
  server.Run("sim_connect Alice");
  EXPECT_EQ(server.Run("sim_set 2 health lots"), "sim_set: health takes a whole number, not \"lots\"\n");
  EXPECT_NE(server.Run("sim_set 2 origin 1,2").find("Usage: sim_set"), std::string::npos);
  EXPECT_NE(server.Run("sim_hurt 0 2 -5").find("Usage: sim_hurt"), std::string::npos);
  EXPECT_EQ(World().ClientByUserid(2)->entity->fields.health, 100);
}

}  // namespace
