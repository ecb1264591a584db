// Game events on their way in: what an event nobody wants leaves, names the manager can't declare, file names
// past the limit, the queue of duplicates with tw__ep and its handles, and an event every script is deaf to.
// The order in which scripts hear an event runs in the events/order and events/same_frame scenarios.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"
#include "plugin.h"

namespace {

class IntakeTest : public EventTest {
protected:
  static std::string PrintingScript(const char* tag) {
    return std::string("event player_death\n{\ntw_dbgmsg 0 ") + tag + " sees event_var(userid)\n}\n";
  }
  static std::string CurrentUserid() { return Run("tw_dbgmsg 0 event_var(userid)"); }
  static bool StartsWith(const std::string& text, const char* head) { return text.rfind(head, 0) == 0; }
};

// An event object of the test's own, for names the game's manager can't declare.
class NamedEvent final : public IGameEvent {
public:
  explicit NamedEvent(const char* name) : m_name(name) {}
  const char* GetName() const override { return m_name; }
  bool IsEmpty(const char*) override { return true; }
  bool GetBool(const char*, bool d) override { return d; }
  int GetInt(const char*, int d) override { return d; }
  float GetFloat(const char*, float d) override { return d; }
  const char* GetString(const char*, const char* d) override { return d; }
  void SetBool(const char*, bool) override { ++writes; }
  void SetInt(const char*, int) override { ++writes; }
  void SetFloat(const char*, float) override { ++writes; }
  void SetString(const char*, const char*) override { ++writes; }
  int writes = 0;

private:
  const char* m_name;
};

// ---- who wants an event ----

TEST_F(IntakeTest, EventNobodyWantsLeavesNothingBehind) {
  size_t live = Standin().Events().LiveEvents();
  Fire("player_spawn", {{"userid", "2"}});
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  EXPECT_EQ(QueuedEventCount(), 0u);
  EXPECT_EQ(Standin().Events().LiveEvents(), live);
}

// A noisy name in capitals is still noisy; an event without a name, or none at all, is passed over.
TEST_F(IntakeTest, NoisyCapitalsAndMissingNamesAreDropped) {
  Load("shouting", "event WEAPON_FIRE\n{\necho never\n}\n");
  NamedEvent noisy("WEAPON_FIRE");
  NamedEvent nameless(nullptr);
  g_TidewrightPlugin.FireGameEvent(&noisy);
  g_TidewrightPlugin.FireGameEvent(&nameless);
  g_TidewrightPlugin.FireGameEvent(nullptr);
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  EXPECT_EQ(noisy.writes, 0);
}

TEST_F(IntakeTest, FileNamesPastTheLimitAreReportedAndCountAsAbsent) {
  Run("tidewright_register wide");
  tidewright_subdirectory.SetValue(std::string(2100, 'd').c_str());
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_EQ(out.Take(),
            "[Tidewright] The configuration file name of event player_spawn is too long.\n"
            "[Tidewright] The file name of script pack wide for event player_spawn is too long.\n");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  // An exec line too long: the event still becomes current, its file never runs.
  tidewright_subdirectory.SetValue("");
  WriteTestFile("cfg/player_spawn.cfg", "echo never run\n");
  tidewright_exec_cmd.SetValue(std::string(2100, 'x').c_str());
  Fire("player_spawn");
  EXPECT_EQ(out.Take(), "[Tidewright] The configuration file name of event player_spawn is too long.\n");
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_TRUE(StartsWith(commands[0], "tw__ep "));
}

// ---- the queue ----

TEST_F(IntakeTest, DuplicatesGoBackToTheManager) {
  Load("keeper", PrintingScript("keeper"));
  size_t live = Standin().Events().LiveEvents();
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  EXPECT_EQ(QueuedEventCount(), 2u);
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 2);
  EXPECT_EQ(Settle(), "keeper sees 1\nkeeper sees 2\n");
  // The last event stays current until the next tw__ep.
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 1);
  EXPECT_EQ(CurrentUserid(), "2\n");
  Fire("player_death", {{"userid", "3"}});
  ReleaseEvents();
  EXPECT_EQ(g_currentEvent, nullptr);
  EXPECT_EQ(QueuedEventCount(), 0u);
  EXPECT_EQ(Standin().Events().LiveEvents(), live);
}

