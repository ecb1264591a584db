// Commands that go into the engine's server command queue later (delayed) or at its end now (soon). The
// pending list belongs to this file; the plugin's frame and level start drive it through the two hooks.
#pragma once

#include <cstddef>

// Once a frame while brannock_tidewright is exactly 1, before Python's tick: hands at most one due command
// (the earliest) to the end of the engine's queue. A frame with nothing due costs one comparison.
void Delayed_OnFrame();
// At a level start while brannock_tidewright is not 0: forgets every pending command.
void Delayed_OnLevelInit();

// Puts a command on the list, due at `dueTime` on the engine's clock; equal times keep the order of
// scheduling. False (nothing scheduled) for a command longer than DELAYED_MAX_COMMAND characters.
bool Delayed_Schedule(float dueTime, const char* command);
size_t Delayed_PendingCount();

// The longest command: it leaves with a line end in a 2048-byte buffer.
enum { DELAYED_MAX_COMMAND = 2046 };
