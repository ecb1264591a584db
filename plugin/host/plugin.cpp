// The plugin object that the engine drives: the order in which the system comes up at Load and at each
// LevelInit, the per-frame entry, the callbacks that become the plugin's own game events, and the
// process-wide state they own (MaxClients, the level flag, the user tree, the class name table).
#include "host/plugin.h"

#include <cstdio>
#include <cstring>

#include "KeyValues.h"
#include "convar.h"
#include "edict.h"
#include "events/declarations.h"
#include "events/intake.h"
#include "events/plugin_events.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "iplayerinfo.h"
#include "language/wrappers.h"
#include "library/delayed.h"
#include "library/math.h"
#include "packs/scriptpacks.h"
#include "script/scriptfile.h"
#include "vstdlib.h"

CTidewrightPlugin g_TidewrightPlugin;
int MaxClients = 0;
unsigned char g_levelFlag = 0;
KeyValues* g_userTree = nullptr;
char (*g_classNames)[kClassNameSlotSize] = nullptr;
int g_classNameCount = 0;

namespace {

constexpr int kMaxPath = 2048;
constexpr int kMaxCommandLine = 2048;
// A frame that spends longer than this in the plugin is reported when tidewright_frametimecheck is on.
constexpr float kLongFrameSeconds = 0.01f;
constexpr const char* kPluginEventsFile = "addons/brannock_tidewright.res";
constexpr const char* kAddonSubdirectory = "/addons/tidewright";

const char* TextOrEmpty(const char* text) { return text ? text : ""; }

const char* QueryStatusText(EQueryCvarValueStatus status) {
  switch (status) {
    case eQueryCvarValueStatus_ValueIntact: return "success";
    case eQueryCvarValueStatus_CvarNotFound: return "not found";
    case eQueryCvarValueStatus_NotACvar: return "not variable";
    case eQueryCvarValueStatus_CvarProtected: return "protected";
  }
  return "unknown";
}

// ---- steps of Load ----

void FetchGlobalVars() {
  if (playerinfomanager) gpGlobals = playerinfomanager->GetGlobalVars();
}

void StoreDirectories() {
  char gameDir[kMaxPath] = "";
  engine->GetGameDir(gameDir, kMaxPath - 1);
  char addonDir[kMaxPath];
  snprintf(addonDir, sizeof addonDir, "%s%s", gameDir, kAddonSubdirectory);
  tidewright_addondir.SetValue(addonDir);
  tidewright_gamedir.SetValue(gameDir);
}

// Load and LevelInit read these three straight from their variables, whatever the callbacks did before.
void RefreshCachedSwitches() {
  g_cached.eiface = tidewright_eiface.GetInt();
  g_cached.debug = tidewright_debug.GetInt();
  g_cached.debuglog = tidewright_debuglog.GetInt();
}

// Declared to the engine unconditionally, so that the plugin's own events can always be created.
void DeclarePluginEvents() { gameeventmanager->LoadEventsFromFile(kPluginEventsFile); }

// Registering the default files is what makes the plugin a listener; LevelShutdown dropped every listener.
void ListenToDefaultEvents() {
  if (tidewright_defaultevents.GetInt() != 0) RegisterDefaultEvents();
}

void CreateUserTree() {
  if (g_userTree) return;
  g_userTree = new KeyValues("UserKeys");
  g_userTree->FindKey("UserGroups", true);
  g_userTree->FindKey("Ungrouped", true);
}

// The server's command line, stored in tidewright_cmdline when the command buffer next runs. It travels as
// one quoted argument, so its own double quotes become single ones and line ends become blanks; a command
// line too long for the buffer is cut, and the command keeps its closing quote and line end.
void QueueCommandLine() {
  static constexpr char kPrefix[] = "tw_xsetinfo tidewright_cmdline \"";
  static constexpr char kSuffix[] = "\"\n";
  char line[kMaxCommandLine - (sizeof kPrefix - 1) - (sizeof kSuffix - 1)];
  snprintf(line, sizeof line, "%s", TextOrEmpty(CommandLine()->GetCmdLine()));
  for (char* c = line; *c; ++c) {
    if (*c == '"') *c = '\'';
    if (*c == '\n' || *c == '\r') *c = ' ';
  }
  char command[kMaxCommandLine];
  snprintf(command, sizeof command, "%s%s%s", kPrefix, line, kSuffix);
  engine->ServerCommand(command);
}

// A protected variable is never expanded into a script line.
void ProtectRconPassword() {
  if (tidewright_protectrcon.GetInt() <= 0) return;
  if (ConVar* rcon = FindServerVar("rcon_password")) rcon->AddFlags(FCVAR_PROTECTED);
}

void FreeClassNameTable() {
  delete[] g_classNames;
  g_classNames = nullptr;
  g_classNameCount = 0;
}

// ---- steps of LevelInit ----

// The pseudo event "server": each enabled script pack's server.cfg, then the scripts' server sections. It
// has no event of its own, so its blocks see whatever event is current. Delayed commands of the last level
// are dropped with it.
void RunServerEvent() {
  if (g_cached.brannock == 0) return;
  DbgMsg(1, "[Tidewright] Executing all registered server.cfgs.\n");
  ExecAllRegistered("server");
  Delayed_OnLevelInit();
}

void FireMapStart(const char* mapName) {
  FirePluginEvent("tw_map_start", [&](IGameEvent* event) { event->SetString("mapname", mapName); });
}

// ---- GameFrame ----

// The work of a frame, run only while the master switch is exactly 1.
void RunFrameWork() { Delayed_OnFrame(); }

void ReportLongFrame(float start, float end) {
  float elapsed = end - start;
  if (elapsed > kLongFrameSeconds) DbgMsg(0, "[Tidewright] Long frame: %f seconds\n", double(elapsed));
}

}  // namespace

