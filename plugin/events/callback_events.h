// The engine callbacks that the plugin turns into game events of its own: tw_map_start at each level,
// tw_player_setting, tw_player_validated and tw_player_variable. An event that can't be created (nobody
// declared it) is dropped silently.
#pragma once

#include "iserverplugin.h"

// LevelInit: tw_map_start with the map's name.
void CallbackEvents_OnLevelInit(const char* mapName);
void CallbackEvents_OnClientSettingsChanged(edict_t* edict);
void CallbackEvents_OnNetworkIDValidated(const char* userName, const char* networkID);
// A null edict is reported at level 1 and fires nothing.
void CallbackEvents_OnQueryCvarValueFinished(edict_t* edict, EQueryCvarValueStatus status, const char* name,
                                             const char* value);
