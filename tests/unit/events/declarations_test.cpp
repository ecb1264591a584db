// Event declarations: the default files when one is missing, and the pending event of tw_event given back to
// the manager when it is replaced or cancelled.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"
#include "plugin.h"

namespace {

class DeclarationTest : public EventTest {};

std::string UnreadableReport(const std::string& path) {
  const std::string stars = "[Tidewright] *******************************************\n";
  return stars + "[Tidewright] ERROR: Couldn't load " + path + "\n" + stars + "  Error source (console): (no script)\n";
}

// The game's file is looked for under its other spelling; the plugin's own is shouted about.
TEST_F(DeclarationTest, MissingDefaultFilesAreReported) {
  std::filesystem::path game = Shared().GameDir();
  const std::pair<const char*, const char*> moves[] = {{"resource/modevents.res", "resource/moved.res"},
                                                       {"addons/brannock_tidewright.res", "addons/moved.res"}};
  for (const auto& [from, to] : moves) std::filesystem::rename(game / from, game / to);
  WriteTestFile("Resource/modevents.res", "\"alt\"\n{\n\"alt_event\"\n{\n}\n}\n");
  OutputCapture out;
  RegisterDefaultEvents();
  for (const auto& [from, to] : moves) std::filesystem::rename(game / to, game / from);
  EXPECT_EQ(out.Take(), UnreadableReport("resource/modevents.res") +
                            UnreadableReport("addons/brannock_tidewright.res") +
                            "ERROR: COULDN'T LOAD BRANNOCK CORE EVENTS!\n");
  EXPECT_TRUE(Standin().Events().FindListener(&g_TidewrightPlugin, "alt_event"));
  RegisterDefaultEvents();
  EXPECT_EQ(out.Text(), "");
}

TEST_F(DeclarationTest, PendingEventIsGivenBackWhenReplacedOrCancelled) {
  size_t live = Standin().Events().LiveEvents();
  Run("tw_event initialize player_death");
  std::string out = Run("tw_event setint player_death userid");
  EXPECT_EQ(out.rfind("No valid command situation for tw_event! 4, 0x", 0), 0u) << out;
  Run("tw_event initialize player_spawn");
  ASSERT_NE(PendingEvent(), nullptr);
  EXPECT_STREQ(PendingEvent()->GetName(), "player_spawn");
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 1);
  EXPECT_EQ(Run("tw_event cancel player_spawn"), "");
  EXPECT_EQ(PendingEvent(), nullptr);
  EXPECT_EQ(Standin().Events().LiveEvents(), live);
}

}  // namespace
