// The player list's connection figures: the ping arithmetic with its clamps and rate rule, loss in percent.
#include <gtest/gtest.h>

#include <string>

#include "world/lists.h"

namespace {

constexpr float kTick = 1.0f / 66.0f;

TEST(ConnectionFigures, PingIsLatencyLessHalfACommandAndATickAndAHalfAndLossIsInPercent) {
  struct Case {
    float latency;
    const char* cmdRate;
    float tick;
    int ping;
  };
  const Case cases[] = {
      {0.120f, "66", kTick, 89},       // 120 - 7.58 - 15.15 - 7.58 = 89.7, cut
      {0.050f, "100", 0.01f, 30},      // 50 - 5 - 10 - 5
      {0.050f, "0", 0.01f, 5},         // a rate of 0 counts as 1: 50 - 500 - 15 < 5
      {0.600f, "junk", 0.0f, 100},     // not a number: 1
      {0.600f, "-3", 0.0f, 100},
      {0.001f, "66", kTick, 5},        // below 5 reads 5
      {3.000f, "66", kTick, 1000},     // above 1000 reads 1000
      {0.030f, nullptr, 0.0f, 5},      // no value: 1
  };
  for (const Case& c : cases)
    EXPECT_EQ(PingOf(c.latency, c.cmdRate, c.tick), c.ping) << c.latency << " " << (c.cmdRate ? c.cmdRate : "null");
  // Loss is in percent, from 0 to 100.
  EXPECT_EQ(PacketLossOf(0.0f), 0);
  EXPECT_EQ(PacketLossOf(0.075f), 7);
  EXPECT_EQ(PacketLossOf(-0.5f), 0);
  EXPECT_EQ(PacketLossOf(1.5f), 100);
}

}  // namespace
