// Script packs: folders of configuration files under cfg that answer game events by file name. The
// registry is one KeyValues tree "ScriptPacks" of values, pack name -> 1 (on) or 0 (off), in order of
// first registration; it lives in memory only and exists from the first registration on.
#pragma once

// LevelInit, while brannock_tidewright is not 0: the pseudo event "server", each enabled pack's server.cfg
// followed by the scripts' server sections.
void Packs_OnLevelInit();

// True when an enabled pack has a file for the event.
bool RegisteredScriptExists(const char* event);
// Appends the exec commands of the packs' files for the event, then starts the scripts' event sections.
void ExecAllRegistered(const char* event);
// The list of packs with their state. A userid of 1 or more names a player, who is told nothing: the list
// goes to the server console only.
void ListScriptPacks(int userid);
// Deletes the registry tree; the next registration makes a new one.
void DeleteScriptPackTree();
