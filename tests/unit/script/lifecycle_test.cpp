// Loading and removing scripts from the console: the script list, the unload block before the removal,
// and unknown names.
#include <gtest/gtest.h>

#include <string>

#include "script_fixture.h"

namespace {

class LifecycleTest : public ScriptTest {};

TEST_F(LifecycleTest, ListWithoutScriptsHasHeaderAndEndLine) {
  EXPECT_EQ(Run("tw_xload"), "\n[Tidewright] Loaded:\n[Tidewright]------------------------\n\n");
}

TEST_F(LifecycleTest, ListShowsStatesInLoadOrder) {
  Load("first", "");
  Load("second", "");
  g_scriptMachine.registry.SetScriptEnabled("second", false);
  EXPECT_EQ(Run("tw_load"),
            "\n[Tidewright] Loaded:\n[Tidewright]   [ enabled] first\n[Tidewright]   [disabled] second\n"
            "[Tidewright]------------------------\n\n");
}

TEST_F(LifecycleTest, LoadTakesTheFirstArgumentOnly) {
  WriteScript("one", "block load\n{\necho one loaded\n}\n");
  std::string out = Run("tw_xload one two");
  EXPECT_NE(out.find("[Tidewright] Loaded one\none loaded\n"), std::string::npos) << out;
}

TEST_F(LifecycleTest, UnloadRunsTheUnloadBlockBeforeTheRemoval) {
  Load("foo",
       "block unload\n{\ntw_xset unload_saw_block yes\ntw_xdoblock foo/helper\n}\n"
       "block helper\n{\necho helper ran\n}\n");
  std::string out = Run("tw_xunload foo");
  EXPECT_EQ(out, "Unloading foo...\nhelper ran\nScript removed: foo\n");
  EXPECT_EQ(Var("unload_saw_block"), "yes");
  EXPECT_EQ(g_scriptMachine.registry.FindScript("foo"), nullptr);
}

TEST_F(LifecycleTest, UnloadIgnoresCaseOfTheScriptName) {
  Load("foo", "");
  EXPECT_EQ(Run("tw_unload FOO"), "Unloading FOO...\nScript removed: FOO\n");
}

TEST_F(LifecycleTest, UnloadOfAnUnknownNameSaysUnloadingOnly) {
  EXPECT_EQ(Run("tw_xunload ghost"), "Unloading ghost...\n");
}

TEST_F(LifecycleTest, UnloadNeedsAName) {
  EXPECT_EQ(Run("tw_xunload"), "Syntax: tw_xunload <scriptname>\n");
  EXPECT_EQ(Run("tw__unload"), "Syntax: tw__unload <scriptname>\n");
}

TEST_F(LifecycleTest, OverlongUnloadNameIsRefused) {
  std::string out = Run("tw_xunload " + std::string(2100, 'q'));
  EXPECT_NE(out.find("The script name is too long"), std::string::npos);
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
}

}  // namespace
