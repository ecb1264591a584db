// The plugin's side of the console: connecting its objects to the engine, the variable cache, the
// operations that find, create and set server variables, and the system's configuration variables.
#pragma once

#include "convar.h"
#include "basetypes.h"

// Connects the accessor through "VEngineCvar002" and registers every console object of the plugin.
void ConnectConsole(CreateInterfaceFn factory);

// Keeps a console object that the plugin made for as long as the process lives, through the engine's
// shutdown included: the list that holds it is never destroyed, so the object stays the plugin's whatever
// becomes of the engine's chain.
void KeepCommand(ConCommandBase* command);

// A server variable by name (ignoring case), engine's and other plugins' included; cached after the first
// hit, so a hit never asks the engine. Null when there is none.
ConVar* FindServerVar(const char* name);
ConVar* CreateServerVar(const char* name, const char* defaultValue, int flags, const char* help);
// Finds, or makes when `force` or tidewright_autocreate says so; otherwise reports and gives null.
ConVar* FindOrCreateServerVar(const char* name, const char* help, bool force);
ConVar* SetVarText(const char* name, const char* value, bool force);
ConVar* SetVarTextWithHelp(const char* name, const char* value, const char* help, bool force);
ConVar* SetVarInt(const char* name, int value, bool force);
ConVar* SetVarFloat(const char* name, float value, bool force);
// Cheat variables, and sv_cheats, only on a dedicated server.
bool CanSetVar(ConVar* var);

// ---- steps of Load and LevelInit ----

// The game directory in tidewright_gamedir, and with "/addons/tidewright" in tidewright_addondir.
void StoreGameDirectories();
// Reads tidewright_eiface, tidewright_debug and tidewright_debuglog into their cached switches, whatever the
// callbacks did before.
void RefreshCachedSwitches();
// Queues "tw_xsetinfo tidewright_cmdline" with the server's command line; it is stored when the command
// buffer next runs.
void QueueCommandLine();
// While tidewright_protectrcon is above 0, rcon_password gets FCVAR_PROTECTED, so expansion never reads it.
void ProtectRconPassword();

// Moves the busiest commands of the system to the front of the engine's chain, in a fixed order, so that
// the engine's search by name finds them first.
void ReorderConsoleChain();
// Moves the command `name` (ignoring case) so that it stands directly behind `node`. A name that no command
// bears, or a command at the chain's head, stays where it is.
void MoveCommandAfter(const char* name, ConCommandBase* node);

// The configuration variables, named as on the console ('-' becomes '_').
extern ConVar brannock_tidewright, brannock_python, tidewright_noisy, tidewright_debug, tidewright_scripttrace,
    tidewright_debuglog, tidewright_eiface, tidewright_frametimecheck, tidewright_errorlocation,
    tidewright_defaultevents, tidewright_subdirectory, tidewright_datadirectory, tidewright_escapechars, tidewright_cflags,
    tidewright_timeformat, tidewright_currentmap, tidewright_lastgive, tidewright_deadflag,
    tidewright_cmdprefixes, tidewright_exec_cmd, tidewright_lasterror, tidewright_lasterrornum, tidewright_ver,
    tidewright_autocreate, tidewright_protectrcon, tidewright_bot_cexec, tidewright_serverdll,
    tidewright_chatevent, tidewright_maphandler, tidewright_maxmsg, tidewright_quote,
    tidewright_nextmapoverride, tidewright_addondir, tidewright_gamedir, tidewright_language;
