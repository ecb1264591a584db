// The console doors: names, help texts, and the current record that the expanded twin replaces and the x twin
// leaves alone. What the doors print runs in the language_doors scenario.
#include <gtest/gtest.h>

#include <string>

#include "language/doors.h"
#include "language_fixture.h"

namespace {

class DoorsTest : public LanguageTest {};

TEST_F(DoorsTest, EveryBaseHasBothConsoleDoors) {
  for (const char* base : {"doblock", "load", "unload", "_unload", "set", "setinfo", "copy", "getargv", "getargc",
                           "getargs", "getcmduserid", "forcevalue", "flags", "makepublic", "getgame", "log", "logv",
                           "dbgmsg", "dbgmsgv", "commandv", "createvectorfrompoints", "createvectorstring",
                           "splitvectorstring", "getgravityvector"}) {
    EXPECT_NE(FindCommand(("tw_x" + std::string(base)).c_str()), nullptr) << base;
    EXPECT_NE(FindCommand(("tw_" + std::string(base)).c_str()), nullptr) << base;
  }
  for (const char* name : {"tw__ip", "tw__db", "tw__de", "tw__sb", "tw__eb", "tw", "twnq", "tw_xnq", "tw_xlogq",
                           "tw_logq", "printcount", "tidewright_version", "tidewright_log"})
    EXPECT_NE(FindCommand(name), nullptr) << name;
  EXPECT_STREQ(FindCommand("tw_xset")->GetHelpText(), "Adds/sets a new server/global variable.");
  EXPECT_STREQ(FindCommand("tw_set")->GetHelpText(),
               "Adds/sets a new server/global variable. Expands event and server variables.");
}

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
