// The store of groups: the tree or its groups node missing, the path forms of keygroup files with their
// limit, and a file of several sections with an #include. The plain path forms, two sections and a missing
// file run in the keygroups/files scenario; groups made, found and read as paths in keygroups/forms.
#include <gtest/gtest.h>

#include <string>

#include "keygroups_fixture.h"

namespace {

class StoreTest : public KeyGroupTest {};

// ---- the tree or its groups node missing ----

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

// ---- keygroup file paths ----

TEST_F(StoreTest, PathFormsByArgumentCountAndDataFolders) {
  const struct {
    const char* data;
    const char* sub;
    int argc;
    const char* where;
    const char* path;
  } cases[] = {
      {"cfg", "", 3, "mypack", "cfg/mypack/tw_foo_db.txt"},
      {"cfg", "", 4, "mypack", "cfg//tw_foo_db.txt"},
      {"cfg", "", 3, "|", "addons/tidewright//tw_foo_db.txt"},
      {"data", "sub", 2, "", "data/sub/tw_foo_db.txt"},
      {"data", "sub", 3, "mine", "data/mine/tw_foo_db.txt"},
      {"data", "sub", 3, "|pack", "addons/tidewright/pack/tw_foo_db.txt"},
  };
  for (const auto& c : cases) {
    tidewright_datadirectory.SetValue(c.data);
    tidewright_subdirectory.SetValue(c.sub);
    char path[kMaxKeyGroupPath + 1];
    ASSERT_TRUE(KeyGroupFilePath(path, sizeof path, c.argc, "foo", c.where)) << c.path;
    EXPECT_STREQ(path, c.path);
  }
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

// ---- files of several sections ----

// Further sections and included trees become groups right behind the loaded one; the groups after it stay.
TEST_F(StoreTest, FurtherSectionsAndIncludesBecomeGroupsBeforeTheFollowingOnes) {
  Run("tw_xkeygroupcreate first;tw_xkeygroupcreate multi;tw_xkeygroupcreate after1;tw_xkeygroupcreate after2");
  WriteGameFile("cfg/extra_db.txt", "\"extra\" { \"e\" { \"v\" \"1\" } }\n");
  WriteGameFile("cfg/tw_multi_db.txt",
                "#include \"extra_db.txt\"\n\"multi\" { \"k1\" { \"v\" \"1\" } }\n"
                "\"second\" { \"k2\" { \"v\" \"2\" } }\n\"third\" { \"k3\" { \"v\" \"3\" } }\n");
  EXPECT_EQ(Run("tw_xkeygroupload multi"), "Loaded: cfg//tw_multi_db.txt\n");
  EXPECT_EQ(Names(Groups()), "first multi second third extra after1 after2");
  EXPECT_EQ(Names(Groups()->FindKey("third")), "k3");
  EXPECT_EQ(Names(Groups()->FindKey("extra")), "e");
}

}  // namespace
