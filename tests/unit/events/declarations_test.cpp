// Event declarations: reading event files and listening to their events, the default files at each map,
// tw_loadevents in both forms, and tw_event building, setting, firing and cancelling its one event.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"
#include "host/plugin.h"

namespace {

class DeclarationTest : public EventTest {
protected:
  static bool Listening(const char* event) {
    return Standin().Events().FindListener(&g_TidewrightPlugin, event);
  }
  static EventDescriptor* Declared(const char* event) { return Standin().Events().FindDescriptor(event); }
};

constexpr const char* kUnreadable =
    "[Tidewright] *******************************************\n"
    "[Tidewright] ERROR: Couldn't load %s\n"
    "[Tidewright] *******************************************\n"
    "  Error source (console): (no script)\n";

std::string UnreadableReport(const std::string& path) {
  std::string text = kUnreadable;
  return text.replace(text.find("%s"), 2, path);
}

// ---- event files ----

TEST_F(DeclarationTest, MissingFileIsReported) {
  OutputCapture out;
  EXPECT_FALSE(LoadEventFile("resource/nothing_here.res"));
  EXPECT_EQ(out.Text(), UnreadableReport("resource/nothing_here.res"));
  EXPECT_EQ(Var("tidewright_lasterror"), "Couldn't load events file.");
}

TEST_F(DeclarationTest, EveryEventOfTheFileIsHeard) {
  WriteTestFile("resource/extra.res", "\"extra\"\n{\n\"extra_one\"\n{\n\"a\" \"short\"\n}\n\"extra_two\"\n{\n}\n}\n");
  tidewright_debug.SetValue(1);
  OutputCapture out;
  EXPECT_TRUE(LoadEventFile("resource/extra.res"));
  EXPECT_EQ(out.Text(),
            "[Tidewright] Added: extra_one\n[Tidewright] Added: extra_two\n[Tidewright] Done loading events.\n");
  EXPECT_TRUE(Listening("extra_one"));
  EXPECT_TRUE(Listening("extra_two"));
}

TEST_F(DeclarationTest, EmptyTopSectionGivesTrueAndNoListener) {
  WriteTestFile("resource/empty.res", "\"empty\"\n{\n}\n");
  OutputCapture quiet;
  EXPECT_TRUE(LoadEventFile("resource/empty.res"));
}

TEST_F(DeclarationTest, DefaultFilesAreHeardAgainAtEachMap) {
  EXPECT_TRUE(Listening("player_death"));    // the game's
  EXPECT_TRUE(Listening("game_newmap"));     // the engine's
  EXPECT_TRUE(Listening("tw_map_start"));    // the plugin's
  tidewright_defaultevents.SetValue(0);
  Run("map without_defaults");
  EXPECT_FALSE(Listening("player_death"));
  EXPECT_FALSE(Listening("tw_map_start"));
  tidewright_defaultevents.SetValue(1);
  Run("map with_defaults");
  EXPECT_TRUE(Listening("player_death"));
  EXPECT_TRUE(Listening("tw_map_start"));
}

TEST_F(DeclarationTest, MissingGameFileFallsBackToTheOtherSpelling) {
  std::filesystem::path game = Shared().GameDir();
  std::filesystem::rename(game / "resource/modevents.res", game / "resource/moved.res");
  WriteTestFile("Resource/modevents.res", "\"alt\"\n{\n\"alt_event\"\n{\n}\n}\n");
  OutputCapture out;
  RegisterDefaultEvents();
  std::filesystem::rename(game / "resource/moved.res", game / "resource/modevents.res");
  EXPECT_EQ(out.Text(), UnreadableReport("resource/modevents.res"));
  EXPECT_TRUE(Listening("alt_event"));
}

TEST_F(DeclarationTest, MissingPluginFileIsShouted) {
  std::filesystem::path game = Shared().GameDir();
  std::filesystem::rename(game / "addons/brannock_tidewright.res", game / "addons/moved.res");
  OutputCapture out;
  RegisterDefaultEvents();
  std::filesystem::rename(game / "addons/moved.res", game / "addons/brannock_tidewright.res");
  EXPECT_EQ(out.Text(),
            UnreadableReport("addons/brannock_tidewright.res") + "ERROR: COULDN'T LOAD BRANNOCK CORE EVENTS!\n");
}

// ---- tw_loadevents ----

TEST_F(DeclarationTest, LoadEventsWithAPathOnlyListens) {
  WriteTestFile("resource/listen.res", "\"listen\"\n{\n\"listen_only\"\n{\n\"x\" \"short\"\n}\n}\n");
  EXPECT_EQ(Run("tw_xloadevents resource/listen.res"), "");
  EXPECT_TRUE(Listening("listen_only"));
  ASSERT_NE(Declared("listen_only"), nullptr);
  EXPECT_TRUE(Declared("listen_only")->fields.empty());
}

TEST_F(DeclarationTest, LoadEventsWithAnyWordBeforeThePathDeclaresFirst) {
  WriteTestFile("resource/declare.res", "\"declare\"\n{\n\"declared_here\"\n{\n\"x\" \"short\"\n}\n}\n");
  EXPECT_EQ(Run("tw_loadevents nonsense resource/declare.res"), "");
  EXPECT_TRUE(Listening("declared_here"));
  ASSERT_NE(Declared("declared_here"), nullptr);
  EXPECT_EQ(Declared("declared_here")->fields.size(), 1u);
}

TEST_F(DeclarationTest, LoadEventsNeedsAPath) {
  EXPECT_EQ(Run("tw_xloadevents"), "Syntax: tw_xloadevents [declare] <pathtoeventfile>\n");
  EXPECT_EQ(Run("tw_loadevents declare resource/absent.res"), UnreadableReport("resource/absent.res"));
}

// ---- tw_event ----

TEST_F(DeclarationTest, SetterWithoutPendingEventHasNoSituation) {
  EXPECT_EQ(Run("tw_event setint foo x 1"), "No valid command situation for tw_event! 5, 0x0\n");
  EXPECT_EQ(Run("tw_xevent bogus foo"), "No valid command situation for tw_event! 3, 0x0\n");
}

TEST_F(DeclarationTest, SetterNeedsItsValue) {
  Run("tw_event initialize player_death");
  std::string out = Run("tw_event setint player_death userid");
  EXPECT_EQ(out.rfind("No valid command situation for tw_event! 4, 0x", 0), 0u) << out;
}

TEST_F(DeclarationTest, EventNeedsCommandAndName) {
  EXPECT_EQ(Run("tw_event fire"), "Syntax: tw_event <command> <event-name> [value-name] [value]\n");
}

TEST_F(DeclarationTest, UndeclaredEventCannotBeInitialized) {
  EXPECT_EQ(Run("tw_event initialize no_such_event"), "tw_event: Event no_such_event not registered or no listeners.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Event not registered or no listeners.");
  EXPECT_EQ(PendingEvent(), nullptr);
}

TEST_F(DeclarationTest, BuiltEventCarriesItsFieldsToScripts) {
  Load("builder", "event player_hurt\n{\ntw_dbgmsg 0 hurt event_var(userid) event_var(weapon) event_var(dmg)\n}\n");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw_event initialize player_hurt\ntw_event setint player_hurt userid 12abc\n"
                "tw_event setstring player_hurt weapon knife\ntw_xevent setfloat player_hurt dmg 2.5\n"
                "tw_event fire player_hurt"),
            "Event player_hurt created successfully.\nEvent player_hurt fired successfully.\nhurt 12 knife 2.500000\n");
  EXPECT_EQ(PendingEvent(), nullptr);
}

