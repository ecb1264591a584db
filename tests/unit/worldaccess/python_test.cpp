// The world commands through the Python door where the scenario python/binders_world doesn't reach: no
// count is checked below the most a command takes, a missing argument is an empty one, and what a missing
// player gives back.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "python_call.h"
#include "worldaccess_fixture.h"

namespace {

class WorldPythonTest : public WorldAccessTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
};

TEST_F(WorldPythonTest, MissingArgumentsAndMissingPlayers) {
  const int userid = Connect("Pythonista");
  EXPECT_EQ(CallTwRepr("getuserid", {}), std::to_string(userid));
  EXPECT_EQ(CallTwRepr("getplayercount", {"3", "4"}), "None");  // one too many, as at the console
  EXPECT_EQ(CallTwRepr("getplayerlocation", {std::to_string(userid + 50).c_str()}), "(0.0, 0.0, 0.0)");
  EXPECT_EQ(CallTwRepr("getplayername", {"0"}), "None");
  EXPECT_EQ(LastError(), "Invalid userid");
  EXPECT_EQ(CallTwRepr("precachemodel", {}), "None");
  EXPECT_EQ(LastError(), "Syntax error");
}

}  // namespace
