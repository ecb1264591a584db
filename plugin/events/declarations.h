// Event declarations: reading event resource files and listening to every event they name, the default
// files registered at load and at each map, tw_loadevents, and tw_event with the one event it builds.
#pragma once

class IGameEvent;
class IGameEventListener2;

// Load: keeps the plugin object as the listener of every event file read from now on, declares the
// plugin's own events to the engine and, while tidewright_defaultevents is not 0, listens to the default files.
void Declarations_OnLoad(IGameEventListener2* listener);
// LevelInit: the default files again, while tidewright_defaultevents is not 0.
void Declarations_OnLevelInit();
// LevelShutdown and Unload: the plugin stops listening to every event.
void Declarations_StopListening();

// Listens to each event that the file's top section names; false (with the messages) when it can't be read.
bool LoadEventFile(const char* path);
// The game's, the engine's and the plugin's event files.
void RegisterDefaultEvents();

// The event that tw_event is building, or null.
IGameEvent* PendingEvent();
// Gives the pending event back to the game event manager (at Unload).
void ReleasePendingEvent();
