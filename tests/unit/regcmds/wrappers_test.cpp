// The engine command wrappers: a run armed for a player with the cheat gate open for that one call, what a
// give created, an arming line past the buffer, and a wrapper whose command the game lacks. The
// entity_commands scenario shows each wrapper at work through its script command.
#include <gtest/gtest.h>

#include <string>

#include "language/wrappers.h"
#include "regcmds_fixture.h"

namespace {

class WrappersTest : public RegCmdsTest {
protected:
  void TearDown() override {
    CheatsValues()->m_fValue = 0;
    CheatsValues()->m_nValue = 0;
    RegCmdsTest::TearDown();
  }
  static ConVar* CheatsValues() { return FindServerVar("sv_cheats")->GetParent(); }
  // Arms the wrapper for the player and runs what that queued.
  static std::string ArmAndRun(CommandWrapper which, const CClient& player, const char* args) {
    GetCommandWrapper(which)->Arm(player.slot, args);
    return Settle();
  }
};

// The entity_commands scenario shows what a give makes and tidewright_lastgive naming it.
TEST_F(WrappersTest, ArmedGiveActsForThePlayerWithCheatsStayingOff) {
  CClient& alice = Player("Alice");
  OutputCapture capture;
  ArmAndRun(WRAP_GIVE, alice, "weapon_awp");
  EXPECT_EQ(alice.weapon, "weapon_awp");
  EXPECT_FALSE(GetCommandWrapper(WRAP_GIVE)->Pending());
  // Neither a change callback nor the announcement to clients ran, and the values are back at 0.
  EXPECT_EQ(capture.Text().find("sv_cheats"), std::string::npos) << capture.Text();
  EXPECT_EQ(Var("sv_cheats"), "0");
  EXPECT_EQ(CheatsValues()->m_nValue, 0);
  EXPECT_EQ(CheatsValues()->m_fValue, 0.0f);
  EXPECT_EQ(Run("tw__give weapon_awp"), "Cannot execute a cheat command while sv_cheats = 0.\n");  // armed once
}

TEST_F(WrappersTest, AnArmingLineTooLongForTheBufferArmsNothing) {
  OutputCapture capture;
  GetCommandWrapper(WRAP_GIVE)->Arm(1, std::string(3000, 'x').c_str());
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

}  // namespace
