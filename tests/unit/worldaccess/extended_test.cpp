// Extended event variables: both columns in table order with their traces, text keys left out when the
// getter gives none, and nothing for userids of 0.
#include <gtest/gtest.h>

#include <string>

#include "events/extended.h"
#include "igameevents.h"
#include "worldaccess_fixture.h"

namespace {

class ExtendedTest : public WorldAccessTest {
protected:
  void SetUp() override {
    WorldAccessTest::SetUp();
    m_event = gameeventmanager->CreateEvent("player_hurt", true);
    ASSERT_NE(m_event, nullptr);
  }
  void TearDown() override {
    gameeventmanager->FreeEvent(m_event);
    WorldAccessTest::TearDown();
  }
  IGameEvent* m_event = nullptr;
};

TEST_F(ExtendedTest, BothPlayersInTableOrderWithTheirTraces) {
  int victim = Connect("Vic", "STEAM_0:0:9");
  int attacker = AddBot("Att");
  Run("sim_set " + std::to_string(attacker) + " weapon weapon_awp");
  m_event->SetInt("userid", victim);
  m_event->SetInt("attacker", attacker);
  Set("tidewright_deadflag", "0");  // keeps the path search's traces out of this test
  Set("tidewright_debug", "3");
  OutputCapture capture;
  SetExtendedEventVariables(m_event);
  EXPECT_EQ(capture.Text(),
            "tw_username set: Vic\ntw_steamid set: STEAM_0:0:9\ntw_userweapon set: \ntw_userteam set.\n"
            "tw_userarmor set.\ntw_userhealth set.\ntw_userdeaths set.\ntw_userkills set.\ntw_userdead set.\n"
            "tw_userindex set.\ntw_attackername set.\ntw_attackersteamid set.\ntw_attackerweapon set.\n"
            "tw_attackerteam set.\ntw_attackerarmor set.\ntw_attackerhealth set.\ntw_attackerdeaths set.\n"
            "tw_attackerkills set.\ntw_attackerdead set.\ntw_attackerindex set.\n");
  EXPECT_STREQ(m_event->GetString("tw_attackersteamid"), "BOT");
  EXPECT_STREQ(m_event->GetString("tw_attackerweapon"), "weapon_awp");
  EXPECT_EQ(m_event->GetInt("tw_attackerindex"), Client(attacker).slot);
  EXPECT_EQ(m_event->GetInt("tw_userhealth"), 100);
}

TEST_F(ExtendedTest, AMissingPlayerGetsNumbersOnlyAndAZeroUseridNothing) {
  m_event->SetInt("userid", 77);
  SetExtendedEventVariables(m_event);
  EXPECT_TRUE(m_event->IsEmpty("tw_username"));
  EXPECT_TRUE(m_event->IsEmpty("tw_steamid"));
  EXPECT_EQ(m_event->GetInt("tw_userdead", 5), -1);
  EXPECT_EQ(m_event->GetInt("tw_userindex", 5), 0);
  EXPECT_TRUE(m_event->IsEmpty("tw_attackerindex"));
}

}  // namespace
