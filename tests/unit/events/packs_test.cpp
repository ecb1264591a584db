// Script packs: a pack name too long for the line that sets its directory variable, and the internal error
// of an event without a name.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"

namespace {

class PackTest : public EventTest {};

TEST_F(PackTest, OverlongPackNameIsRefused) {
  // Each name stands twice in the directory variable's command, which then passes the line limit.
  std::string name(1020, 'p');
  EXPECT_EQ(Run("tidewright_register " + name), "[Tidewright] Script pack name too long: " + name + "\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
  EXPECT_EQ(Run("tidewright_unregister x").rfind("[Tidewright] Internal Error", 0), 0u);
}

TEST_F(PackTest, EmptyEventNameIsAnInternalError) {
  const std::string error = "[Tidewright] Error, event string nonexistent.\n";
  OutputCapture out;
  EXPECT_FALSE(RegisteredScriptExists(""));
  EXPECT_FALSE(RegisteredScriptExists(nullptr));
  EXPECT_EQ(out.Take(), error + error);
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal Error");
  Load("blank", "event player_spawn\n{\n}\n");
  ExecAllRegistered("");
  EXPECT_EQ(out.Take(), error);
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal error");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
}

}  // namespace
