// Simulated time and the global variables block.
#include "clock.h"

#include <algorithm>
#include <cmath>

SimClock::SimClock(int tickrate)
    : m_tickrate(std::clamp(tickrate, CLOCK_MIN_TICKRATE, CLOCK_MAX_TICKRATE)), m_interval(1.0f / float(m_tickrate)) {
  m_globals.interval_per_tick = m_interval;
  m_globals.frametime = m_interval;
  m_globals.absoluteframetime = m_interval;
  SyncGlobals();
}

float SimClock::Time() {
  float now = float(m_seconds);
  if (!m_readThisFrame && m_lastReading < now) {
    m_lastReading = now;
  } else {
    m_lastReading = std::nextafterf(m_lastReading, INFINITY);
  }
  m_readThisFrame = true;
  return m_lastReading;
}

void SimClock::AdvanceFrame() {
  ++m_ticks;
  m_seconds = double(m_ticks) / double(m_tickrate);
  m_readThisFrame = false;
  ++m_globals.framecount;
  ++m_globals.tickcount;
  SyncGlobals();
}

void SimClock::StartLevel(const char* mapName, int maxClients, int maxEntities) {
  m_globals.tickcount = 0;
  m_globals.mapname = mapName;
  m_globals.maxClients = maxClients;
  m_globals.maxEntities = maxEntities;
  SyncGlobals();
}

void SimClock::SyncGlobals() {
  m_globals.curtime = float(m_seconds);
  m_globals.realtime = float(m_seconds);
}
