// Placeholder: the host shell's diagnostics, console variables and engine surface, reduced to what the
// script engine and command language call, until the host shell lands (then this file goes).
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "icvar.h"

CachedSwitches g_cached;
Instruction ip = {"(no script)\n", nullptr, "(console)"};

IVEngineServer* engine = nullptr;
IFileSystem* filesystem = nullptr;
IPhysics* physics = nullptr;
IServerGameDLL* gamedll = nullptr;
ICvar* cvar = nullptr;
CGlobalVars* gpGlobals = nullptr;

namespace {

void Print(const char* text) {
  if (g_cached.debuglog == 1) {
    if (engine) engine->LogPrint(text);
    return;
  }
  Msg("%s", text);
}

void CacheDebug(ConVar* var, const char*) { g_cached.debug = var->GetInt(); }
void CacheDebugLog(ConVar* var, const char*) { g_cached.debuglog = var->GetInt(); }
void CacheTrace(ConVar* var, const char*) { g_cached.scripttrace = var->GetInt(); }
void CachePython(ConVar* var, const char*) { g_cached.python = var->GetInt(); }

class PluginAccessor : public IConCommandBaseAccessor {
public:
  bool RegisterConCommandBase(ConCommandBase* base) override {
    base->AddFlags(FCVAR_PLUGIN);
    base->SetNext(nullptr);
    cvar->RegisterConCommandBase(base);
    return true;
  }
};
PluginAccessor s_accessor;

NameTable<ConVar*>& VarCache() {
  static NameTable<ConVar*> cache(true);
  return cache;
}

}  // namespace

ConVar brannock_python("brannock_python", "1", 0, "Enable Python support for Tidewright", CachePython);
ConVar tidewright_debug("tidewright_debug", "0", 0, "Turns on debug strings for parsing.", CacheDebug);
ConVar tidewright_scripttrace("tidewright_scripttrace", "0", 0, "Turns on script tracing.", CacheTrace);
ConVar tidewright_debuglog("tidewright_debuglog", "0", 0,
                           "Will send debug messages to server log as well as console if this is set to 1.",
                           CacheDebugLog);
ConVar tidewright_escapechars("tidewright_escapechars", "; {}()':", 0,
                              "Lists the characters for that cause variable expansion to require quotes to prevent "
                              "parsing issues. (Leave this alone unless you know what you're doing.)");
ConVar tidewright_lasterror("tidewright_lasterror", "", 0, "The last error message returned by an Tidewright command.");
ConVar tidewright_autocreate("tidewright_autocreate", "", FCVAR_PLUGIN,
                             "Automatically create new console variables when Tidewright commands are used on "
                             "nonexistent variables.");

void DbgMsg(int level, const char* format, ...) {
  if (level > g_cached.debug) return;
  char text[2048];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof text, format, args);
  va_end(args);
  Print(text);
}

void ReportScriptError(int level, const char* format, ...) {
  if (level > g_cached.debug) return;
  char text[2048];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof text, format, args);
  va_end(args);
  char report[4096];
  snprintf(report, sizeof report, "%s  Error source %s: %s", text, ip.line ? ip.line : "(console)",
           ip.cmd ? ip.cmd : "(no script)\n");
  Print(report);
}

void SetLastErrorText(const char* format, ...) {
  char text[2048];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof text, format, args);
  va_end(args);
  tidewright_lasterror.SetValue(text);
}

void ImmediateExecuteCommand(const char* text) {
  if (g_cached.scripttrace == 2) DbgMsg(0, "[trace] %s", text);
  if (g_cached.debug >= 7) DbgMsg(7, "ImmediateExecuteCommand %d: %s\n", g_cached.eiface, text);
  engine->InsertServerCommand(text);
}

void ConnectConsole(CreateInterfaceFn factory) {
  cvar = static_cast<ICvar*>(factory(VENGINE_CVAR_INTERFACE_VERSION, nullptr));
  if (!cvar) return;
  ConVar_SetCvarInterface(cvar);
  ConCommandBaseMgr_OneTimeInit(&s_accessor);
}

ConVar* FindServerVar(const char* name) {
  if (!name) return nullptr;
  if (ConVar** hit = VarCache().FindValue(name)) return *hit;
  ConVar* var = cvar ? cvar->FindVar(name) : nullptr;
  if (var) VarCache().Insert(name, var);
  return var;
}

ConVar* CreateServerVar(const char* name, const char* defaultValue, int flags, const char* help) {
  ConVar* var = new ConVar(strdup(name), strdup(defaultValue), flags, help);
  VarCache().Insert(var->GetName(), var);
  return var;
}

ConVar* FindOrCreateServerVar(const char* name, const char* help, bool force) {
  if (ConVar* var = FindServerVar(name)) return var;
  if (force || tidewright_autocreate.GetInt() != 0) return CreateServerVar(name, "", 0, strdup(help ? help : ""));
  ReportScriptError(0, "ERROR: Variable does not exist.\n");
  SetLastErrorText("Variable does not exist.");
  return nullptr;
}

bool CanSetVar(ConVar* var) {
  if (var->IsBitSet(FCVAR_CHEAT) || strcasecmp(var->GetName(), "sv_cheats") == 0)
    return engine && engine->IsDedicatedServer();
  return true;
}

ConVar* SetVarTextWithHelp(const char* name, const char* value, const char* help, bool force) {
  ConVar* var = FindOrCreateServerVar(name, help, force);
  if (var && CanSetVar(var)) var->SetValue(value ? value : "");
  return var;
}

ConVar* SetVarText(const char* name, const char* value, bool force) {
  return SetVarTextWithHelp(name, value, "Custom server variable.", force);
}

ConVar* SetVarInt(const char* name, int value, bool force) {
  if (value == 0) return SetVarText(name, "0", false);
  ConVar* var = FindOrCreateServerVar(name, "Custom server variable.", force);
  if (var && CanSetVar(var)) var->SetValue(value);
  return var;
}

ConVar* SetVarFloat(const char* name, float value, bool force) {
  if (value == 0.0f) return SetVarText(name, "0", false);
  ConVar* var = FindOrCreateServerVar(name, "Custom server variable.", force);
  if (var && CanSetVar(var)) var->SetValue(value);
  return var;
}
