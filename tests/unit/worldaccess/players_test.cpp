// Player lookup: the order of FindUserIDByString's tests, the class test that only LookupEdictByUserid
// makes, handles, the getters' failure values and their levels, the two ways of telling death, and counts.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "iplayerinfo.h"
#include "worldaccess_fixture.h"
#include "world/players.h"

namespace {

class PlayersTest : public WorldAccessTest {
protected:
  static std::string NameOf(int userid) {
    CClient* client = userid ? SimWorld().ClientByUserid(userid) : nullptr;
    return client ? client->name : "<none>";
  }
  // Restores an interface global of the plugin at the end of a test.
  template <class T>
  struct Withheld {
    T*& global;
    T* saved;
    explicit Withheld(T*& g) : global(g), saved(g) { global = nullptr; }
    ~Withheld() { global = saved; }
  };
};

TEST_F(PlayersTest, FindUserIDByStringTriesItsStepsInOrder) {
  EXPECT_EQ(FindUserIDByString(""), 0);  // an empty server: nobody
  int alice = Connect("Alice", "STEAM_0:1:111");
  int al = Connect("Al", "STEAM_0:0:222");
  AddBot("Bob");
  Connect("xSTEAM_y");
  Connect("99999");
  Connect("Agent 0");
  AddBot("Zed");
  int mallory = Connect("Mallory");
  SimWorld().Rename(Client(mallory), std::to_string(alice).c_str());
  const std::string alHandle = std::to_string(LookupHandleByUserid(al));

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "Alice"},                          // any connected player: the lowest slot
      {std::to_string(al), "Al"},             // a userid
      {alHandle, "Al"},                       // no such userid, but a handle
      {std::to_string(al) + "abc", "Al"},     // digits first: their value
      {std::to_string(alice), "Alice"},       // a userid wins over a name that is the same number
      {"steam_0:0:222", "Al"},                // a steam id, case ignored
      {"STEAM_0:9:999", "<none>"},            // a steam id of nobody falls through the name tests
      {"STEAM_", "xSTEAM_y"},                 // too short for a steam id: part of a name
      {"al", "Al"},                           // the exact name before a part of a lower slot's name
      {"ALI", "Alice"},                       // part of a name
      {"99999", "99999"},                     // a number that is no userid or handle: the name
      {"0", "Agent 0"},                       // 0 is no userid: matched as a name
      {"bot", "Bob"},                         // the bot id: the lowest bot
      {"nobody at all", "<none>"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(NameOf(FindUserIDByString(text.c_str())), expected) << text;
  EXPECT_EQ(NameOf(FindUserIDByString(nullptr)), "Alice");
  Connect("bot");
  EXPECT_EQ(NameOf(FindUserIDByString("BOT")), "bot");  // a player named bot wins over the bots
}

TEST_F(PlayersTest, OnlyAPlayerEntityIsFoundByEdict) {
  int userid = Connect("Shifter");
  edict_t* edict = EdictOf(userid);
  EXPECT_EQ(LookupEdictByUserid(userid), edict);
  // The slot's entity becomes something else for a moment: the index lookup still finds the slot.
  CEntity* other = SimWorld().CreateEntity(*FindEntityType("info_target"), Vector());
  IServerNetworkable* own = edict->m_pNetworkable;
  edict->m_pNetworkable = other;
  EXPECT_EQ(LookupEdictByUserid(userid), nullptr);
  EXPECT_EQ(LookupIndexByUserid(userid), Client(userid).slot);
  edict->m_pNetworkable = own;
  SimWorld().RemoveEntity(*other);
}

TEST_F(PlayersTest, HandlesLeadToPlayersAndBack) {
  int a = Connect("A");
  int b = AddBot("B");
  int handleB = LookupHandleByUserid(b);
  EXPECT_EQ(uint32_t(handleB), Client(b).entity->GetRefEHandle().ToInt());
  EXPECT_EQ(LookupUseridByHandle(handleB), b);
  EXPECT_EQ(LookupUseridByHandle(LookupHandleByUserid(a)), a);
  EXPECT_EQ(LookupUseridByHandle(handleB + 1), 0);
  EXPECT_EQ(LookupHandleByUserid(b + 100), 0);
}

TEST_F(PlayersTest, GettersOfAMissingPlayerGiveTheirFailureValuesWithTheirLevels) {
  Set("tidewright_debug", "1");
  OutputCapture capture;
  EXPECT_EQ(GetPlayerName(42), nullptr);
  EXPECT_EQ(GetPlayerTeam(42), 0);
  Vector where(7, 7, 7);
  EXPECT_FALSE(GetPlayerLocation(42, where));  // level 2
  EXPECT_EQ(where, Vector(7, 7, 7));
  EXPECT_EQ(GetPlayerLastCommand(42), nullptr);  // level 3
  EXPECT_EQ(capture.Take(), "Player doesn't exist: 42\nPlayer doesn't exist: 42\n");
}

TEST_F(PlayersTest, DeathIsToldByTheFlagOrByThePlayerInfo) {
  int userid = Connect("Mortal");
  EXPECT_EQ(IsPlayerDead(userid), 0);
  Run("sim_kill 0 " + std::to_string(userid));
  EXPECT_NE(IsPlayerDead(userid), 0);
  EXPECT_EQ(IsPlayerDead(userid + 100), -1);
  {
    // Without the game's classes the flag can't be read: -1, which counts as dead; the player info can.
    Withheld<IServerGameDLL> noClasses(gamedll);
    Run("sim_spawn " + std::to_string(userid));
    EXPECT_EQ(IsPlayerDead(userid), -1);
    Set("tidewright_deadflag", "0");
    EXPECT_EQ(IsPlayerDead(userid), 0);
  }
  Withheld<IPlayerInfoManager> noInfo(playerinfomanager);
  EXPECT_EQ(IsPlayerDead(userid), -1);
}

TEST_F(PlayersTest, CountsByTeamAndLifeWithBothWaysOfTellingDeath) {
  EXPECT_EQ(GetPlayerCount(-1, false), 0);
  int t1 = Connect("T1"), t2 = Connect("T2"), ct = AddBot("CT");
  Run("sim_set " + std::to_string(t1) + " team 2\nsim_set " + std::to_string(t2) + " team 2");
  Run("sim_set " + std::to_string(ct) + " team 3\nsim_kill 0 " + std::to_string(t2));
  struct Case {
    int team;
    bool living;
    int expected;
  };
  const Case cases[] = {{-1, false, 3}, {-5, true, 2}, {2, false, 2}, {2, true, 1}, {3, true, 1}, {0, false, 0}};
  for (const char* method : {"1", "0"}) {
    Set("tidewright_deadflag", method);
    for (const Case& c : cases)
      EXPECT_EQ(GetPlayerCount(c.team, c.living), c.expected) << "team " << c.team << " method " << method;
  }
  Set("tidewright_deadflag", "1");
  Withheld<IServerGameDLL> noClasses(gamedll);
  EXPECT_EQ(GetPlayerCount(-1, true), 0);  // -1 from the flag counts as dead
}

}  // namespace
