// The order of the lifecycle commands against the script's own blocks: reload, enable and disable, and
// scripts that are removed while their lines or queued event blocks still wait in the buffer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "script_fixture.h"

namespace {

class LifecycleOrderTest : public ScriptTest {
 protected:
  static std::string List(std::initializer_list<std::string> rows) {
    std::string text = "\n[Tidewright] Loaded:\n";
    for (const std::string& row : rows) text += "[Tidewright]   " + row + "\n";
    return text + "[Tidewright]------------------------\n\n";
  }
  static std::string EventCommands(const char* event) {
    char* text = g_scriptMachine.registry.BuildEventCommands(event);
    std::string commands = text;
    free(text);
    return commands;
  }
};

// ---- reload ----

TEST_F(LifecycleOrderTest, ReloadRunsTheOldUnloadThenTheNewLoad) {
  Load("foo", "block load\n{\necho old load\n}\nblock unload\n{\necho old unload\n}\n");
  WriteScript("foo", "block load\n{\necho new load\n}\nblock unload\n{\necho new unload\n}\n");
  EXPECT_EQ(Run("tw_reload foo"),
            "Unloading foo...\nold unload\nScript removed: foo\n[Tidewright] Loaded foo\nnew load\n");
  EXPECT_EQ(Run("tw_xunload foo"), "Unloading foo...\nnew unload\nScript removed: foo\n");
}

TEST_F(LifecycleOrderTest, ReloadOfAScriptNotLoadedLoadsIt) {
  WriteScript("fresh", "block load\n{\necho fresh load\n}\n");
  EXPECT_EQ(Run("tw_xreload fresh"), "Unloading fresh...\n[Tidewright] Loaded fresh\nfresh load\n");
}

TEST_F(LifecycleOrderTest, ReloadEnablesADisabledScript) {
  Load("foo", "");
  Run("tw_disable foo");
  Run("tw_reload foo");
  EXPECT_EQ(Run("tw_load"), List({"[ enabled] foo"}));
}

TEST_F(LifecycleOrderTest, ReloadKeepsTheQueueBehindIt) {
  Load("foo", "block load\n{\necho loaded\n}\n");
  EXPECT_EQ(Run("tw_reload foo;echo behind"),
            "Unloading foo...\nScript removed: foo\n[Tidewright] Loaded foo\nloaded\n"
            "behind\n");
}

// ---- enable and disable ----

TEST_F(LifecycleOrderTest, EnableBlockSeesTheScriptEnabled) {
  Load("foo", "block enable\n{\ntw_xload\n}\n");
  g_scriptMachine.registry.SetScriptEnabled("foo", false);
  EXPECT_EQ(Run("tw_enable foo"), "Enabling foo...\n" + List({"[ enabled] foo"}));
}

TEST_F(LifecycleOrderTest, DisableBlockSeesTheScriptStillEnabled) {
  Load("foo", "block disable\n{\ntw_xload\n}\n");
  EXPECT_EQ(Run("tw_disable foo"), "Disabling foo...\n" + List({"[ enabled] foo"}));
  EXPECT_EQ(Run("tw_xload"), List({"[disabled] foo"}));
}

TEST_F(LifecycleOrderTest, BlocksRunEveryTimeWhateverTheState) {
  Load("foo", "block enable\n{\necho enable block\n}\nblock disable\n{\necho disable block\n}\n");
  EXPECT_EQ(Run("tw_enable foo\ntw_xenable foo"), "Enabling foo...\nenable block\nEnabling foo...\nenable block\n");
  EXPECT_EQ(Run("tw_disable foo\ntw_xdisable foo"),
            "Disabling foo...\ndisable block\nDisabling foo...\ndisable block\n");
  EXPECT_FALSE(g_scriptMachine.registry.FindScript("foo")->enabled);
}

TEST_F(LifecycleOrderTest, UnknownNamesOnlySayWhatTheyWouldDo) {
  EXPECT_EQ(Run("tw_enable ghost\ntw_disable ghost"), "Enabling ghost...\nDisabling ghost...\n");
}

TEST_F(LifecycleOrderTest, NamesIgnoreCaseButBlockNamesDoNot) {
  Load("foo", "block disable\n{\necho disable block\n}\n");
  EXPECT_EQ(Run("tw_disable FOO"), "Disabling FOO...\n");
  EXPECT_FALSE(g_scriptMachine.registry.FindScript("foo")->enabled);
}

TEST_F(LifecycleOrderTest, DisabledScriptKeepsItsBlocksButNotItsEvents) {
  Load("foo", "event player_death\n{\necho death\n}\nblock x\n{\necho x ran\n}\n");
  Load("bar", "event player_death\n{\necho bar death\n}\n");
  Run("tw_disable foo");
  EXPECT_EQ(Run("tw_doblock foo/x"), "x ran\n");
  EXPECT_TRUE(g_scriptMachine.registry.HasEvent("player_death"));
  std::string commands = EventCommands("player_death");
  EXPECT_EQ(Run(commands), "bar death\n");
  Run("tw_enable foo");
  EXPECT_EQ(Run(EventCommands("player_death")), "death\nbar death\n");
}

TEST_F(LifecycleOrderTest, UsageNamesTheDoorUsed) {
  EXPECT_EQ(Run("tw_xreload"), "Syntax: tw_xreload <scriptname>\n");
  EXPECT_EQ(Run("tw_enable"), "Syntax: tw_enable <scriptname>\n");
  EXPECT_EQ(Run("tw_xdisable"), "Syntax: tw_xdisable <scriptname>\n");
  EXPECT_EQ(Run("tw_x_disable"), "Syntax: tw_x_disable <scriptname>\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Syntax error");
}

TEST_F(LifecycleOrderTest, ExpandedDoorsExpandTheName) {
  Load("foo", "block enable\n{\necho enable block\n}\n");
  Set("which_script", "foo");
  EXPECT_EQ(Run("tw_enable server_var(which_script)"), "Enabling foo...\nenable block\n");
}

// ---- removal while lines wait ----

TEST_F(LifecycleOrderTest, ScriptUnloadingItselfStopsAtTheRemoval) {
  Load("self",
       "block unload\n{\necho unload block\n}\n"
       "block go\n{\necho before\ntw_xunload self\necho never\n}\n");
  EXPECT_EQ(Run("tw_xdoblock self/go;echo behind"),
            "before\nUnloading self...\nunload block\nScript removed: self\nbehind\n");
  EXPECT_EQ(g_scriptMachine.registry.FindScript("self"), nullptr);
  EXPECT_EQ(Standin().Cbuf().PendingBytes(), 0u);
}

TEST_F(LifecycleOrderTest, CallerOfAnotherScriptGoesOnAfterThatScriptUnloadsItself) {
  Load("gone", "block go\n{\ntw_xunload gone\necho never\n}\n");
  Load("caller", "block a\n{\necho first\ntw_xdoblock gone/go\necho caller goes on\n}\n");
  EXPECT_EQ(Run("tw_xdoblock caller/a"), "first\nUnloading gone...\nScript removed: gone\ncaller goes on\n");
}

TEST_F(LifecycleOrderTest, QueuedEventOfAScriptThatIsGoneRunsNothing) {
  // The first script's event block unloads the second while the second's event block waits behind it.
  Load("first", "event round_end\n{\necho first sees the event\ntw_xunload second\n}\n");
  Load("second", "event round_end\n{\necho second sees the event\n}\n");
  std::string commands = EventCommands("round_end");
  EXPECT_EQ(Run(commands + "echo after"), "first sees the event\nUnloading second...\nScript removed: second\nafter\n");
}

TEST_F(LifecycleOrderTest, QueuedEventOfAScriptLoadedAgainRunsNothing) {
  // The new copy's blocks take the slots the old copy's gave back; the old handles still name nothing.
  Load("again", "event round_end\n{\necho a copy\n}\n");
  std::string commands = EventCommands("round_end");
  Run("tw_reload again");
  EXPECT_EQ(Run(commands), "");
  EXPECT_EQ(Run(EventCommands("round_end")), "a copy\n");
}

}  // namespace
