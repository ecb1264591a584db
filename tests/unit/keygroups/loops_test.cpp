// The loops over keys and values as the engine runs them: the step's text with its position, positions that
// name no live node, and names the step's line can't carry. A body that deletes its own key runs in the
// keygroups/loop_delete scenario.
#include <gtest/gtest.h>

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
  static std::string Handle(const char* path) { return std::to_string(Groups()->FindKey(path)->GetHandle()); }
};

// Each step names the node it stands on; typed by hand, a step goes on from that node.
TEST_F(LoopsTest, TheStepTravelsAsTextWithItsPosition) {
  MakeGroup();
  tidewright_scripttrace.SetValue(2);
  std::string out = Run("tw_xforeachkey k in g \"echo hi\"");
  tidewright_scripttrace.SetValue(0);
  for (const char* key : {"a", "b"}) {
    std::string step = std::string("[trace] tw_xsetinfo k \"") + key + "\";echo hi\n;tw_x_foreachkey " +
                       Handle((std::string("g/") + key).c_str()) + " k in g \"echo hi\"\n";
    EXPECT_NE(out.find(step), std::string::npos) << out;
  }
  EXPECT_EQ(Run("tw_x_foreachkey " + Handle("g/a") + " k in g \"tw echo server_var(k)\""), "b\nc\n");
}

TEST_F(LoopsTest, PositionsThatNameNoLiveNodeAreRefused) {
  MakeGroup();
  std::string stale = Handle("g/a");
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

TEST_F(LoopsTest, ANameWithADoubleQuoteIsPassedOverAndALineTooLongEndsTheLoop) {
  MakeGroup();
  Groups()->FindKey("g/b")->SetName("b\"q");
  EXPECT_EQ(Run("tw_xforeachkey k in g \"tw echo server_var(k)\""),
            "a\ntw_x_foreachkey: the name b\"q holds a double quote and can't be set by the loop; it is passed "
            "over.\nc\n");
  Groups()->FindKey("g/a")->SetName(std::string(kMaxKeyText, 'n').c_str());
  EXPECT_EQ(Run("tw_xforeachkey k in g \"" + std::string(1000, 'b') + "\""),
            "tw_xforeachkey: the loop's next line is longer than 2047 characters; the loop ends.\n");
  EXPECT_EQ(LastError(), "Resulting string too long.");
}

}  // namespace
