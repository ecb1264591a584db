// The operator's commands on scripts: load (or the script list), unload, reload, enable, disable and
// createscriptlist. Removal and disabling wait behind the script's own unload or disable block.
#pragma once

// Removes a loaded script by name (ignoring case) and says so.
void RemoveAddon(const char* name);
// The list of loaded scripts with their state, in load order.
void PrintScriptList();
