// What the lifecycle scenarios can't show: a reload of a file changed on disk, a queued event block of a
// script loaded again (whose blocks took the old copy's handle slots), and a script list without a key tree.
#include <gtest/gtest.h>

#include <string>

#include "KeyValues.h"
#include "keygroups/keygroups.h"
#include "script_fixture.h"

namespace {

class LifecycleTest : public ScriptTest {};

TEST_F(LifecycleTest, ReloadRunsTheOldUnloadThenTheNewLoad) {
  Load("foo", "block load\n{\necho old load\n}\nblock unload\n{\necho old unload\n}\n");
  WriteScript("foo", "block load\n{\necho new load\n}\nblock unload\n{\necho new unload\n}\n");
  EXPECT_EQ(Run("tw_reload foo"),
            "Unloading foo...\nold unload\nScript removed: foo\n[Tidewright] Loaded foo\nnew load\n");
  EXPECT_EQ(Run("tw_xunload foo"), "Unloading foo...\nnew unload\nScript removed: foo\n");
}

TEST_F(LifecycleTest, QueuedEventOfAScriptLoadedAgainRunsNothing) {
  Load("again", "event round_end\n{\necho a copy\n}\n");
  std::string commands = EventCommands("round_end");
  Run("tw_reload again");
  EXPECT_EQ(Run(commands), "");
  EXPECT_EQ(Run(EventCommands("round_end")), "a copy\n");
}

TEST_F(LifecycleTest, ScriptListWithoutTheKeyTreeIsReported) {
  KeyValues* tree = g_userTree;
  g_userTree = nullptr;
  std::string out = Run("tw_createscriptlist g");
  g_userTree = tree;
  EXPECT_NE(out.find("ERROR: Tidewright key access attempted before keys have been initialized.\n"), std::string::npos);
  EXPECT_NE(out.find("ERROR: Tidewright couldn't create the user group.\n"), std::string::npos) << out;
}

}  // namespace
