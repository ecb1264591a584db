// The delayed list: the order in which commands leave (due time, then scheduling), one per frame, the level
// start, and what a delay or command the list can't take becomes. The raw command text, tw_soon and the
// master switch run in the library/delayed, library/soon and library/delayed_levels scenarios.
#include <gtest/gtest.h>

#include <string>

#include "../script/script_fixture.h"
#include "library/delayed.h"

namespace {

class DelayedTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    Delayed_OnLevelInit();
  }
  void TearDown() override {
    Delayed_OnLevelInit();
    brannock_tidewright.SetValue(1);
    ScriptTest::TearDown();
  }
  // Lets frames pass one by one; the output of each frame, one entry per frame, "-" for a quiet one.
  static std::string Frames(int count) {
    std::string frames;
    for (int i = 0; i < count; ++i) {
      OutputCapture capture;
      Standin().Frame();
      std::string text = capture.Take();
      if (!text.empty() && text.back() == '\n') text.pop_back();
      frames += (i ? "|" : "") + (text.empty() ? std::string("-") : text);
    }
    return frames;
  }
};

TEST_F(DelayedTest, LeaveByDueTimeThenInTheOrderOfSchedulingOnePerFrame) {
  const float now = Standin().Engine().Time();
  Delayed_Schedule(now + 100, "echo late");
  Delayed_Schedule(now, "echo tie1");
  Delayed_Schedule(now - 5, "echo early");
  Delayed_Schedule(now, "echo tie2");
  Delayed_Schedule(now, "echo tie3");
  EXPECT_EQ(Delayed_PendingCount(), 5u);
  // A frame runs what waits in the buffer, then hands the head over: each command runs a frame later.
  EXPECT_EQ(Frames(6), "-|early|tie1|tie2|tie3|-");
  EXPECT_EQ(Delayed_PendingCount(), 1u);
}

// A line runs to its end, and a command handed over meanwhile keeps it going: what falls due runs in it.
TEST_F(DelayedTest, DelaysThatAreNoFiniteNumberCountAsZero) {
  // All in one line, so they are scheduled at one reading of the clock after another.
  EXPECT_EQ(Run("tw_xdelayed 1e39 echo inf;tw_xdelayed word echo word;tw_xdelayed -0.5 echo negative;"
                "tw_xdelayed nan echo nan;tw_xdelayed 0.5 echo later"),
            "negative\ninf\nword\nnan\n");
  EXPECT_EQ(Delayed_PendingCount(), 1u);
}

TEST_F(DelayedTest, ALevelStartDropsThePendingCommands) {
  Delayed_Schedule(Standin().Engine().Time() + 60, "echo never");
  tidewright_debug.SetValue(1);
  OutputCapture capture;
  Delayed_OnLevelInit();
  EXPECT_EQ(capture.Text(), "[Tidewright] Resetting delayed counters.\n");
  EXPECT_EQ(Delayed_PendingCount(), 0u);
}

TEST_F(DelayedTest, ACommandThatCantLeaveWholeIsRefused) {
  const std::string fits(DELAYED_MAX_COMMAND, 'c');
  EXPECT_TRUE(Delayed_Schedule(0, fits.c_str()));
  EXPECT_FALSE(Delayed_Schedule(0, (fits + "c").c_str()));
  EXPECT_EQ(Delayed_PendingCount(), 1u);
}

}  // namespace
