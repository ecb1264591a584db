// The console doors: the current record that the expanded twin replaces and the x twin leaves alone. What the
// doors print runs in the language/doors scenario; their names and help texts are the command reference's.
#include <gtest/gtest.h>

#include <string>

#include "language/doors.h"
#include "language_fixture.h"

namespace {

class DoorsTest : public LanguageTest {};

TEST_F(DoorsTest, CurrentRecordOfTheTwins) {
  Set("door_value", "a b");
  Run("tw_set door_target server_var(door_value)");
  EXPECT_EQ(Var("door_target"), "a b");
  CommandArgs* expanded = g_currentArgs;
  ASSERT_NE(expanded, nullptr);
  EXPECT_STREQ(expanded->Argv(0), "tw_set");
  EXPECT_STREQ(expanded->Argv(2), "a b");
  // A failed expansion and the x twin leave the record as it was.
  std::string out = Run("tw_set door_target server_var");
  EXPECT_NE(out.find("tw: Error parsing command string: door_target server_var\n"), std::string::npos) << out;
  EXPECT_EQ(Var("tidewright_lasterror"), "Error while parsing command string.");
  Run("tw_xset door_target second");
  EXPECT_EQ(g_currentArgs, expanded);
  EXPECT_STREQ(g_currentArgs->Argv(2), "a b");
}

}  // namespace
