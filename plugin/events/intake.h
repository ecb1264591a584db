// Event intake: the engine's game events come in through the plugin's FireGameEvent, are tested for anyone
// who wants them, and leave as commands at the tail of the server command buffer. A wanted event's
// duplicate waits in the queue until its "tw__ep <handle>" runs and makes it the current event.
#pragma once

#include <cstddef>

class IGameEvent;

// FireGameEvent: while brannock_tidewright is exactly 1, an event that a configuration file, a script pack
// or a script's event section wants is duplicated and queued with the commands that answer it.
void Intake_OnGameEvent(IGameEvent* event);

// Duplicates waiting for their tw__ep.
size_t QueuedEventCount();
// Gives the queued duplicates and the current event back to the game event manager (at Unload).
void ReleaseEvents();
