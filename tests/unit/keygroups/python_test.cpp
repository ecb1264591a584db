// The keygroup commands through the Python door where the scenario python/binders_keygroups doesn't reach:
// a key by position, texts past the limit (no tokenizer cuts them first), and a loop's command as one item.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "keygroups_fixture.h"
#include "python_call.h"

namespace {

class PythonKeysTest : public KeyGroupTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
};

TEST_F(PythonKeysTest, GetValueFindsAKeyByItsPosition) {
  Run("tw_xkeygroupcreate players;tw_xkeycreate players 42;tw_xkeycreate players 7");
  Run("tw_xkeysetvalue players 7 kills 5");
  EXPECT_EQ(CallTwRepr("keygetvalue", {"players", "2", "kills"}), "'5'");  // three with the name: the group form
}

TEST_F(PythonKeysTest, TextsPastTheLimitAreRefused) {
  Run("tw_xkeycreate free");
  std::string longText(kMaxKeyText + 1, 'x');
  OutputCapture capture;
  CallTwRepr("keysetvalue", {"free", "v", longText.c_str()});
  EXPECT_EQ(capture.Take(), "ERROR: Tidewright key names and values are limited to 1023 characters.\n");
  EXPECT_EQ(LastError(), "Invalid parameter");
  EXPECT_EQ(Ungrouped()->FindKey("free")->FindKey("v"), nullptr);
  CallTwRepr("keysetvalue", {"free", "v", longText.c_str() + 1});
  EXPECT_EQ(strlen(Ungrouped()->FindKey("free")->GetString("v")), size_t(kMaxKeyText));
  ClearLastError();
  CallTwRepr("keygroupcreate", {longText.c_str()});
  EXPECT_EQ(LastError(), "Invalid parameter");
  EXPECT_EQ(Names(Groups()), "");
}

TEST_F(PythonKeysTest, ALoopKeepsItemsWithBlanksWhole) {
  Run("tw_xkeygroupcreate g;tw_xkeycreate g a;tw_xkeycreate g b");
  EXPECT_EQ(CallTwRepr("foreachkey", {"k", "in", "g", "tw echo key server_var(k)"}), "None");
  EXPECT_EQ(Settle(), "key a\nkey b\n");
}

}  // namespace
