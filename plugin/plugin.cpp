// The plugin object: the one place where the subsystems meet. Each callback is an ordered list of calls into
// the base pieces and the subsystems, and that order is part of the contract: Load and LevelInit name their
// steps by number, so a subsystem that arrives takes its place between them. Work of its own does not
// happen here.
#include "plugin.h"

#include "events/callback_events.h"
#include "events/declarations.h"
#include "events/intake.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/version.h"
#include "keygroups/keygroups.h"
#include "language/regcmds.h"
#include "language/wrappers.h"
#include "library/delayed.h"
#include "library/math.h"
#include "messaging/usermessages.h"
#include "packs/scriptpacks.h"
#include "python/steps.h"
#include "script/scriptfile.h"
#include "world/physics.h"

CTidewrightPlugin g_TidewrightPlugin;

CTidewrightPlugin::CTidewrightPlugin() = default;
CTidewrightPlugin::~CTidewrightPlugin() { DeleteScriptPackTree(); }

bool CTidewrightPlugin::Load(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory) {
  DbgMsg(0, "[Tidewright] Initial Loading of Brannock's Tidewright plugin...\n");   // 1
  ClearInstruction();                                                                // 2
  if (!AcquireInterfaces(interfaceFactory, gameServerFactory)) return false;         // 3-5
  ConnectConsole(interfaceFactory);                                                  // 6
  StoreGameDirectories();                                                            // 8
  RefreshCachedSwitches();                                                           // 9
  Declarations_OnLoad(this);                                                         // 10-11
  Messaging_OnLoad(this);                                                            // dialogs name it
  KeyGroups_OnLoad();                                                                // 12
  Wrappers_OnLoad();                                                                 // 13-15
  QueueCommandLine();                                                                // 16
  ProtectRconPassword();                                                             // 17
  FreeClassNameTable();                                                              // 18
  Python_OnLoad();                                                                   // 19
  DbgMsg(0, "[Tidewright]   Automatically loading tw_corelib.txt...\n");             // 20
  Math_OnLoad();                                                                     // 21
  LoadAddonFile("corelib");                                                          // 22
  DbgMsg(0, "[Tidewright]   Done loading corelib.\n");                               // 23
  DbgMsg(0, "[Tidewright] Brannock's Tidewright plugin loaded.\n");
  return true;
}

// The events the plugin holds go back to the manager and the physics handler leaves the environment;
// nothing else is released.
void CTidewrightPlugin::Unload() {
  Declarations_StopListening();
  ReleaseEvents();
  ReleasePendingEvent();
  Physics_OnUnload();
}

void CTidewrightPlugin::Pause() {}
void CTidewrightPlugin::UnPause() {}

const char* CTidewrightPlugin::GetPluginDescription() { return kPluginDescription; }

void CTidewrightPlugin::LevelInit(const char* mapName) {
  const char* map = mapName ? mapName : "";
  RefreshCachedSwitches();                                                           // 1
  g_levelFlag = 1;                                                                   // 1
  DbgMsg(0, "[Tidewright] Map Loading Brannock's Tidewright plugin...\n");          // 2
  Wrappers_OnLevelInit();                                                            // 3-4
  tidewright_currentmap.SetValue(map);                                               // 5
  Declarations_OnLevelInit();                                                        // 6
  if (g_cached.brannock != 0) {                                                      // 7
    Packs_OnLevelInit();
    Delayed_OnLevelInit();
  }
  CallbackEvents_OnLevelInit(map);                                                   // 8
  RebuildClassNameTable();                                                           // 9
  if (g_cached.eiface == 1) ReorderConsoleChain();                                   // 10
  Math_OnLevelInit();                                                                // 11
  Python_OnLevelInit();                                                              // 12
  DbgMsg(0, "[Tidewright] Loaded successfully.\n");                                  // 13
}

void CTidewrightPlugin::ServerActivate(edict_t*, int, int clientMax) { MaxClients = clientMax; }

// Step 1 starts the frame's timer and step 3 reports a long frame; the frame's work, while
// brannock_tidewright is exactly 1, is step 2 between them: the delayed commands, then Python's tick. The
// engine's simulation flag isn't looked at: the work runs on idle frames too.
void CTidewrightPlugin::GameFrame(bool) {
  FrameTimer timer;                                                                  // 1
  if (g_cached.brannock == 1) {                                                      // 2
    Delayed_OnFrame();
    Python_OnFrame();
  }
  timer.Report();                                                                    // 3
}

void CTidewrightPlugin::LevelShutdown() { Declarations_StopListening(); }

void CTidewrightPlugin::ClientActive(edict_t*) {}
void CTidewrightPlugin::ClientDisconnect(edict_t*) {}
void CTidewrightPlugin::ClientPutInServer(edict_t*, const char*) {}
void CTidewrightPlugin::SetCommandClient(int index) { g_commandIndex = index; }

void CTidewrightPlugin::ClientSettingsChanged(edict_t* edict) { CallbackEvents_OnClientSettingsChanged(edict); }

PLUGIN_RESULT CTidewrightPlugin::ClientConnect(bool*, edict_t*, const char*, const char*, char*, int) {
  return PLUGIN_CONTINUE;
}

PLUGIN_RESULT CTidewrightPlugin::ClientCommand(edict_t* edict) { return RegCmds_OnClientCommand(edict); }

PLUGIN_RESULT CTidewrightPlugin::NetworkIDValidated(const char* userName, const char* networkID) {
  CallbackEvents_OnNetworkIDValidated(userName, networkID);
  return PLUGIN_CONTINUE;
}

void CTidewrightPlugin::OnQueryCvarValueFinished(QueryCvarCookie_t, edict_t* edict, EQueryCvarValueStatus status,
                                                 const char* name, const char* value) {
  CallbackEvents_OnQueryCvarValueFinished(edict, status, name, value);
}

void CTidewrightPlugin::FireGameEvent(IGameEvent* event) { Intake_OnGameEvent(event); }
