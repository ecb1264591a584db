// The plugin's side of the console: the one accessor that hands the plugin's objects to the engine, the
// variable cache in front of the engine's FindVar, the operations by which commands find, make and set
// server variables, and the system's configuration variables with the switches cached beside them.
#include "host/console.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <strings.h>
#include <vector>

#include "eiface.h"
#include "icvar.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "host/version.h"
#include "tier1/strtools.h"

namespace {

constexpr const char* kCustomVarHelp = "Custom server variable.";

// Hands an object to the engine: marked as the plugin's, unlinked from the plugin's list, registered.
class CPluginConVarAccessor : public IConCommandBaseAccessor {
public:
  bool RegisterConCommandBase(ConCommandBase* base) override {
    base->AddFlags(FCVAR_PLUGIN);
    base->SetNext(nullptr);
    cvar->RegisterConCommandBase(base);
    return true;
  }
};

CPluginConVarAccessor s_accessor;

// Names compare ignoring case, the hash counts case: "X" after "x" gets an entry of its own. Entries are
// never removed, so the variables they name must live as long as the process.
// Never destroyed: its entries, and the variables made at run time that only it holds, live for the
// whole process, through the engine's shutdown included.
NameTable<ConVar*>& VarCache() {
  static NameTable<ConVar*>& cache = *new NameTable<ConVar*>(true);
  return cache;
}

// Sets a found or made variable, unless it may not be set now.
ConVar* SetFoundVar(ConVar* var, const char* value) {
  if (var && CanSetVar(var)) var->SetValue(value);
  return var;
}

}  // namespace

// ---- connecting ----

void ConnectConsole(CreateInterfaceFn factory) {
  ICvar* found = factory ? static_cast<ICvar*>(factory(VENGINE_CVAR_INTERFACE_VERSION, nullptr)) : nullptr;
  if (!found) return;
  cvar = found;
  ConVar_SetCvarInterface(found);
  ConCommandBaseMgr_OneTimeInit(&s_accessor);
}

void KeepCommand(ConCommandBase* command) {
  static std::vector<ConCommandBase*>& kept = *new std::vector<ConCommandBase*>;
  kept.push_back(command);
}

// ---- finding and making variables ----

ConVar* FindServerVar(const char* name) {
  if (!name) return nullptr;
  if (ConVar** hit = VarCache().FindValue(name)) return *hit;
  ConVar* var = cvar ? cvar->FindVar(name) : nullptr;
  if (var) VarCache().Insert(name, var);
  return var;
}

ConVar* CreateServerVar(const char* name, const char* defaultValue, int flags, const char* help) {
  if (!name) return nullptr;
  char* nameCopy = CopyText(name);
  char* defaultCopy = CopyText(defaultValue ? defaultValue : "");
  ConVar* var = new (std::nothrow) ConVar(nameCopy, defaultCopy, flags, help);
  if (!var) {
    free(nameCopy);
    free(defaultCopy);
    DbgMsg(0, "Wild strange error creating ConVar: %s.\n", name);
    SetLastErrorText("Wild strange error creating ConVar");
    return nullptr;
  }
  VarCache().Insert(nameCopy, var);
  return var;
}

ConVar* FindOrCreateServerVar(const char* name, const char* help, bool force) {
  if (!name) return nullptr;
  if (ConVar* var = FindServerVar(name)) return var;
  if (force || tidewright_autocreate.GetInt() != 0) return CreateServerVar(name, "", 0, CopyText(help ? help : ""));
  ReportScriptError(0, "ERROR: Variable does not exist.\n");
  SetLastErrorText("Variable does not exist.");
  return nullptr;
}

// ---- setting variables ----

bool CanSetVar(ConVar* var) {
  if (!var) return false;
  bool guarded = var->IsBitSet(FCVAR_CHEAT) || strcasecmp(var->GetName(), "sv_cheats") == 0;
  return !guarded || (engine && engine->IsDedicatedServer());
}

