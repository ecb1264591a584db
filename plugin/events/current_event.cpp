// The current game event pointer; its owner is the event intake.
#include "events/current_event.h"

IGameEvent* g_currentEvent = nullptr;
