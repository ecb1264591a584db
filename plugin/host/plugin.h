// The plugin object that the engine talks to: its callbacks, Load and LevelInit with their step order,
// GameFrame, and the process-wide state they own.
#pragma once

#include "eiface.h"
#include "igameevents.h"
#include "iserverplugin.h"

#define TIDEWRIGHT_VERSION "2.0.0.248"

class KeyValues;

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

  // The client index stored by SetCommandClient; read by the command wrappers and the say path.
  int GetCommandIndex() const { return m_commandIndex; }

private:
  int m_commandIndex = 0;
};

// The one plugin object, made during static initialisation.
extern CTidewrightPlugin g_TidewrightPlugin;

// Player slots of the level, from ServerActivate.
extern int MaxClients;
// 0 until the first LevelInit, then 1 for the rest of the process.
extern unsigned char g_levelFlag;

// The user tree of keygroups: "UserKeys" with "UserGroups" and "Ungrouped", made by the first Load and kept
// for the process.
extern KeyValues* g_userTree;

// The class name of each edict at the last look: slot i holds the class name of edict i, or "".
// g_classNameCount slots (maxEntities of the level); rebuilt by each LevelInit.
inline constexpr int kClassNameSlotSize = 2048;
extern char (*g_classNames)[kClassNameSlotSize];
extern int g_classNameCount;
void RebuildClassNameTable();