// ---- the class name table ----

void RebuildClassNameTable() {
  FreeClassNameTable();
  int count = gpGlobals && gpGlobals->maxEntities > 0 ? gpGlobals->maxEntities : 0;
  if (count == 0) return;
  g_classNames = new char[count][kClassNameSlotSize];
  g_classNameCount = count;
  for (int i = 0; i < count; ++i) {
    edict_t* edict = engine ? engine->PEntityOfEntIndex(i) : nullptr;
    bool live = edict && !edict->IsFree() && edict->GetUnknown() && edict->GetNetworkable();
    const char* name = live ? edict->GetNetworkable()->GetClassName() : nullptr;
    snprintf(g_classNames[i], kClassNameSlotSize, "%s", TextOrEmpty(name));
  }
}

// ---- the plugin object ----

CTidewrightPlugin::CTidewrightPlugin() = default;
CTidewrightPlugin::~CTidewrightPlugin() { DeleteScriptPackTree(); }

bool CTidewrightPlugin::Load(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory) {
  DbgMsg(0, "[Tidewright] Initial Loading of Brannock's Tidewright plugin...\n");
  ClearInstruction();
  if (!AcquireInterfaces(interfaceFactory, gameServerFactory)) return false;
  FetchGlobalVars();
  ConnectConsole(interfaceFactory);
  StoreDirectories();
  RefreshCachedSwitches();
  DeclarePluginEvents();
  ListenToDefaultEvents();
  CreateUserTree();
  ClearSayWrappers();
  MakeCommandWrappers();
  LookUpCheatsVar();
  QueueCommandLine();
  ProtectRconPassword();
  FreeClassNameTable();
  DbgMsg(0, "[Tidewright]   Automatically loading tw_corelib.txt...\n");
  Math_OnLoad();
  LoadAddonFile("corelib");
  DbgMsg(0, "[Tidewright]   Done loading corelib.\n");
  DbgMsg(0, "[Tidewright] Brannock's Tidewright plugin loaded.\n");
  return true;
}

// The events the plugin holds go back to the manager; nothing else is released.
void CTidewrightPlugin::Unload() {
  if (!gameeventmanager) return;
  gameeventmanager->RemoveListener(this);
  ReleaseEvents();
  ReleasePendingEvent();
}

void CTidewrightPlugin::Pause() {}
void CTidewrightPlugin::UnPause() {}

const char* CTidewrightPlugin::GetPluginDescription() {
  return "Brannock's Tidewright, Version:" TIDEWRIGHT_VERSION;
}

void CTidewrightPlugin::LevelInit(const char* mapName) {
  RefreshCachedSwitches();
  g_levelFlag = 1;
  DbgMsg(0, "[Tidewright] Map Loading Brannock's Tidewright plugin...\n");
  WrapSayCommands();
  WrapChangeLevel();
  tidewright_currentmap.SetValue(TextOrEmpty(mapName));
  ListenToDefaultEvents();
  RunServerEvent();
  FireMapStart(TextOrEmpty(mapName));
  RebuildClassNameTable();
  if (g_cached.eiface == 1) ReorderConsoleChain();
  Math_OnLevelInit();
  DbgMsg(0, "[Tidewright] Loaded successfully.\n");
}

void CTidewrightPlugin::ServerActivate(edict_t*, int, int clientMax) { MaxClients = clientMax; }

// The engine's simulation flag isn't looked at: the frame's work runs on idle frames too.
void CTidewrightPlugin::GameFrame(bool) {
  const bool timed = g_cached.frametimecheck != 0 && engine;
  const float start = timed ? engine->Time() : 0.0f;
  if (g_cached.brannock == 1) RunFrameWork();
  if (timed) ReportLongFrame(start, engine->Time());
}

void CTidewrightPlugin::LevelShutdown() {
  if (gameeventmanager) gameeventmanager->RemoveListener(this);
}

void CTidewrightPlugin::ClientActive(edict_t*) {}
void CTidewrightPlugin::ClientDisconnect(edict_t*) {}
void CTidewrightPlugin::ClientPutInServer(edict_t*, const char*) {}
void CTidewrightPlugin::SetCommandClient(int index) { m_commandIndex = index; }

void CTidewrightPlugin::ClientSettingsChanged(edict_t* edict) {
  FirePluginEvent("tw_player_setting",
                  [&](IGameEvent* event) { event->SetInt("userid", engine->GetPlayerUserId(edict)); });
}

PLUGIN_RESULT CTidewrightPlugin::ClientConnect(bool*, edict_t*, const char*, const char*, char*, int) {
  return PLUGIN_CONTINUE;
}

PLUGIN_RESULT CTidewrightPlugin::NetworkIDValidated(const char* userName, const char* networkID) {
  FirePluginEvent("tw_player_validated", [&](IGameEvent* event) {
    event->SetString("name", TextOrEmpty(userName));
    event->SetString("networkid", TextOrEmpty(networkID));
  });
  return PLUGIN_CONTINUE;
}

void CTidewrightPlugin::OnQueryCvarValueFinished(QueryCvarCookie_t, edict_t* edict, EQueryCvarValueStatus status,
                                                 const char* name, const char* value) {
  if (!edict) {
    DbgMsg(1, "TW: OnQueryCvarValueFinished called but values did not exist.\n");
    return;
  }
  FirePluginEvent("tw_player_variable", [&](IGameEvent* event) {
    event->SetInt("userid", engine->GetPlayerUserId(edict));
    event->SetString("status", QueryStatusText(status));
    event->SetString("variable", TextOrEmpty(name));
    event->SetString("value", TextOrEmpty(value));
  });
}