ConVar* SetVarText(const char* name, const char* value, bool force) {
  return SetVarTextWithHelp(name, value, kCustomVarHelp, force);
}

ConVar* SetVarTextWithHelp(const char* name, const char* value, const char* help, bool force) {
  return SetFoundVar(FindOrCreateServerVar(name, help, force), value ? value : "");
}

// A 0 goes as the text "0", never forced: a word whose integer is 0 really becomes "0", and a missing
// variable is made for 0 only when tidewright_autocreate is on.
ConVar* SetVarInt(const char* name, int value, bool force) {
  if (value == 0) return SetVarText(name, "0", false);
  ConVar* var = FindOrCreateServerVar(name, kCustomVarHelp, force);
  if (var && CanSetVar(var)) var->SetValue(value);
  return var;
}

ConVar* SetVarFloat(const char* name, float value, bool force) {
  if (value == 0.0f) return SetVarText(name, "0", false);
  ConVar* var = FindOrCreateServerVar(name, kCustomVarHelp, force);
  if (var && CanSetVar(var)) var->SetValue(value);
  return var;
}

// ---- configuration variables ----

namespace {

// The change callback of a cached switch: the integer value, copied beside the variable.
template <int CachedSwitches::*Field>
void CacheSwitch(ConVar* var, const char*) {
  g_cached.*Field = var->GetInt();
}

}  // namespace

ConVar brannock_tidewright("brannock_tidewright", "1", FCVAR_NOTIFY | FCVAR_REPLICATED,
                           "Turns on scripts that run on every server event.", CacheSwitch<&CachedSwitches::brannock>);
ConVar brannock_python("brannock_python", "1", 0, "Enable Python support for Tidewright",
                       CacheSwitch<&CachedSwitches::python>);
ConVar tidewright_noisy("tidewright_noisy", "0", 0,
                        "Turns on script handling for noisy GameEvents (footsteps, reloads, etc).",
                        CacheSwitch<&CachedSwitches::noisy>);
ConVar tidewright_debug("tidewright_debug", "0", 0, "Turns on debug strings for parsing.",
                        CacheSwitch<&CachedSwitches::debug>);
ConVar tidewright_scripttrace("tidewright_scripttrace", "0", 0, "Turns on script tracing.",
                              CacheSwitch<&CachedSwitches::scripttrace>);
ConVar tidewright_debuglog("tidewright_debuglog", "0", 0,
                           "Will send debug messages to server log as well as console if this is set to 1.",
                           CacheSwitch<&CachedSwitches::debuglog>);
ConVar tidewright_eiface("tidewright_eiface", "1", 0,
                         "Internal function for helping Tidewright choose the right ImmediateExecuteCommand for "
                         "command ordering.",
                         CacheSwitch<&CachedSwitches::eiface>);
ConVar tidewright_frametimecheck("tidewright_frametimecheck", "0", FCVAR_PLUGIN,
                                 "If set to 1, Tidewright will output timing warnings when a GameFrame takes longer "
                                 "than 0.01 seconds inside scripts.",
                                 CacheSwitch<&CachedSwitches::frametimecheck>);
ConVar tidewright_errorlocation("tidewright_errorlocation", "1", 0,
                                "If set to 1, an error raised by a script line is followed by the line's place: "
                                "script file, line number and block.",
                                CacheSwitch<&CachedSwitches::errorlocation>);
ConVar tidewright_defaultevents("tidewright_defaultevents", "1", FCVAR_PLUGIN,
                                "If set to 1, Tidewright will try to register for the default event files on each "
                                "new map.",
                                CacheSwitch<&CachedSwitches::defaultevents>);
ConVar tidewright_subdirectory("tidewright_subdirectory", "", 0,
                               "Specifies an alternate directory for configuration files. Must be a subdirectory "
                               "of your cfg directory.");
ConVar tidewright_datadirectory("tidewright_datadirectory", "cfg", 0,
                                "Specifies an alternate directory for output files.");
