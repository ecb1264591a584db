// The engine command wrappers: a run armed for a player with the cheat gate open for one call, what a give
// created, the cheat gate for unarmed runs, a wrapper whose command the game lacks, and changelevel.
#include <gtest/gtest.h>

#include <string>

#include "edict.h"
#include "language/wrappers.h"
#include "regcmds_fixture.h"

namespace {

class WrappersTest : public RegCmdsTest {
protected:
  void TearDown() override {
    CheatsValues()->m_fValue = 0;
    CheatsValues()->m_nValue = 0;
    tidewright_nextmapoverride.SetValue("");
    RegCmdsTest::TearDown();
  }
  static ConVar* CheatsValues() { return FindServerVar("sv_cheats")->GetParent(); }
  static std::string ClassNameAt(int index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    return edict && !edict->IsFree() && edict->GetNetworkable() ? edict->GetNetworkable()->GetClassName() : "";
  }
};

TEST_F(WrappersTest, LoadMadeTheTwelveWrappersAroundTheGamesCommands) {
  const char* wrapped[WRAP_COUNT] = {"ent_setname", "ent_fire", "test_dispatcheffect", "test_entity_blocker",
                                     "Test_CreateEntity", "give", "ent_create", "prop_physics_create",
                                     "prop_dynamic_create", "setpos", "setang", "ent_remove"};
  for (int i = 0; i < WRAP_COUNT; ++i) {
    CCmdWrap* wrapper = GetCommandWrapper(CommandWrapper(i));
    ASSERT_NE(wrapper, nullptr) << i;
    ASSERT_NE(wrapper->Wrapped(), nullptr) << wrapper->GetName();
    EXPECT_STREQ(wrapper->Wrapped()->GetName(), wrapped[i]);
    EXPECT_STREQ(wrapper->GetHelpText(), "Tidewright internal command.");
    EXPECT_TRUE(wrapper->IsBitSet(FCVAR_GAMEDLL));
    EXPECT_EQ(FindCommand(wrapper->GetName()), wrapper);
  }
  EXPECT_STREQ(GetCommandWrapper(WRAP_GIVE)->GetName(), "tw__give");
  EXPECT_EQ(GetCommandWrapper(WRAP_COUNT), nullptr);
}

TEST_F(WrappersTest, ArmedGiveCreatesTheWeaponForThePlayerWithCheatsStayingOff) {
  CClient& alice = Player("Alice");
  OutputCapture capture;
  GetCommandWrapper(WRAP_GIVE)->Arm(alice.slot, "weapon_awp");
  Settle();
  int given = tidewright_lastgive.GetInt();
  EXPECT_GT(given, alice.slot);
  EXPECT_EQ(ClassNameAt(given), "weapon_awp");
  EXPECT_EQ(alice.weapon, "weapon_awp");
  EXPECT_FALSE(GetCommandWrapper(WRAP_GIVE)->Pending());
  // Neither a change callback nor the announcement to clients ran, and the values are back at 0.
  EXPECT_EQ(capture.Text().find("sv_cheats"), std::string::npos) << capture.Text();
  EXPECT_EQ(Var("sv_cheats"), "0");
  EXPECT_EQ(CheatsValues()->m_nValue, 0);
  EXPECT_EQ(CheatsValues()->m_fValue, 0.0f);
}

TEST_F(WrappersTest, TheLowestChangedIndexIsTheOneRecorded) {
  CClient& alice = Player("Alice");
  GetCommandWrapper(WRAP_GIVE)->Arm(alice.slot, "weapon_deagle");
  Settle();
  int first = tidewright_lastgive.GetInt();
  GetCommandWrapper(WRAP_CREATEENTITY2)->Arm(alice.slot, "weapon_glock");
  Settle();
  EXPECT_GT(tidewright_lastgive.GetInt(), first);
  EXPECT_EQ(ClassNameAt(tidewright_lastgive.GetInt()), "weapon_glock");
}

TEST_F(WrappersTest, AGiveThatCreatesNothingLeavesZero) {
  CClient& alice = Player("Alice");
  GetCommandWrapper(WRAP_GIVE)->Arm(alice.slot, "weapon_awp");
  Settle();
  ASSERT_NE(tidewright_lastgive.GetInt(), 0);
  GetCommandWrapper(WRAP_GIVE)->Arm(alice.slot, "no_such_weapon");
  std::string out = Settle();
  EXPECT_NE(out.find("NULL Ent in GiveNamedItem! (no_such_weapon)"), std::string::npos) << out;
  EXPECT_EQ(tidewright_lastgive.GetInt(), 0);
}

TEST_F(WrappersTest, AnUnarmedRunMeetsTheCheatGate) {
  EXPECT_EQ(Run("tw__give weapon_awp"), "Cannot execute a cheat command while sv_cheats = 0.\n");
  EXPECT_EQ(Run("tw__setpos 1 2 3"), "Cannot execute a cheat command while sv_cheats = 0.\n");
}

TEST_F(WrappersTest, AnUnarmedRunActsForTheEnginesCurrentClient) {
  CheatsValues()->m_fValue = 1;
  CheatsValues()->m_nValue = 1;
  std::string out = Run("tw__give weapon_awp");
  EXPECT_NE(out.find("give: no player runs this"), std::string::npos) << out;
  EXPECT_EQ(tidewright_lastgive.GetInt(), 0);
  EXPECT_EQ(CheatsValues()->m_nValue, 1);
}

TEST_F(WrappersTest, ArmingIsForOneRunOnly) {
  CClient& alice = Player("Alice");
  GetCommandWrapper(WRAP_GIVE)->Arm(alice.slot, "weapon_awp");
  Settle();
  EXPECT_EQ(Run("tw__give weapon_awp"), "Cannot execute a cheat command while sv_cheats = 0.\n");
}

TEST_F(WrappersTest, AnArmedMoveActsForThePlayer) {
  CClient& bob = Player("Bob");
  GetCommandWrapper(WRAP_SETPOS)->Arm(bob.slot, "10 20 30");
  Settle();
  EXPECT_EQ(bob.entity->fields.origin.x, 10.0f);
  EXPECT_EQ(bob.entity->fields.origin.z, 30.0f);
}

TEST_F(WrappersTest, AnArmingLineTooLongForTheBufferArmsNothing) {
  std::string args(3000, 'x');
  OutputCapture capture;
  GetCommandWrapper(WRAP_GIVE)->Arm(1, args.c_str());
  EXPECT_TRUE(capture.Contains("tw__give: The command line is too long.\n")) << capture.Text();
  EXPECT_FALSE(GetCommandWrapper(WRAP_GIVE)->Pending());
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
  EXPECT_EQ(Settle(), "");
}

TEST_F(WrappersTest, AWrapperOfACommandTheGameLacksStandsHarmless) {
  OutputCapture capture;
  // Registered with the engine for good, so never destroyed.
  CCmdWrap* wrapper = new CCmdWrap("tw__test_nothing", "help", "no_such_game_command");
  EXPECT_TRUE(capture.Contains("CmdWrap Error! BREAK\n")) << capture.Text();
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal Error");
  EXPECT_EQ(wrapper->Wrapped(), nullptr);
  EXPECT_EQ(FindCommand("tw__test_nothing"), wrapper);
  wrapper->Arm(Player("Alice").slot, "x");
  EXPECT_EQ(Settle(), "tw__test_nothing: the game has no command no_such_game_command to run.\n");
  EXPECT_EQ(CheatsValues()->m_nValue, 0);
}

TEST_F(WrappersTest, NamesAreMatchedWithTheirCase) {
  EXPECT_EQ(FindWrappedCommand("test_createentity", nullptr), nullptr);
  EXPECT_NE(FindWrappedCommand("Test_CreateEntity", nullptr), nullptr);
}

TEST_F(WrappersTest, SayAndChangelevelWrappersStandInFrontOfTheEngines) {
  for (CSayWrap* wrapper : {GetSayWrapper(false), GetSayWrapper(true)}) {
    ASSERT_NE(wrapper, nullptr);
    EXPECT_EQ(FindCommand(wrapper->GetName()), wrapper);
    ASSERT_NE(wrapper->Wrapped(), nullptr);
    EXPECT_NE(static_cast<ConCommandBase*>(wrapper->Wrapped()), wrapper);
    EXPECT_STREQ(wrapper->Wrapped()->GetName(), wrapper->GetName());
  }
  EXPECT_STREQ(GetSayWrapper(true)->GetHelpText(), "say team message");
  CChangeLevelWrap* changelevel = GetChangeLevelWrapper();
  ASSERT_NE(changelevel, nullptr);
  EXPECT_EQ(FindCommand("changelevel"), changelevel);
  ASSERT_NE(changelevel->Wrapped(), nullptr);
  EXPECT_NE(static_cast<ConCommandBase*>(changelevel->Wrapped()), changelevel);
}

TEST_F(WrappersTest, ASecondLevelMakesNoSecondWrappers) {
  CSayWrap* say = GetSayWrapper(false);
  CChangeLevelWrap* changelevel = GetChangeLevelWrapper();
  OutputCapture quiet;
  g_TidewrightPlugin.LevelInit("sim_map");
  EXPECT_EQ(GetSayWrapper(false), say);
  EXPECT_EQ(GetChangeLevelWrapper(), changelevel);
  EXPECT_EQ(FindCommand("say"), say);
}

TEST_F(WrappersTest, ChangelevelFromAClientAboveTheFirstSlotIsRefused) {
  g_TidewrightPlugin.SetCommandClient(1);
  tidewright_nextmapoverride.SetValue("other_map");
  EXPECT_EQ(Run("changelevel de_nowhere"), "changelevel: userid 2 tried to change the map via an old exploit.\n");
  EXPECT_EQ(Var("tidewright_nextmapoverride"), "other_map");
}

TEST_F(WrappersTest, AnOverrideOfZeroOrAChangelevelWithoutMapPassesToTheEngine) {
  tidewright_nextmapoverride.SetValue("0");
  EXPECT_EQ(Run("changelevel"), "Usage: changelevel <map>\n");
  EXPECT_EQ(Var("tidewright_nextmapoverride"), "0");
  tidewright_nextmapoverride.SetValue("other_map");
  EXPECT_EQ(Run("changelevel"), "Usage: changelevel <map>\n");
  EXPECT_EQ(Var("tidewright_nextmapoverride"), "other_map");
}

}  // namespace
