// Registered commands: the tables and the commands that fill them, the proxies, the say path with its chat
// event and say commands, and the plugin's ClientCommand with its event and client commands.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "language/regcmds.h"
#include "language/varcommands.h"
#include "regcmds_fixture.h"

namespace {

class RegisteredCommandsTest : public RegCmdsTest {
protected:
  void TearDown() override {
    OutputCapture quiet;  // the master switch is announced to clients
    Run("tw_xunregsaycmd !rc;tw_xunregclientcmd !rc");
    brannock_tidewright.SetValue(1);
    tidewright_debug.SetValue(0);
    RegCmdsTest::TearDown();
  }
  static std::string Cut(const char* text) {
    char buffer[64];
    snprintf(buffer, sizeof buffer, "%s", text);
    CutOuterQuotes(buffer);
    return buffer;
  }
};

// ---- the tables ----

TEST_F(RegisteredCommandsTest, TheFirstRegistrationOfANameStays) {
  Run("tw_xregsaycmd !keep blockA x");
  Run("tw_xregsaycmd !keep blockB x");
  EXPECT_STREQ(FindSayCommand("!keep"), "blockA");
  EXPECT_STREQ(FindSayCommand("!KEEP"), nullptr) << "the hash counts case";
  EXPECT_EQ(Run("tw_xunregsaycmd !keep"), "");
  Run("tw_xregsaycmd !keep blockB x");
  EXPECT_STREQ(FindSayCommand("!keep"), "blockB");
  Run("tw_xunregsaycmd !keep");
}

TEST_F(RegisteredCommandsTest, RemovingANameThatIsNotThereSaysSo) {
  EXPECT_EQ(Run("tw_xunregsaycmd !none"), "unregsaycmd: Did not find command: !none\n");
  EXPECT_EQ(Run("tw_unregclientcmd !none"), "unregclientcmd: Did not find command: !none\n");
  EXPECT_STREQ(FindClientCommand(nullptr), nullptr);
}

TEST_F(RegisteredCommandsTest, TooFewArgumentsGiveTheUsageOfTheDoorUsed) {
  EXPECT_EQ(Run("tw_xregsaycmd !a"), "Syntax: tw_xregsaycmd <command-name> <block-name> <description>\n");
  EXPECT_EQ(Run("tw_regcmd rc_a"), "Syntax: tw_regcmd <command-name> <block-name> <description>\n");
  EXPECT_EQ(Run("tw_xunregclientcmd"), "Syntax: tw_xunregclientcmd <command-name>\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
  EXPECT_STREQ(FindSayCommand("!a"), nullptr);
}

// ---- regcmd and the proxies ----

TEST_F(RegisteredCommandsTest, ARegisteredConsoleCommandRunsItsBlockWithItsNameAsArgumentZero) {
  LoadArgsScript();
  Run("tw_xregcmd rc_console rc/args \"my help\"");
  ConCommandBase* command = FindCommand("rc_console");
  ASSERT_NE(command, nullptr);
  EXPECT_STREQ(command->GetHelpText(), "my help");
  g_commandUserid = 77;
  Run("rc_console one \"two three\"");
  EXPECT_EQ(BlockSaw(), "who=77 argc=3 argv0=rc_console argv1=one args=one \"two three\"");
  Run("rc_console");
  EXPECT_EQ(BlockSaw(), "who=77 argc=1 argv0=rc_console argv1= args=");
}

TEST_F(RegisteredCommandsTest, ARegisteredConsoleCommandCannotBeMadeTwice) {
  Run("tw_xregcmd rc_twice rc/args");
  EXPECT_STREQ(FindCommand("rc_twice")->GetHelpText(), "");
  EXPECT_EQ(Run("tw_xregcmd RC_TWICE rc/other x"), "");
  EXPECT_EQ(Run("tw_xregcmd rc_twice rc/other x"), "tw_xregcmd: ERROR. Command rc_twice already exists.\n");
  EXPECT_STREQ(FindConsoleCommand("rc_twice"), "rc/args");
}

TEST_F(RegisteredCommandsTest, AConsoleCommandWithoutANameIsRefused) {
  EXPECT_EQ(Run("tw_xregcmd \"\" rc/args x"), "tw_xregcmd: ERROR. A command needs a name.\n");
  EXPECT_STREQ(FindConsoleCommand(""), nullptr);
}

TEST_F(RegisteredCommandsTest, TheProxiesByTheirOwnNamesFindNothing) {
  EXPECT_EQ(Run("tw__cmdproxy x"), "CmdProxy: Internal Error. No such command registered: tw__cmdproxy\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal Error");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw__clientcmdproxy a b"),
            "CmdProxy: \"tw__clientcmdproxy a b\"\n"
            "CmdProxy: Internal Error. No such command registered: tw__clientcmdproxy\n");
}

TEST_F(RegisteredCommandsTest, AProxyLineTooLongForTheBufferRunsNothing) {
  LoadArgsScript();
  Run("tw_xregcmd rc_long rc/args x");
  std::string out = Run("rc_long " + std::string(2100, 'y'));
  EXPECT_EQ(out, "CmdProxy: The command line of rc_long is too long.\n");
  EXPECT_EQ(Var("rc_argc"), "0");
}

// ---- the say path ----

TEST_F(RegisteredCommandsTest, OuterQuotesAreCutWithAtMostOneQuoteInside) {
  EXPECT_EQ(Cut("\"hello you\""), "hello you");
  EXPECT_EQ(Cut("\"say \"hi\""), "say \"hi");
  EXPECT_EQ(Cut("\"hello \"there\" you\""), "\"hello \"there\" you\"");
  EXPECT_EQ(Cut("\"\""), "");
  EXPECT_EQ(Cut("\""), "\"");
  EXPECT_EQ(Cut("\"open"), "\"open");
  EXPECT_EQ(Cut("plain"), "plain");
}

TEST_F(RegisteredCommandsTest, ASayCommandTakesTheWholeLineAndTheSpeaker) {
  CClient& bob = Player("Bob");
  LoadArgsScript();
  Run("tw_xregsaycmd !rc rc/args x");
  std::string out = Run("sim_say " + Userid(bob) + " !RC first second");
  EXPECT_EQ(out.find("> chat"), std::string::npos) << "a say command eats the line: " << out;
  EXPECT_EQ(BlockSaw(), "who=" + Userid(bob) + " argc=3 argv0=!rc argv1=first args=first second");
  EXPECT_EQ(Events(), "tw_player_chat userid=" + Userid(bob) + " teamonly=0 text=!RC first second\n");
}

TEST_F(RegisteredCommandsTest, ASayCommandRegisteredWithCapitalsIsNeverFound) {
  CClient& bob = Player("Bob");
  LoadArgsScript();
  Run("tw_xregsaycmd !Caps rc/args x");
  std::string out = Run("sim_say " + Userid(bob) + " !Caps x");
  EXPECT_NE(out.find("> chat to"), std::string::npos) << out;
  EXPECT_EQ(Var("rc_argc"), "0");
  Run("tw_xunregsaycmd !Caps");
}

TEST_F(RegisteredCommandsTest, TheChatEventTellsTeamLinesAndKeepsInnerQuotes) {
  CClient& alice = Player("Alice");
  Run("sim_sayteam " + Userid(alice) + " hello team");
  Run("sim_say " + Userid(alice) + " \"hello \"there\" you\"");
  EXPECT_EQ(Events(), "tw_player_chat userid=" + Userid(alice) + " teamonly=1 text=hello team\n" +
                          "tw_player_chat userid=" + Userid(alice) + " teamonly=0 text=\"hello \"there\" you\"\n");
}

TEST_F(RegisteredCommandsTest, AConsoleLineFiresTheEventUnchangedAndRunsNoSayCommand) {
  LoadArgsScript();
  Run("tw_xregsaycmd !rc rc/args x");
  std::string out = Run("say \"!rc from the console\"");
  EXPECT_NE(out.find("> chat to"), std::string::npos) << out;
  EXPECT_EQ(Var("rc_argc"), "0");
  EXPECT_EQ(Events(), "tw_player_chat userid=-1 teamonly=0 text=\"!rc from the console\"\n");
}

TEST_F(RegisteredCommandsTest, AChatCommandWithoutTextFiresNothing) {
  CClient& alice = Player("Alice");
  Standin().RunClientCommand(engine->PEntityOfEntIndex(alice.slot), "say");
  EXPECT_EQ(Events(), "");
}

TEST_F(RegisteredCommandsTest, AnEatenLineIsToldAtLevelThree) {
  CClient& bob = Player("Bob");
  Run("tw_xregsaycmd !rc rc/nowhere x");
  tidewright_debug.SetValue(3);
  std::string out = Run("sim_say " + Userid(bob) + " !rc");
  EXPECT_NE(out.find("[Tidewright] say command eaten."), std::string::npos) << out;
}

// ---- client commands ----

TEST_F(RegisteredCommandsTest, APrefixedClientCommandFiresTheEventAndReachesTheGame) {
  CClient& alice = Player("Alice");
  std::string out = Run("sim_client " + Userid(alice) + " !stats all \"of them\"");
  EXPECT_NE(out.find("< command from " + Userid(alice) + ": \"!stats all \\\"of them\\\"\""), std::string::npos)
      << out;
  EXPECT_EQ(Events(), "tw_client_command userid=" + Userid(alice) + " command=!stats commandstring=all \"of them\"\n");
}

TEST_F(RegisteredCommandsTest, ARegisteredClientCommandTakesTheCommandFromTheGame) {
  CClient& alice = Player("Alice");
  LoadArgsScript();
  Run("tw_xregclientcmd !rc rc/args x");
  std::string out = Run("sim_client " + Userid(alice) + " !RC go");
  EXPECT_EQ(out.find("< command from"), std::string::npos) << out;
  EXPECT_EQ(BlockSaw(), "who=" + Userid(alice) + " argc=2 argv0=!RC argv1=go args=go");
  EXPECT_EQ(Events(), "tw_client_command userid=" + Userid(alice) + " command=!RC commandstring=go\n");
}

TEST_F(RegisteredCommandsTest, WithTheMasterSwitchOffClientCommandsPassToTheGame) {
  CClient& alice = Player("Alice");
  LoadArgsScript();
  Run("tw_xregclientcmd !rc rc/args x");
  OutputCapture quiet;
  brannock_tidewright.SetValue(0);
  std::string out = Run("sim_client " + Userid(alice) + " !rc go");
  EXPECT_NE(out.find("< command from"), std::string::npos) << out;
  EXPECT_EQ(Var("rc_argc"), "0");
}

TEST_F(RegisteredCommandsTest, WithoutPrefixesOnlyMenuselectFires) {
  CClient& alice = Player("Alice");
  tidewright_cmdprefixes.SetValue("");
  Run("sim_client " + Userid(alice) + " !stats");
  Run("sim_client " + Userid(alice) + " MenuSelect 3");
  EXPECT_EQ(Events(), "tw_client_command userid=" + Userid(alice) + " command=MenuSelect commandstring=3\n");
}

TEST_F(RegisteredCommandsTest, TheVersionQueryIsAnsweredThroughTell) {
  CClient& alice = Player("Alice");
  std::string out = Run("sim_client " + Userid(alice) + " tw_version");
  EXPECT_NE(out.find("Unknown command \"tw_xtell\""), std::string::npos) << out;
  EXPECT_NE(out.find("< command from " + Userid(alice) + ": \"tw_version\""), std::string::npos) << out;
}

TEST_F(RegisteredCommandsTest, ACommandFromNoClientPasses) {
  EXPECT_EQ(g_TidewrightPlugin.ClientCommand(nullptr), PLUGIN_CONTINUE);
  EXPECT_EQ(Events(), "");
}

}  // namespace
