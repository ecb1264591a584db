// The current game event: the one that the event intake made current while its blocks run (tw__ep), or
// null. Read by event_var() and the Python bridge; written only by the event intake.
#pragma once

class IGameEvent;

extern IGameEvent* g_currentEvent;
