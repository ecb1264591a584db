// Simulated time: readings within a frame, frames, levels and the global variables block.
#include <gtest/gtest.h>

#include <cmath>

#include "clock.h"

namespace {

TEST(SimulatedClock, ReadingsRiseWithinAFrameAndGlobalsFollowFramesAndLevels) {
  SimClock clock(50);
  CGlobalVars* g = clock.Globals();
  clock.StartLevel("first", 8, 2048);
  float first = clock.Time();
  EXPECT_EQ(first, 0.0f);
  float second = clock.Time();
  EXPECT_EQ(second, std::nextafterf(first, INFINITY));
  EXPECT_GT(clock.Time(), second);
  clock.AdvanceFrame();
  clock.AdvanceFrame();
  EXPECT_FLOAT_EQ(clock.Time(), 0.04f);  // the first reading of a frame is the clock
  EXPECT_EQ(g->tickcount, 2);
  EXPECT_EQ(g->framecount, 2);
  EXPECT_FLOAT_EQ(g->curtime, 0.04f);
  EXPECT_FLOAT_EQ(g->interval_per_tick, 0.02f);
  clock.StartLevel("second", 4, 1024);
  EXPECT_EQ(g->tickcount, 0);
  EXPECT_FLOAT_EQ(g->curtime, 0.04f);
  EXPECT_STREQ(g->mapname, "second");
  EXPECT_EQ(g->maxClients, 4);
  EXPECT_EQ(SimClock(0).Tickrate(), CLOCK_MIN_TICKRATE);
  EXPECT_EQ(SimClock(100000).Tickrate(), CLOCK_MAX_TICKRATE);
}

}  // namespace
