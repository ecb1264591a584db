// The plugin object that the engine talks to. It sits above every subsystem: its callbacks are defined in
// plugin.cpp as ordered lists of calls into them, and nothing below includes this header.
#pragma once

#include "eiface.h"
#include "host/server_state.h"
#include "igameevents.h"
#include "iserverplugin.h"

class CTidewrightPlugin : public IServerPluginCallbacks, public IGameEventListener2 {
public:
  CTidewrightPlugin();
  ~CTidewrightPlugin() override;

  bool Load(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory) override;
  void Unload() override;
  void Pause() override;
  void UnPause() override;
  const char* GetPluginDescription() override;
  void LevelInit(const char* mapName) override;
  void ServerActivate(edict_t* edictList, int edictCount, int clientMax) override;
  void GameFrame(bool simulating) override;
  void LevelShutdown() override;
  void ClientActive(edict_t* edict) override;
  void ClientDisconnect(edict_t* edict) override;
  void ClientPutInServer(edict_t* edict, const char* playerName) override;
  void SetCommandClient(int index) override;
  void ClientSettingsChanged(edict_t* edict) override;
  PLUGIN_RESULT ClientConnect(bool* allowConnect, edict_t* edict, const char* name, const char* address,
                              char* reject, int maxRejectLen) override;
  PLUGIN_RESULT ClientCommand(edict_t* edict) override;
  PLUGIN_RESULT NetworkIDValidated(const char* userName, const char* networkID) override;
  void OnQueryCvarValueFinished(QueryCvarCookie_t cookie, edict_t* edict, EQueryCvarValueStatus status,
                                const char* name, const char* value) override;

  void FireGameEvent(IGameEvent* event) override;

  // The client index stored by SetCommandClient (kept in g_commandIndex, where the subsystems read it).
  int GetCommandIndex() const { return g_commandIndex; }
};

// The one plugin object, made during static initialisation.
extern CTidewrightPlugin g_TidewrightPlugin;
