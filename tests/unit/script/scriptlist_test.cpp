// tw_createscriptlist: the loaded scripts with their state as keys of a keygroup, all of them or the one named,
// and the group made even when nothing is listed.
#include <gtest/gtest.h>

#include <string>

#include "KeyValues.h"
#include "host/plugin.h"
#include "keygroups/keygroups.h"
#include "script_fixture.h"

namespace {

class ScriptListTest : public ScriptTest {
protected:
  void TearDown() override {
    KeyValues* groups = g_userTree->FindKey("UserGroups");
    while (KeyValues* group = groups->GetFirstSubKey()) {
      groups->RemoveSubKey(group);
      group->deleteThis();
    }
    ScriptTest::TearDown();
  }
  // "name:status:type" of each key of the group, in order, joined by blanks; "<none>" without the group.
  static std::string Listed(const char* groupName) {
    KeyValues* group = FindGroup(groupName, false);
    if (!group) return "<none>";
    std::string text;
    for (KeyValues* key = group->GetFirstSubKey(); key; key = key->GetNextKey())
      text += (text.empty() ? "" : " ") + std::string(key->GetName()) + ":" + key->GetString("status") + ":" +
              key->GetString("type");
    return text;
  }
};

TEST_F(ScriptListTest, ListsEveryScriptInLoadOrderWithItsState) {
  Load("sl_alpha", "");
  Load("sl_beta", "");
  Run("tw_xdisable sl_beta");
  EXPECT_EQ(Run("tw_createscriptlist scripts"), "");
  EXPECT_EQ(Listed("scripts"), "sl_alpha:enabled:txt sl_beta:disabled:txt");
}

TEST_F(ScriptListTest, NamedScriptOnlyIgnoringCase) {
  Load("sl_alpha", "");
  Load("sl_beta", "");
  Run("tw_xcreatescriptlist one SL_BETA");
  EXPECT_EQ(Listed("one"), "sl_beta:enabled:txt");
}

TEST_F(ScriptListTest, ScriptNotLoadedLeavesAnEmptyGroup) {
  Load("sl_alpha", "");
  Run("tw_createscriptlist empty foo");
  EXPECT_EQ(Listed("empty"), "");
}

TEST_F(ScriptListTest, AnExistingGroupIsUpdatedInPlace) {
  Load("sl_alpha", "");
  Run("tw_createscriptlist again");
  Run("tw_xdisable sl_alpha");
  Run("tw_xkeysetvalue again sl_alpha note kept");
  Run("tw_createscriptlist again");
  EXPECT_EQ(Listed("again"), "sl_alpha:disabled:txt");
  EXPECT_STREQ(FindGroup("again", false)->FindKey("sl_alpha")->GetString("note"), "kept");
}

TEST_F(ScriptListTest, ExpandedDoorExpandsTheGroupName) {
  Load("sl_alpha", "");
  Set("list_group", "from_var");
  Run("tw_createscriptlist server_var(list_group)");
  EXPECT_EQ(Listed("from_var"), "sl_alpha:enabled:txt");
}

TEST_F(ScriptListTest, ScriptNameWithASlashIsReadBackAsAKeyPath) {
  Load("pack/inner", "");
  MakeVars({"inner_status"});
  Run("tw_createscriptlist nested\ntw_xkeygetvalue inner_status nested pack/inner status");
  EXPECT_EQ(Var("inner_status"), "enabled");
}

TEST_F(ScriptListTest, WithoutAGroupNameNothingHappens) {
  Load("sl_alpha", "");
  EXPECT_EQ(Run("tw_createscriptlist"), "");
  EXPECT_EQ(g_userTree->FindKey("UserGroups")->GetFirstSubKey(), nullptr);
}

TEST_F(ScriptListTest, MissingTreeIsReported) {
  KeyValues* tree = g_userTree;
  g_userTree = nullptr;
  std::string out = Run("tw_createscriptlist g");
  g_userTree = tree;
  EXPECT_NE(out.find("ERROR: Tidewright key access attempted before keys have been initialized.\n"), std::string::npos);
  EXPECT_NE(out.find("ERROR: Tidewright couldn't create the user group.\n"), std::string::npos) << out;
}

}  // namespace