ConVar tidewright_escapechars("tidewright_escapechars", "; {}()':", 0,
                              "Lists the characters for that cause variable expansion to require quotes to prevent "
                              "parsing issues. (Leave this alone unless you know what you're doing.)");
ConVar tidewright_cflags("tidewright_cflags", "902", 0, "Obsolete. tidewright_cflags");
ConVar tidewright_timeformat("tidewright_timeformat", "%Y-%m-%d %H:%M:%S (%Z)", 0,
                             "Format for time strings retrieved by tw_gettimestring.");
ConVar tidewright_currentmap("tidewright_currentmap", "", 0, "Current map.");
ConVar tidewright_lastgive("tidewright_lastgive", "", 0, "Last given entity index");
ConVar tidewright_deadflag("tidewright_deadflag", "1", 0,
                           "If set to 1, uses fast but less stable method of detecting player's dead state. If set "
                           "to 0, reverts to using Valve's method (delayed).");
ConVar tidewright_cmdprefixes("tidewright_cmdprefixes", "!", 0,
                              "A list of single character prefixes which will be passed to tw_client_command.cfg "
                              "when fired.");
ConVar tidewright_exec_cmd("tidewright_exec-cmd", "exec", 0,
                           "The name of the 'exec' command that Tidewright uses internally.");
ConVar tidewright_lasterror("tidewright_lasterror", "", 0, "The last error message returned by an Tidewright command.");
ConVar tidewright_lasterrornum("tidewright_lasterrornum", "0", 0,
                               "The last error number returned by an Tidewright command.");
ConVar tidewright_ver("tidewright_ver", TIDEWRIGHT_VERSION, FCVAR_NOTIFY | FCVAR_REPLICATED,
                      "The version number of Tidewright.");
ConVar tidewright_autocreate("tidewright_autocreate", "", FCVAR_PLUGIN,
                             "Automatically create new console variables when Tidewright commands are used on "
                             "nonexistent variables.");
ConVar tidewright_protectrcon("tidewright_protectrcon", "1", FCVAR_PLUGIN,
                              "Add FCVAR_PROTECTED flag to rcon_password so that it will resolve properly.");
ConVar tidewright_bot_cexec("tidewright_bot-cexec", "0", FCVAR_PLUGIN,
                            "If set to 1, tw_cexec* commands attempt to apply to bots. If set to 0, tw_cexec* commands "
                            "do not work on bots (old style)");
ConVar tidewright_serverdll("tidewright_serverdll", "", FCVAR_PLUGIN,
                            "Version of ServerGameDLL used by Tidewright. Do not change this unless instructed to do "
                            "so.");
ConVar tidewright_chatevent("tidewright_chatevent", "1", FCVAR_PLUGIN,
                            "If set to 1, Tidewright will trigger the tw_player_chat event, otherwise it will not.");
ConVar tidewright_maphandler("tidewright_maphandler", "1", FCVAR_PLUGIN,
                             "If set to 1, Tidewright will allow level change replacement. Must be set in "
                             "autoexec.cfg or on command-line.");
ConVar tidewright_maxmsg("tidewright_maxmsg", "28", FCVAR_PLUGIN,
                         "Maximum number of usermessages supported by the mod. Do not change unless instructed to do "
                         "so.");
ConVar tidewright_quote("tidewright_quote", "\"", FCVAR_PLUGIN, "A quotation mark. A tool, not a variable.");
ConVar tidewright_nextmapoverride("tidewright_nextmapoverride", "", FCVAR_PLUGIN,
                                  "Set this to a map name that will override the next changelevel command to use this "
                                  "map.");
ConVar tidewright_addondir("tidewright_addondir", "", FCVAR_PLUGIN,
                           "Full path to Tidewright addon directory (read-only)");
ConVar tidewright_gamedir("tidewright_gamedir", "", FCVAR_PLUGIN, "Full path to the Source mod you're playing.");
ConVar tidewright_language("tidewright_language", "english", FCVAR_PLUGIN,
                           "Name of the default language for Tidewright scripts to use. Supports the same values as "
                           "cl_language for clients.");
