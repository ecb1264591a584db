// Game events on their way in: who wants an event, what a wanted event queues and in which order, the queue
// of duplicates with tw__ep and its handles, and the chains of scripts some of which are turned off.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"
#include "host/plugin.h"

namespace {

class IntakeTest : public EventTest {
protected:
  static std::string PrintingScript(const char* tag) {
    return std::string("event player_death\n{\ntw_dbgmsg 0 ") + tag + " sees event_var(userid)\n}\n";
  }
};

// An event object of the test's own, for names the game's declarations can't spell.
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

TEST_F(IntakeTest, MasterSwitchMustBeExactlyOne) {
  Load("watcher", PrintingScript("watcher"));
  for (const char* value : {"0", "2"}) {
    brannock_tidewright.SetValue(value);
    Fire("player_death", {{"userid", "3"}});
    EXPECT_TRUE(Standin().Cbuf().IsEmpty()) << value;
  }
  brannock_tidewright.SetValue(1);
  Fire("player_death", {{"userid", "3"}});
  EXPECT_EQ(Settle(), "watcher sees 3\n");
}

TEST_F(IntakeTest, NoisyEventsAreDroppedUnlessAskedFor) {
  Load("noisy", "event weapon_fire\n{\necho shot heard\n}\n");
  Fire("weapon_fire");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  tidewright_noisy.SetValue(2);
  Fire("weapon_fire");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  tidewright_noisy.SetValue(1);
  Fire("weapon_fire");
  EXPECT_EQ(Settle(), "shot heard\n");
}

TEST_F(IntakeTest, NoisyNamesIgnoreCase) {
  Load("shouting", "event WEAPON_FIRE\n{\necho never\n}\n");
  NamedEvent event("WEAPON_FIRE");
  g_TidewrightPlugin.FireGameEvent(&event);
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  EXPECT_EQ(event.writes, 0);
}

TEST_F(IntakeTest, EventWithoutNameIsIgnored) {
  NamedEvent event(nullptr);
  g_TidewrightPlugin.FireGameEvent(&event);
  g_TidewrightPlugin.FireGameEvent(nullptr);
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
}

TEST_F(IntakeTest, ConfigurationFileAloneMakesTheEventWanted) {
  WriteTestFile("cfg/player_spawn.cfg", "tw_dbgmsg 0 cfg sees event_var(tw_event) for event_var(userid)\n");
  Fire("player_spawn", {{"userid", "8"}});
  EXPECT_EQ(QueuedEventCount(), 1u);
  EXPECT_EQ(Settle(), "cfg sees player_spawn for 8\n");
}

TEST_F(IntakeTest, ConfigurationFilesAreLookedForInTheSubdirectory) {
  tidewright_subdirectory.SetValue("events");
  WriteTestFile("cfg/player_spawn.cfg", "echo not this one\n");
  WriteTestFile("cfg/events/player_spawn.cfg", "echo from the subdirectory\n");
  tidewright_debug.SetValue(2);
  OutputCapture capture;
  Fire("player_spawn");
  Standin().Settle();
  std::string out = capture.Text();
  EXPECT_NE(out.find("Sending exec command for player_spawn.\n"), std::string::npos) << out;
  EXPECT_NE(out.find("from the subdirectory\n"), std::string::npos) << out;
  EXPECT_EQ(out.find("not this one"), std::string::npos) << out;
}

TEST_F(IntakeTest, ExecCommandIsTheConfiguredOne) {
  WriteTestFile("cfg/player_spawn.cfg", "echo spawned\n");
  Standin().SetAlias("myexec", "echo myexec ran instead");
  tidewright_exec_cmd.SetValue("myexec");
  Fire("player_spawn");
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].rfind("tw__ep ", 0), 0u);
  EXPECT_EQ(commands[1], "myexec /player_spawn.cfg");
}

TEST_F(IntakeTest, OverlongConfigurationPathIsReportedAndCountsAsAbsent) {
  tidewright_subdirectory.SetValue(std::string(2100, 'd').c_str());
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_EQ(out.Text(), "[Tidewright] The configuration file name of event player_spawn is too long.\n");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
}

TEST_F(IntakeTest, OverlongExecLineIsReportedAndNotQueued) {
  WriteTestFile("cfg/player_spawn.cfg", "echo never run\n");
  tidewright_exec_cmd.SetValue(std::string(2100, 'x').c_str());
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_EQ(out.Text(), "[Tidewright] The configuration file name of event player_spawn is too long.\n");
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].rfind("tw__ep ", 0), 0u);
}

// ---- what a wanted event queues ----

TEST_F(IntakeTest, WantedEventQueuesItsPopThenTheScriptsOnly) {
  Load("first", PrintingScript("first"));
  Load("second", PrintingScript("second"));
  Fire("player_death", {{"userid", "4"}});
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 3u);
  EXPECT_EQ(commands[0].rfind("tw__ep ", 0), 0u);
  EXPECT_EQ(commands[1].rfind("tw__de ", 0), 0u);
  EXPECT_EQ(commands[2].rfind("tw__de ", 0), 0u);
}

