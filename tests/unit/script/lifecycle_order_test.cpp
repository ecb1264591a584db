// What the lifecycle scenarios can't show: a reload of a file changed on disk, the names the commands take,
// and a queued event block of a script loaded again, whose blocks took the old copy's handle slots.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "script_fixture.h"

namespace {

class LifecycleOrderTest : public ScriptTest {
protected:
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

// ---- enable and disable ----

TEST_F(LifecycleOrderTest, NamesIgnoreCaseButBlockNamesDoNot) {
  Load("foo", "block disable\n{\necho disable block\n}\n");
  EXPECT_EQ(Run("tw_disable FOO"), "Disabling FOO...\n");
  EXPECT_FALSE(g_scriptMachine.registry.FindScript("foo")->enabled);
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

TEST_F(LifecycleOrderTest, QueuedEventOfAScriptLoadedAgainRunsNothing) {
  // The new copy's blocks take the slots the old copy's gave back; the old handles still name nothing.
  Load("again", "event round_end\n{\necho a copy\n}\n");
  std::string commands = EventCommands("round_end");
  Run("tw_reload again");
  EXPECT_EQ(Run(commands), "");
  EXPECT_EQ(Run(EventCommands("round_end")), "a copy\n");
}

}  // namespace
