// The loops over keys and values: what runs and in which order, loops in loops, bodies that delete, the
// step's text in the command stream, and positions that name no live node.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "keygroups_fixture.h"

namespace {

class LoopsTest : public KeyGroupTest {
protected:
  // Group `g` with keys a, b, c, each with values x=1 and y=2.
  static void MakeGroup() {
    Run("tw_xkeygroupcreate g");
    for (const char* key : {"a", "b", "c"})
      Run(std::string("tw_xkeycreate g ") + key + ";tw_xkeysetvalue g " + key + " x 1;tw_xkeysetvalue g " +
          key + " y 2");
  }
  static std::string Handle(KeyValues* node) { return std::to_string(node->GetHandle()); }
};

TEST_F(LoopsTest, ForEachKeyRunsTheBodyForEachKeyInOrder) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachkey k in g \"tw echo key server_var(k)\""), "key a\nkey b\nkey c\n");
  EXPECT_EQ(Var("k"), "c");
}

TEST_F(LoopsTest, ForEachValRunsTheBodyForEachValue) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachval v in g b \"tw echo value server_var(v)\""), "value x\nvalue y\n");
}

TEST_F(LoopsTest, ALoopSkipsValuesOrKeysOfTheOtherKind) {
  Run("tw_xkeygroupcreate g;tw_xkeycreate g k;tw_xkeycreate g k/inner;tw_xkeysetvalue g k v 1");
  EXPECT_EQ(Run("tw_xforeachval v in g k \"tw echo server_var(v)\""), "v\n");
  WriteGameFile("cfg/tw_mixed_db.txt", "\"mixed\" { \"direct\" \"1\" \"k\" { \"v\" \"1\" } }");
  Run("tw_xkeygroupload mixed");
  EXPECT_EQ(Run("tw_xforeachkey k in mixed \"tw echo server_var(k)\""), "k\n");
}

TEST_F(LoopsTest, LoopsNest) {
  MakeGroup();
  Run("tw_xkeydelete g c");
  Load("nest", "block run\n{\ntw_xforeachkey k in g \"tw_xdoblock nest/inner\"\n}\n"
               "block inner\n{\ntw_foreachval v in g server_var(k) \"tw echo server_var(k) server_var(v)\"\n}\n");
  EXPECT_EQ(Run("tw_xdoblock nest/run"), "a x\na y\nb x\nb y\n");
}

TEST_F(LoopsTest, AnEmptyGroupOrAnEmptyFirstNameRunsNothing) {
  Run("tw_xkeygroupcreate empty");
  EXPECT_EQ(Run("tw_xforeachkey k in empty \"echo ran\""), "");
  Run("tw_xkeygroupcreate blank;tw_xkeycreate blank \"\"");
  Groups()->FindKey("blank")->CreateKey("");
  Groups()->FindKey("blank")->CreateKey("after");
  EXPECT_EQ(Run("tw_xforeachkey k in blank \"echo ran\""), "");
}

TEST_F(LoopsTest, ABodyThatDeletesItsKeyEndsTheLoopQuietly) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachkey k in g \"tw echo server_var(k);tw tw_xkeydelete g server_var(k)\""), "a\n");
  EXPECT_EQ(Names(Groups()->FindKey("g")), "b c");
  tidewright_debug.SetValue(1);
  std::string out = Run("tw_xforeachkey k in g \"tw tw_xkeydelete g server_var(k)\"");
  EXPECT_NE(out.find("names no live key or value; the loop ends.\n"), std::string::npos) << out;
}

TEST_F(LoopsTest, ABodyThatDeletesTheNextKeyStepsOverIt) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachkey k in g \"tw echo server_var(k);tw_xkeydelete g b\""),
            "a\nc\nERROR: Tidewright cannot find the b key.\n");
}

TEST_F(LoopsTest, ABodyThatDeletesTheGroupEndsTheLoop) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachval v in g a \"tw echo server_var(v);tw_xkeygroupdelete g\""), "x\n");
}

