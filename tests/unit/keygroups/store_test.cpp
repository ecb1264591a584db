// The store of groups: finding them, the tree's absence, the commands on whole groups, and keygroup files
// (the three path forms, round trips, failures, and files of several sections or with an #include).
#include <gtest/gtest.h>

#include <string>

#include "keygroups_fixture.h"

namespace {

class StoreTest : public KeyGroupTest {};

// ---- finding groups ----

TEST_F(StoreTest, FindGroupMakesOnlyWhenAsked) {
  EXPECT_EQ(FindGroup("fg", false), nullptr);
  KeyValues* made = FindGroup("fg", true);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(FindGroup("fg", false), made);
  EXPECT_EQ(FindGroup("fg", true), made);
  EXPECT_EQ(Names(Groups()), "fg");
}

TEST_F(StoreTest, AGroupNameWithASlashIsAPath) {
  KeyValues* inner = FindGroup("outer/inner", true);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(Names(Groups()), "outer");
  EXPECT_EQ(Groups()->FindKey("outer")->FindKey("inner"), inner);
}

TEST_F(StoreTest, AnEmptyNameNamesNoGroup) {
  EXPECT_EQ(FindGroup("", true), nullptr);
  EXPECT_EQ(Run("tw_xkeygroupcreate \"\""), "ERROR: Tidewright couldn't create the user group.\n");
  EXPECT_EQ(Run("tw_xkeygroupdelete \"\""), "Tidewright couldn't find the user group \n");
  Run("tw_xkeygrouprename \"\" other");
  EXPECT_NE(g_userTree->FindKey("UserGroups"), nullptr);
  EXPECT_EQ(Run("tw_xkeygroupload \"\""), "ERROR: Could not load keygroup: cfg//tw__db.txt!\n");
  EXPECT_EQ(Names(g_userTree), "UserGroups Ungrouped");
}

// ---- without a tree ----

class NoTreeTest : public StoreTest {
protected:
  void SetUp() override {
    StoreTest::SetUp();
    m_tree = g_userTree;
    g_userTree = nullptr;
  }
  void TearDown() override {
    g_userTree = m_tree;
    StoreTest::TearDown();
  }
  KeyValues* m_tree = nullptr;
};

TEST_F(NoTreeTest, FindGroupReportsTheMissingTree) {
  OutputCapture capture;
  EXPECT_EQ(FindGroup("g", true), nullptr);
  EXPECT_EQ(capture.Text(),
            std::string("ERROR: Tidewright key access attempted before keys have been initialized.\n") + kConsolePlace);
  EXPECT_EQ(LastError(), "Keys not ready yet");
}

TEST_F(NoTreeTest, EachCommandSetsItsOwnLastError) {
  const struct {
    const char* line;
    const char* lastError;
  } cases[] = {
      {"tw_xkeygroupcreate g", "Keys not ready yet"},   {"tw_xkeygroupdelete g", "Keys not ready, yet"},
      {"tw_xkeygroupcopy g h", "Keys not ready, yet."}, {"tw_xkeylist", "Keys not ready, yet."},
      {"tw_xkeycreate k", "Keys not ready, yet"},       {"tw_xkeygroupsave g", "Keys not ready, yet"},
      {"tw_xforeachkey k in g echo", "Keys not ready yet"},
  };
  for (const auto& c : cases) {
    ClearLastError();
    std::string out = Run(c.line);
    EXPECT_NE(out.find("key access attempted before keys have been initialized"), std::string::npos) << c.line;
    EXPECT_EQ(LastError(), c.lastError) << c.line;
  }
}

TEST_F(StoreTest, AMissingUserGroupsNodeIsReported) {
  Groups()->SetName("Elsewhere");
  std::string list = Run("tw_keygrouplist");
  std::string del = Run("tw_xkeygroupdelete g");
  g_userTree->FindKey("Elsewhere")->SetName("UserGroups");
  EXPECT_EQ(list, "ERROR: Tidewright cannot find any UserGroups!\n");
  EXPECT_EQ(del, "ERROR: Tidewright cannot find any UserGroups!\n");
}

// ---- the group commands ----

TEST_F(StoreTest, CreateLeavesAnExistingGroupAlone) {
  Run("tw_xkeygroupcreate g;tw_xkeycreate g k");
  EXPECT_EQ(Run("tw_keygroupcreate g"), "");
  EXPECT_EQ(Names(Groups()->FindKey("g")), "k");
}

TEST_F(StoreTest, DeleteTakesTheGroupWithItsKeysAndKeepsItsNeighbours) {
  Run("tw_xkeygroupcreate a;tw_xkeygroupcreate b;tw_xkeycreate b k;tw_xkeygroupcreate c");
  EXPECT_EQ(Run("tw_xkeygroupdelete b"), "");
  EXPECT_EQ(Names(Groups()), "a c");
  EXPECT_EQ(Run("tw_xkeygroupdelete b"), "Tidewright couldn't find the user group b\n");
  EXPECT_EQ(LastError(), "Key not found");
}

TEST_F(StoreTest, DeletingANestedGroupUnlinksItWhereItStands) {
  Run("tw_xkeygroupcreate a/x;tw_xkeygroupcreate a/y;tw_xkeygroupcreate a/z;tw_xkeygroupcreate b");
  Run("tw_xkeygroupdelete a/y");
  EXPECT_EQ(Names(Groups()), "a b");
  EXPECT_EQ(Names(Groups()->FindKey("a")), "x z");
}

TEST_F(StoreTest, RenameKeepsTheKeys) {
  Run("tw_xkeygroupcreate old;tw_xkeycreate old k");
  Run("tw_xkeygrouprename old new");
  EXPECT_EQ(Names(Groups()), "new");
  EXPECT_EQ(Names(Groups()->FindKey("new")), "k");
  EXPECT_EQ(Run("tw_xkeygrouprename old other"), "Tidewright couldn't find the user group old\n");
}

TEST_F(StoreTest, CopyStandsBehindItsSourceAndOwnsItsKeys) {
  Run("tw_xkeygroupcreate a;tw_xkeycreate a k;tw_xkeysetvalue a k v 1;tw_xkeygroupcreate b");
  Run("tw_xkeygroupcopy a a2");
  EXPECT_EQ(Names(Groups()), "a a2 b");
  Run("tw_xkeysetvalue a2 k v 2;tw_xkeygroupdelete a");
  EXPECT_STREQ(Groups()->FindKey("a2")->FindKey("k")->GetString("v"), "2");
  EXPECT_EQ(Run("tw_xkeygroupcopy nothing x"), "Tidewright couldn't find the user group nothing\n");
  EXPECT_EQ(LastError(), "Key not found");
}

// ---- keygroup file paths ----

std::string PathOf(int argc, const char* group, const char* where) {
  char path[kMaxKeyGroupPath + 1];
  EXPECT_TRUE(KeyGroupFilePath(path, sizeof path, argc, group, where));
  return path;
}

TEST_F(StoreTest, PathFormsByArgumentCount) {
  EXPECT_EQ(PathOf(2, "foo", ""), "cfg//tw_foo_db.txt");
  EXPECT_EQ(PathOf(3, "foo", "|mypack"), "addons/tidewright/mypack/tw_foo_db.txt");
  EXPECT_EQ(PathOf(3, "foo", "mypack"), "cfg/mypack/tw_foo_db.txt");
  EXPECT_EQ(PathOf(4, "foo", "mypack"), "cfg//tw_foo_db.txt");
  EXPECT_EQ(PathOf(3, "foo", "|"), "addons/tidewright//tw_foo_db.txt");
}

TEST_F(StoreTest, PathsFollowTheDataFolders) {
  tidewright_datadirectory.SetValue("data");
  tidewright_subdirectory.SetValue("sub");
  EXPECT_EQ(PathOf(2, "foo", ""), "data/sub/tw_foo_db.txt");
  EXPECT_EQ(PathOf(3, "foo", "mine"), "data/mine/tw_foo_db.txt");
  EXPECT_EQ(PathOf(3, "foo", "|pack"), "addons/tidewright/pack/tw_foo_db.txt");
}

TEST_F(StoreTest, APathPastTheLimitIsRefusedAndMakesNoGroup) {
  std::string group(kMaxKeyGroupPath, 'g');
  char path[kMaxKeyGroupPath + 1];
  EXPECT_FALSE(KeyGroupFilePath(path, sizeof path, 2, group.c_str(), ""));
  std::string out = Run("tw_xkeygroupload " + group);
  EXPECT_EQ(out.rfind("ERROR: The keygroup file path is longer than 259 characters: cfg//tw_ggg", 0), 0u) << out;
  EXPECT_EQ(LastError(), "Resulting string too long.");
  EXPECT_EQ(Names(Groups()), "");
}

// ---- saving and loading ----

TEST_F(StoreTest, SaveAndLoadUnderTheDataFolder) {
  Run("tw_xkeygroupcreate sv;tw_xkeycreate sv k;tw_xkeysetvalue sv k name Foo;tw_xkeysetvalue sv k kills 3");
  EXPECT_EQ(Run("tw_xkeygroupsave sv"), "Saved: cfg//tw_sv_db.txt\n");
  EXPECT_EQ(ReadGameFile("cfg/tw_sv_db.txt"),
            "\"sv\"\n{\n\t\"k\"\n\t{\n\t\t\"name\"\t\t\"Foo\"\n\t\t\"kills\"\t\t\"3\"\n\t}\n}\n");
  Run("tw_xkeygroupdelete sv");
  EXPECT_EQ(Run("tw_xkeygroupload sv"), "Loaded: cfg//tw_sv_db.txt\n");
  KeyValues* key = Groups()->FindKey("sv/k");
  ASSERT_NE(key, nullptr);
  EXPECT_STREQ(key->GetString("name"), "Foo");
  EXPECT_EQ(key->GetDataType("kills"), KeyValues::TYPE_INT);
}

TEST_F(StoreTest, SaveAndLoadUnderAnAddonFolder) {
  std::filesystem::create_directories(std::filesystem::path(Shared().GameDir()) / "addons/tidewright/kgpack");
  Run("tw_xkeygroupcreate ad;tw_xkeycreate ad k;tw_xkeysetvalue ad k v x");
  EXPECT_EQ(Run("tw_xkeygroupsave ad \"|kgpack\""), "Saved: addons/tidewright/kgpack/tw_ad_db.txt\n");
  EXPECT_TRUE(GameFileExists("addons/tidewright/kgpack/tw_ad_db.txt"));
  Run("tw_xkeygroupdelete ad");
  EXPECT_EQ(Run("tw_keygroupload ad |kgpack"), "Loaded: addons/tidewright/kgpack/tw_ad_db.txt\n");
  EXPECT_STREQ(Groups()->FindKey("ad/k")->GetString("v"), "x");
}

TEST_F(StoreTest, SaveIntoAMissingFolderFails) {
  Run("tw_xkeygroupcreate mf");
  EXPECT_EQ(Run("tw_xkeygroupsave mf nosuchfolder"),
            "ERROR: Could not save keygroup file: cfg/nosuchfolder/tw_mf_db.txt!\n");
  EXPECT_EQ(LastError(), "Keygroup could not be saved");
  EXPECT_EQ(Run("tw_xkeygroupsave absent"), "Tidewright couldn't find the user group absent\n");
  EXPECT_EQ(LastError(), "Key not found");
}

TEST_F(StoreTest, AFailedLoadLeavesTheGroupMadeAndEmpty) {
  EXPECT_EQ(Run("tw_xkeygroupload nofile"), "ERROR: Could not load keygroup: cfg//tw_nofile_db.txt!\n");
  EXPECT_EQ(LastError(), "Keygroup not found");
  ASSERT_NE(Groups()->FindKey("nofile"), nullptr);
  EXPECT_EQ(Groups()->FindKey("nofile")->GetFirstSubKey(), nullptr);
}

TEST_F(StoreTest, LoadingTwiceDoublesTheKeys) {
  WriteGameFile("cfg/tw_twice_db.txt", "\"twice\" { \"k\" { \"v\" \"1\" } }");
  Run("tw_xkeygroupload twice;tw_xkeygroupload twice");
  EXPECT_EQ(Names(Groups()->FindKey("twice")), "k k");
}

TEST_F(StoreTest, TheFileSectionNamesTheGroup) {
  WriteGameFile("cfg/tw_asked_db.txt", "\"other\" { \"k\" { \"v\" \"1\" } }");
  Run("tw_xkeygroupload asked");
  EXPECT_EQ(Names(Groups()), "other");
}

// ---- files of several sections ----

TEST_F(StoreTest, FurtherSectionsBecomeGroupsBeforeTheFollowingOnes) {
  Run("tw_xkeygroupcreate first;tw_xkeygroupcreate multi;tw_xkeygroupcreate after1;tw_xkeygroupcreate after2");
  WriteGameFile("cfg/tw_multi_db.txt",
                "\"multi\" { \"k1\" { \"v\" \"1\" } }\n\"second\" { \"k2\" { \"v\" \"2\" } }\n"
                "\"third\" { \"k3\" { \"v\" \"3\" } }\n");
  EXPECT_EQ(Run("tw_xkeygroupload multi"), "Loaded: cfg//tw_multi_db.txt\n");
  EXPECT_EQ(Names(Groups()), "first multi second third after1 after2");
  EXPECT_EQ(Names(Groups()->FindKey("third")), "k3");
}

TEST_F(StoreTest, IncludedTreesBecomeGroupsToo) {
  Run("tw_xkeygroupcreate inc;tw_xkeygroupcreate after");
  WriteGameFile("cfg/extra_db.txt", "\"extra\" { \"e\" { \"v\" \"1\" } }\n");
  WriteGameFile("cfg/tw_inc_db.txt", "#include \"extra_db.txt\"\n\"inc\" { \"k\" { \"v\" \"1\" } }\n");
  Run("tw_xkeygroupload inc");
  EXPECT_EQ(Names(Groups()), "inc extra after");
  EXPECT_EQ(Names(Groups()->FindKey("extra")), "e");
}

TEST_F(StoreTest, LoadKeyGroupKeepsTheFollowingGroupsWhenTheFileIsMissing) {
  Run("tw_xkeygroupcreate a;tw_xkeygroupcreate b");
  EXPECT_FALSE(LoadKeyGroup(Groups()->FindKey("a"), "cfg/none_db.txt"));
  EXPECT_EQ(Names(Groups()), "a b");
}

TEST_F(StoreTest, GroupListShowsGroupsWithTheirOwnValues) {
  WriteGameFile("cfg/tw_gl_db.txt", "\"gl\" { \"direct\" \"5\" \"k\" { \"v\" \"1\" } }");
  Run("tw_xkeygroupload gl");
  EXPECT_EQ(Run("tw_keygrouplist"),
            "----------------------\nKey: gl\n   Name: direct\n  Value: 5\n----------------------\n");
}

}  // namespace