TEST_F(IntakeTest, ScriptsSeeTheEventInLoadOrderWithItsName) {
  Load("first", "event player_death\n{\ntw_dbgmsg 0 first event_var(tw_event) event_var(userid)\n}\n");
  Load("second", PrintingScript("second"));
  Fire("player_death", {{"userid", "4"}});
  EXPECT_EQ(Settle(), "first player_death 4\nsecond sees 4\n");
}

TEST_F(IntakeTest, EventFiredInsideABlockWaitsForTheBlock) {
  Load("inner",
       "block go\n{\ntw_dbgmsg 0 before event_var(userid)\nsim_event player_death userid 9\n"
       "tw_dbgmsg 0 after event_var(userid)\n}\n" +
           PrintingScript("handler"));
  Fire("player_death", {{"userid", "1"}});
  Settle();
  EXPECT_EQ(Run("tw_xdoblock inner/go"), "before 1\nafter 1\nhandler sees 9\n");
}

// ---- the queue ----

TEST_F(IntakeTest, TwoEventsInOneRunEachReachTheirBlocks) {
  Load("pair", PrintingScript("pair"));
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  EXPECT_EQ(QueuedEventCount(), 2u);
  EXPECT_EQ(Settle(), "pair sees 1\npair sees 2\n");
  EXPECT_EQ(QueuedEventCount(), 0u);
}

TEST_F(IntakeTest, DuplicatesGoBackToTheManager) {
  Load("keeper", PrintingScript("keeper"));
  size_t live = Standin().Events().LiveEvents();
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 2);
  Settle();
  // The last event stays current until the next tw__ep.
  EXPECT_EQ(Standin().Events().LiveEvents(), live + 1);
  ASSERT_NE(g_currentEvent, nullptr);
  EXPECT_EQ(Run("tw_dbgmsg 0 still event_var(userid)"), "still 2\n");
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
  EXPECT_EQ(Run("tw_dbgmsg 0 now event_var(userid)"), "now 0\n");
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

TEST_F(IntakeTest, HandleOfAnEventAlreadyTakenIsStale) {
  Load("stale", PrintingScript("stale"));
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 4u);
  const std::string firstPop = commands[0];
  Run(firstPop);
  EXPECT_EQ(Run("tw_dbgmsg 0 current event_var(userid)"), "current 1\n");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run(firstPop), "ERROR: No queued event has the handle " + firstPop.substr(7) + ".\n");
  EXPECT_EQ(g_currentEvent, nullptr);
  EXPECT_EQ(QueuedEventCount(), 1u);
  tidewright_debug.SetValue(0);
  Run(commands[2]);
  EXPECT_EQ(Run("tw_dbgmsg 0 current event_var(userid)"), "current 2\n");
}

TEST_F(IntakeTest, HandleOutOfTurnTakesItsOwnEvent) {
  Load("turns", PrintingScript("turns"));
  Fire("player_death", {{"userid", "1"}});
  Fire("player_death", {{"userid", "2"}});
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 4u);
  tidewright_debug.SetValue(5);
  std::string out = Run(commands[2]);
  EXPECT_NE(out.find("Changed event pointer: player_death.\n"), std::string::npos) << out;
  tidewright_debug.SetValue(0);
  EXPECT_EQ(Run("tw_dbgmsg 0 current event_var(userid)"), "current 2\n");
  Run(commands[0]);
  EXPECT_EQ(Run("tw_dbgmsg 0 current event_var(userid)"), "current 1\n");
  EXPECT_EQ(QueuedEventCount(), 0u);
}

// ---- chains with scripts turned off ----

TEST_F(IntakeTest, DisabledScriptIsPassedOver) {
  Load("a", PrintingScript("a"));
  Load("b", PrintingScript("b"));
  Load("c", PrintingScript("c"));
  g_scriptMachine.registry.SetScriptEnabled("b", false);
  Fire("player_death", {{"userid", "7"}});
  EXPECT_EQ(Settle(), "a sees 7\nc sees 7\n");
  g_scriptMachine.registry.SetScriptEnabled("b", true);
  g_scriptMachine.registry.SetScriptEnabled("a", false);
  Fire("player_death", {{"userid", "8"}});
  EXPECT_EQ(Settle(), "b sees 8\nc sees 8\n");
}

TEST_F(IntakeTest, EventWhoseScriptsAreAllOffStillBecomesCurrent) {
  Load("off", PrintingScript("off"));
  g_scriptMachine.registry.SetScriptEnabled("off", false);
  Fire("player_death", {{"userid", "11"}});
  EXPECT_EQ(QueuedEventCount(), 1u);
  EXPECT_EQ(Settle(), "");
  EXPECT_EQ(Run("tw_dbgmsg 0 current event_var(userid)"), "current 11\n");
}

TEST_F(IntakeTest, ScriptUnloadedWhileItsEventWaitsIsSkipped) {
  Load("leaving", PrintingScript("leaving"));
  Load("staying", PrintingScript("staying"));
  Fire("player_death", {{"userid", "12"}});
  g_scriptMachine.registry.RemoveScript("leaving");
  EXPECT_EQ(Settle(), "staying sees 12\n");
}

}  // namespace