TEST_F(IntakeTest, PopWithEmptyQueueReleasesTheCurrentEvent) {
  Load("any", PrintingScript("any"));
  Fire("player_death", {{"userid", "5"}});
  Settle();
  ASSERT_NE(g_currentEvent, nullptr);
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw__ep"), "ERROR: Stack empty, couldn't grab event pointer.\n");
  EXPECT_EQ(g_currentEvent, nullptr);
  EXPECT_EQ(CurrentUserid(), "0\n");
}

// A forged tw__ep that runs ahead of the real one takes nothing: the real one still finds its event.
TEST_F(IntakeTest, ForgedHandleNeverBecomesCurrent) {
  Load("victim", PrintingScript("victim"));
  tidewright_debug.SetValue(1);
  for (const char* forged : {"999999", "abc", "0", "-1", "12abc", "18446744073709551615"}) {
    Fire("player_death", {{"userid", "6"}});
    Standin().Engine().InsertServerCommand((std::string("tw__ep ") + forged + "\n").c_str());
    EXPECT_EQ(Settle(), std::string("ERROR: No queued event has the handle ") + forged + ".\nvictim sees 6\n");
    EXPECT_EQ(QueuedEventCount(), 0u);
  }
}

// A live handle with anything after it is no handle: only the whole number names the event, which stays
// queued for its real tw__ep.
TEST_F(IntakeTest, LiveHandleFollowedByJunkTakesNothing) {
  Load("victim", PrintingScript("victim"));
  tidewright_debug.SetValue(1);
  for (const char* junk : {"abc", ".0", "e1", "x7"}) {
    Fire("player_death", {{"userid", "6"}});
    std::vector<std::string> commands = TakeCommands();
    ASSERT_EQ(commands.size(), 2u) << junk;
    const std::string forged = commands[0].substr(7) + junk;
    EXPECT_EQ(Run("tw__ep " + forged), "ERROR: No queued event has the handle " + forged + ".\n");
    EXPECT_EQ(g_currentEvent, nullptr) << forged;
    EXPECT_EQ(QueuedEventCount(), 1u) << forged;
    Run(commands[0]);
    EXPECT_EQ(CurrentUserid(), "6\n") << forged;
    EXPECT_EQ(Run(commands[1]), "victim sees 6\n") << forged;
  }
}

// A handle run out of turn takes its own event; run again it is stale and takes nothing, while the other
// event still waits for its own handle.
TEST_F(IntakeTest, EachHandleTakesItsOwnEventOnce) {
  Load("turns", PrintingScript("turns"));
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 4u);
  tidewright_debug.SetValue(5);
  std::string out = Run(commands[2]);
  EXPECT_NE(out.find("Changed event pointer: player_death.\n"), std::string::npos) << out;
  tidewright_debug.SetValue(1);
  EXPECT_EQ(CurrentUserid(), "2\n");
  EXPECT_EQ(Run(commands[2]), "ERROR: No queued event has the handle " + commands[2].substr(7) + ".\n");
  EXPECT_EQ(g_currentEvent, nullptr);
  EXPECT_EQ(QueuedEventCount(), 1u);
  Run(commands[0]);
  EXPECT_EQ(CurrentUserid(), "1\n");
  EXPECT_EQ(QueuedEventCount(), 0u);
}

// Which scripts hear an event runs in the script/lifecycle_events scenario; with every script off the event
// is still wanted and becomes current.
TEST_F(IntakeTest, WithEveryScriptOffTheEventStillBecomesCurrent) {
  for (const char* name : {"a", "b"}) {
    Load(name, PrintingScript(name));
    g_scriptMachine.registry.SetScriptEnabled(name, false);
  }
  Fire("player_death", {{"userid", "9"}});
  EXPECT_EQ(QueuedEventCount(), 1u);
  EXPECT_EQ(Settle(), "");
  EXPECT_EQ(CurrentUserid(), "9\n");
}
}  // namespace
