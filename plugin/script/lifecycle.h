// Loading and removing scripts from the console: tw_load (or the script list), tw_unload with the script's
// unload block run first, and the internal tw__unload that removes the script once that block has drained.
#pragma once

// Removes a loaded script by name (ignoring case) and says so.
void RemoveAddon(const char* name);
// The list of loaded scripts with their state, in load order.
void PrintScriptList();
