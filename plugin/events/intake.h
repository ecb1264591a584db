// Event intake: the engine's game events come in through the plugin's FireGameEvent, are tested for anyone
// who wants them, and leave as commands at the tail of the server command buffer. A wanted event's
// duplicate waits in the queue until its "tw__ep <handle>" runs and makes it the current event.
#pragma once

#include <cstddef>

// Appends the tw__de commands of the scripts' event sections of that name (enabled scripts, load order).
void BeginAllScriptEvents(const char* name);
// True when a loaded script has an event section of that name, enabled or not.
bool AnyScriptRegistered(const char* name);

// Duplicates waiting for their tw__ep.
size_t QueuedEventCount();
// Gives the queued duplicates and the current event back to the game event manager (at Unload).
void ReleaseEvents();