TEST_F(DeclarationTest, FireWithoutPendingEventIsLost) {
  EXPECT_EQ(Run("tw_event fire player_death"), "ERROR: Event lost.\n");
}

TEST_F(DeclarationTest, CancelGivesTheEventBack) {
  size_t live = Standin().Events().LiveEvents();
  Run("tw_event initialize player_death");
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 1);
  EXPECT_EQ(Run("tw_event cancel player_death"), "");
  EXPECT_EQ(PendingEvent(), nullptr);
  EXPECT_EQ(Standin().Events().LiveEvents(), live);
  EXPECT_EQ(Run("tw_event cancel foo"), "");
}

TEST_F(DeclarationTest, SecondInitializeWarnsAndReplaces) {
  size_t live = Standin().Events().LiveEvents();
  Run("tw_event initialize player_death");
  EXPECT_EQ(Run("tw_event initialize player_spawn"),
            "WARNING: A script is calling 'tw_event initialize' for player_spawn when the existing event "
            "player_death has not been cancelled or fired. Trying to continue anyway...\n");
  ASSERT_NE(PendingEvent(), nullptr);
  EXPECT_STREQ(PendingEvent()->GetName(), "player_spawn");
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 1);
}

TEST_F(DeclarationTest, NamesCompareIgnoringCase) {
  Run("tw_event initialize player_death");
  EXPECT_EQ(Run("tw_event SETSTRING PLAYER_DEATH weapon axe"), "");
  EXPECT_STREQ(PendingEvent()->GetString("weapon", ""), "axe");
}

TEST_F(DeclarationTest, FireOfAnotherNameWarnsThenFiresThePendingOne) {
  Load("either", "event player_death\n{\necho death fired\n}\n");
  Run("tw_event initialize player_death");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw_event fire player_spawn"),
            "WARNING: A script is calling 'tw_event fire' for player_spawn when the existing event player_death "
            "has not been cancelled or fired. Trying to continue anyway...\n"
            "Event player_spawn fired successfully.\ndeath fired\n");
}

TEST_F(DeclarationTest, PendingEventSurvivesAMapChange) {
  Run("tw_event initialize player_death");
  Run("map keeps_pending");
  ASSERT_NE(PendingEvent(), nullptr);
  EXPECT_STREQ(PendingEvent()->GetName(), "player_death");
}

}  // namespace
