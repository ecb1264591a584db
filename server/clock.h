// Simulated time: the clock that Time() reads, frames and ticks, and the global variables block that the
// game and plugins read. Nothing here reads the wall clock, so runs repeat exactly.
#pragma once

#include <cmath>

#include "edict.h"

constexpr int CLOCK_DEFAULT_TICKRATE = 66;
constexpr int CLOCK_MIN_TICKRATE = 1;
constexpr int CLOCK_MAX_TICKRATE = 1000;

class SimClock {
public:
  explicit SimClock(int tickrate = CLOCK_DEFAULT_TICKRATE);

  // The first reading in a frame gives the clock; each further reading in the same frame the next larger
  // float, so that two readings never compare equal.
  float Time();
  // Ends the frame: the clock moves one tick on, and the globals follow.
  void AdvanceFrame();
  // A new level: ticks count from 0 again, the clock runs on.
  void StartLevel(const char* mapName, int maxClients, int maxEntities);

  double Now() const { return m_seconds; }
  int Tickrate() const { return m_tickrate; }
  float TickInterval() const { return m_interval; }
  CGlobalVars* Globals() { return &m_globals; }

private:
  void SyncGlobals();

  int m_tickrate;
  float m_interval;
  long long m_ticks = 0;   // ticks since start-up; the clock is m_ticks * m_interval
  double m_seconds = 0;
  float m_lastReading = -INFINITY;  // readings never go back, not even across frames
  bool m_readThisFrame = false;
  CGlobalVars m_globals;
};
