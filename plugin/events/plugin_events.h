// Firing the plugin's own game events (map start, player validated, script pack registered, ...): created
// unforced through the engine's game event manager, filled, fired. The manager owns the event once fired.
#pragma once

#include "host/engine_surface.h"
#include "igameevents.h"

// An event nobody listens to, or that no file declared, can't be created: it is dropped silently.
template <class Fill>
void FirePluginEvent(const char* name, Fill fill) {
  if (!gameeventmanager) return;
  IGameEvent* event = gameeventmanager->CreateEvent(name, false);
  if (!event) return;
  fill(event);
  gameeventmanager->FireEvent(event, false);
}
