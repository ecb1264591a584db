// The commands on keys and values: the optional group told by the argument count, reading by name and by
// position, the filter, and the listing.
#include <gtest/gtest.h>

#include <string>

#include "keygroups_fixture.h"

namespace {

class KeysTest : public KeyGroupTest {
protected:
  // Group `players` with keys 42 (name Foo, kills 3) and 7 (name Bar, kills 0).
  static void MakePlayers() {
    Run("tw_xkeygroupcreate players;tw_xkeycreate players 42;tw_xkeycreate players 7");
    Run("tw_xkeysetvalue players 42 name Foo;tw_xkeysetvalue players 42 kills 3");
    Run("tw_xkeysetvalue players 7 name Bar;tw_xkeysetvalue players 7 kills 0");
  }
  static std::string Missing(const char* group) {
    return std::string("ERROR: Tidewright cannot find the ") + group + " group!\n" + kConsolePlace;
  }
};

// ---- the optional group ----

TEST_F(KeysTest, KeyCreateNeedsAnExistingGroupButMakesFreeKeys) {
  EXPECT_EQ(Run("tw_xkeycreate mygroup mykey"), Missing("mygroup"));
  EXPECT_EQ(LastError(), "Keygroup not found");
  EXPECT_EQ(Names(Groups()), "");
  EXPECT_EQ(Run("tw_xkeycreate mykey"), "");
  EXPECT_EQ(Names(Ungrouped()), "mykey");
}

TEST_F(KeysTest, AnyOtherCountMeansTheFreeKeys) {
  Run("tw_xkeycreate free extra words");
  EXPECT_EQ(Names(Ungrouped()), "free");
  Run("tw_xkeysetvalue free a 1 extra words");
  EXPECT_STREQ(Ungrouped()->FindKey("free")->GetString("a"), "1");
}

TEST_F(KeysTest, SetValueMakesTheValueButNotTheKey) {
  Run("tw_xkeygroupcreate mygroup");
  EXPECT_EQ(Run("tw_xkeysetvalue mygroup mykey a 1"), "ERROR: Tidewright cannot find/create the mykey key!\n");
  EXPECT_EQ(LastError(), "Key could not be found or created");
  Run("tw_xkeycreate mygroup mykey");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw_xkeysetvalue mygroup mykey a 1"), "mykey key's a value was set to 1.\n");
  KeyValues* key = Groups()->FindKey("mygroup/mykey");
  EXPECT_EQ(key->GetDataType("a"), KeyValues::TYPE_STRING);
}

TEST_F(KeysTest, DeleteAndRename) {
  MakePlayers();
  Run("tw_xkeyrename players 42 43");
  EXPECT_EQ(Names(Groups()->FindKey("players")), "43 7");
  Run("tw_xkeydelete players 43");
  EXPECT_EQ(Names(Groups()->FindKey("players")), "7");
  EXPECT_EQ(Run("tw_xkeydelete players 43"), "ERROR: Tidewright cannot find the 43 key.\n");
  EXPECT_EQ(LastError(), "Key not found");
  ClearLastError();
  EXPECT_EQ(Run("tw_xkeyrename players 43 44"), "ERROR: Tidewright cannot find the 43 key.\n");
  EXPECT_EQ(LastError(), "Key not found");
}

TEST_F(KeysTest, FreeKeysAreRenamedByTheirLastArgument) {
  Run("tw_xkeycreate one");
  Run("tw_xkeyrename one two");
  EXPECT_EQ(Names(Ungrouped()), "two");
}

TEST_F(KeysTest, AnEmptyKeyNameNeverNamesItsParent) {
  Run("tw_xkeygroupcreate g;tw_xkeycreate g k");
  EXPECT_EQ(Run("tw_xkeydelete g \"\""), "ERROR: Tidewright cannot find the  key.\n");
  Run("tw_xkeyrename g \"\" renamed");
  Run("tw_xkeydelete \"\"");
  EXPECT_EQ(Names(Groups()), "g");
  EXPECT_EQ(Names(g_userTree), "UserGroups Ungrouped");
}

// ---- reading values ----

TEST_F(KeysTest, GetValueByNameAndByPosition) {
  MakePlayers();
  MakeVars({"kv"});
  Run("tw_xkeygetvalue kv players 7 name");
  EXPECT_EQ(Var("kv"), "Bar");
  Run("tw_xkeygetvalue kv players 2 name");  // no key named 2: the second key
  EXPECT_EQ(Var("kv"), "Bar");
  Run("tw_xkeygetvalue kv players 1 kills");
  EXPECT_EQ(Var("kv"), "3");
  Run("tw_keygetvalue kv players 42 nothing");
  EXPECT_EQ(Var("kv"), "");
}

TEST_F(KeysTest, GetValueOfAMissingKey) {
  MakePlayers();
  MakeVars({"kv"});
  Set("kv", "kept");
  EXPECT_EQ(Run("tw_xkeygetvalue kv players 3 name"), "ERROR: Tidewright cannot find the 3 key!\n");
  EXPECT_EQ(Run("tw_xkeygetvalue kv players 0 name"), "ERROR: Tidewright cannot find the 0 key!\n");
  EXPECT_EQ(LastError(), "Key not found");
  EXPECT_EQ(Var("kv"), "kept");
  EXPECT_EQ(Run("tw_xkeygetvalue kv nogroup 42 name"), Missing("nogroup"));
}

TEST_F(KeysTest, GetValueReadsNumbersAsText) {
  WriteGameFile("cfg/tw_nums_db.txt", "\"nums\" { \"k\" { \"i\" \"007\" \"f\" \"0.5\" } }");
  Run("tw_xkeygroupload nums");
  MakeVars({"kv"});
  Run("tw_xkeygetvalue kv nums k i");
  EXPECT_EQ(Var("kv"), "7");
  Run("tw_xkeygetvalue kv nums k f");
  EXPECT_EQ(Var("kv"), "0.500000");
}

// ---- the filter ----

TEST_F(KeysTest, FilterNotDropsTheKeysThatMatch) {
  MakePlayers();
  Run("tw_xkeygroupfilter players not kills 0");
  EXPECT_EQ(Names(Groups()->FindKey("players")), "42");
}

TEST_F(KeysTest, FilterOnlyKeepsTheKeysThatMatch) {
  MakePlayers();
  Run("tw_xkeygroupfilter players ONLY kills 0");
  EXPECT_EQ(Names(Groups()->FindKey("players")), "7");
}

TEST_F(KeysTest, FilterMatchesNamesInPartAndTextsWhole) {
  MakePlayers();
  Run("tw_xkeygroupfilter players not ILL 3");  // "ill" is in "kills"
  EXPECT_EQ(Names(Groups()->FindKey("players")), "7");
  Run("tw_xkeygroupfilter players not name ba");  // "ba" is not the whole of "Bar"
  EXPECT_EQ(Names(Groups()->FindKey("players")), "7");
  Run("tw_xkeygroupfilter players not name bar");
  EXPECT_EQ(Names(Groups()->FindKey("players")), "");
}

TEST_F(KeysTest, FilterTestsTheTextSoAFloatZeroIsNotZero) {
  WriteGameFile("cfg/tw_fz_db.txt", "\"fz\" { \"a\" { \"kills\" \"0.0\" } \"b\" { \"kills\" \"0\" } }");
  Run("tw_xkeygroupload fz");
  Run("tw_xkeygroupfilter fz not kills 0");
  EXPECT_EQ(Names(Groups()->FindKey("fz")), "a");
}

TEST_F(KeysTest, FilterOnFreeKeysAndItsMessages) {
  Run("tw_xkeycreate f1;tw_xkeysetvalue f1 team red;tw_xkeycreate f2;tw_xkeysetvalue f2 team blue");
  tidewright_debug.SetValue(4);
  std::string out = Run("tw_xkeygroupfilter only team red");
  tidewright_debug.SetValue(0);
  EXPECT_NE(out.find("--team/team: red/red\n---1: team"), std::string::npos) << out;
  EXPECT_NE(out.find("KeyGroupFilter: Found a match for key f1 on team: red\n"), std::string::npos) << out;
  EXPECT_EQ(Names(Ungrouped()), "f1");
}

TEST_F(KeysTest, FilterOnAMissingGroup) {
  EXPECT_EQ(Run("tw_xkeygroupfilter nogroup not a b"),
            Missing("nogroup") + "ERROR: Tidewright cannot find the keygroup.\n");
  EXPECT_EQ(LastError(), "Key not found");
}

// ---- listing ----

TEST_F(KeysTest, ListShowsKeysAndValues) {
  MakePlayers();
  EXPECT_EQ(Run("tw_xkeylist players"),
            "----------------------\nKey: 42\n   Name: name\n  Value: Foo\n   Name: kills\n  Value: 3\n"
            "Key: 7\n   Name: name\n  Value: Bar\n   Name: kills\n  Value: 0\n----------------------\n");
  EXPECT_EQ(Run("tw_xkeylist"), "----------------------\n----------------------\n");
  EXPECT_EQ(Run("tw_xkeylist nogroup"), Missing("nogroup"));
  EXPECT_EQ(LastError(), "Key not found");
}

TEST_F(KeysTest, ListingTurnsNumbersIntoText) {
  WriteGameFile("cfg/tw_ln_db.txt", "\"ln\" { \"k\" { \"n\" \"5\" } }");
  Run("tw_xkeygroupload ln");
  Run("tw_xkeylist ln");
  EXPECT_EQ(Groups()->FindKey("ln/k")->GetDataType("n"), KeyValues::TYPE_STRING);
}

}  // namespace