TEST_F(LoopsTest, TheStepTravelsAsTextWithItsPosition) {
  MakeGroup();
  std::string a = Handle(Groups()->FindKey("g/a"));
  std::string b = Handle(Groups()->FindKey("g/b"));
  tidewright_scripttrace.SetValue(2);
  std::string out = Run("tw_xforeachkey k in g \"echo hi\"");
  tidewright_scripttrace.SetValue(0);
  EXPECT_NE(out.find("[trace] tw_xsetinfo k \"a\";echo hi\n;tw_x_foreachkey " + a + " k in g \"echo hi\"\n"),
            std::string::npos)
      << out;
  EXPECT_NE(out.find("[trace] tw_xsetinfo k \"b\";echo hi\n;tw_x_foreachkey " + b + " k in g \"echo hi\"\n"),
            std::string::npos)
      << out;
}

TEST_F(LoopsTest, AStepTypedByHandGoesOnFromThatNode) {
  MakeGroup();
  std::string a = Handle(Groups()->FindKey("g/a"));
  EXPECT_EQ(Run("tw_x_foreachkey " + a + " k in g \"tw echo server_var(k)\""), "b\nc\n");
}

TEST_F(LoopsTest, PositionsThatNameNoLiveNodeAreRefused) {
  MakeGroup();
  std::string stale = Handle(Groups()->FindKey("g/a"));
  Run("tw_xkeydelete g a");
  tidewright_debug.SetValue(1);
  for (std::string position : {stale, std::string("12345"), std::string("0"), std::string("-1"),
                               std::string("garbage"), std::string("99999999999999999999999")}) {
    std::string out = Run("tw_x_foreachkey " + position + " k in g \"echo ran\"");
    EXPECT_EQ(out, "tw_x_foreachkey: the loop position " + position + " names no live key or value; the loop ends.\n");
    out = Run("tw__foreachval " + position + " v in g b \"echo ran\"");
    EXPECT_EQ(out, "tw__foreachval: the loop position " + position + " names no live key or value; the loop ends.\n");
  }
  tidewright_debug.SetValue(0);
  EXPECT_EQ(Run("tw_x_foreachkey " + stale + " k in g \"echo ran\""), "");  // quiet at the normal level
}

TEST_F(LoopsTest, NamesWithADoubleQuoteArePassedOver) {
  MakeGroup();
  Groups()->FindKey("g/b")->SetName("b\"q");
  std::string out = Run("tw_xforeachkey k in g \"tw echo server_var(k)\"");
  EXPECT_EQ(out,
            "a\ntw_x_foreachkey: the name b\"q holds a double quote and can't be set by the loop; it is passed "
            "over.\nc\n");
}

TEST_F(LoopsTest, ALineTooLongEndsTheLoopWithAMessage) {
  MakeGroup();
  std::string longName(kMaxKeyText, 'n');
  Groups()->FindKey("g/a")->SetName(longName.c_str());
  std::string body(1000, 'b');
  std::string out = Run("tw_xforeachkey k in g \"" + body + "\"");
  EXPECT_EQ(out, "tw_xforeachkey: the loop's next line is longer than 2047 characters; the loop ends.\n");
  EXPECT_EQ(LastError(), "Resulting string too long.");
}

// ---- failures of the first step ----

TEST_F(LoopsTest, TheWordInIsRequired) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachkey k on g echo"), " Invalid syntax: tw_xforeachkey <var> in <groupname> <command>");
  EXPECT_EQ(LastError(), "Syntax error");
  EXPECT_EQ(Run("tw_xforeachval v IN g a \"tw echo server_var(v)\""), "x\ny\n");
  EXPECT_EQ(Run("tw_foreachval v on g a echo"), " Invalid syntax: tw_xforeachval <var> in <groupname> <command>\n");
  EXPECT_EQ(Run("tw_xforeachkey k in"), "Syntax: tw_xforeachkey <var> in <groupname> <command>\n");
}

TEST_F(LoopsTest, MissingGroupsAndKeys) {
  MakeGroup();
  EXPECT_EQ(Run("tw_xforeachkey k in nogroup echo"),
            "tw_xforeachkey\nERROR: Tidewright cannot find keygroup: nogroup!\n");
  EXPECT_EQ(LastError(), "Keygroup not found");
  EXPECT_EQ(Run("tw_foreachval v in g nokey echo"), "tw_foreachval\nERROR: Tidewright cannot find key: nokey!\n");
  EXPECT_EQ(LastError(), "Key not found");
}

}  // namespace
