// The plugin interface that the engine drives, and the helpers the engine offers to plugins.
#pragma once

#include "basetypes.h"

struct edict_t;
class KeyValues;

#define INTERFACEVERSION_ISERVERPLUGINCALLBACKS "ISERVERPLUGINCALLBACKS002"
#define INTERFACEVERSION_ISERVERPLUGINHELPERS "ISERVERPLUGINHELPERS001"

enum PLUGIN_RESULT {
  PLUGIN_CONTINUE = 0,  // the engine and the game go on with the command
  PLUGIN_OVERRIDE = 1,
  PLUGIN_STOP = 2,      // nobody else sees the command
};

enum EQueryCvarValueStatus {
  eQueryCvarValueStatus_ValueIntact = 0,
  eQueryCvarValueStatus_CvarNotFound = 1,
  eQueryCvarValueStatus_NotACvar = 2,
  eQueryCvarValueStatus_CvarProtected = 3,
};

typedef int QueryCvarCookie_t;
#define InvalidQueryCvarCookie (-1)

enum DIALOG_TYPE : int {
  DIALOG_MSG = 0,    // a line of text at the top of the screen: "title", "color", "level", "time"
  DIALOG_MENU = 1,   // an options menu: "msg", "title", buttons "1".."8" with "msg" and "command"
  DIALOG_TEXT = 2,   // a text box: "title", "msg"
  DIALOG_ENTRY = 3,  // a text entry box: "title", "msg", "command"
};

class IServerPluginCallbacks {
public:
  virtual bool Load(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory) = 0;
  virtual void Unload() = 0;
  virtual void Pause() = 0;
  virtual void UnPause() = 0;
  virtual const char* GetPluginDescription() = 0;
  virtual void LevelInit(const char* mapName) = 0;
  virtual void ServerActivate(edict_t* edictList, int edictCount, int clientMax) = 0;
  virtual void GameFrame(bool simulating) = 0;
  virtual void LevelShutdown() = 0;
  virtual void ClientActive(edict_t* edict) = 0;
  virtual void ClientDisconnect(edict_t* edict) = 0;
  virtual void ClientPutInServer(edict_t* edict, const char* playerName) = 0;
  virtual void SetCommandClient(int index) = 0;
  virtual void ClientSettingsChanged(edict_t* edict) = 0;
  virtual PLUGIN_RESULT ClientConnect(bool* allowConnect, edict_t* edict, const char* name, const char* address,
                                      char* reject, int maxRejectLen) = 0;
  virtual PLUGIN_RESULT ClientCommand(edict_t* edict) = 0;
  virtual PLUGIN_RESULT NetworkIDValidated(const char* userName, const char* networkID) = 0;
  virtual void OnQueryCvarValueFinished(QueryCvarCookie_t cookie, edict_t* edict, EQueryCvarValueStatus status,
                                        const char* name, const char* value) = 0;

protected:
  virtual ~IServerPluginCallbacks() = default;
};

class IServerPluginHelpers {
public:
  // Shows a dialog built from `data` to the client; the record stays the caller's.
  virtual void CreateMessage(edict_t* edict, DIALOG_TYPE type, KeyValues* data, IServerPluginCallbacks* plugin) = 0;
  // Runs `command` on the server as if the client had sent it.
  virtual void ClientCommand(edict_t* edict, const char* command) = 0;
  // Asks the client for a console variable; the answer comes later through OnQueryCvarValueFinished.
  virtual QueryCvarCookie_t StartQueryCvarValue(edict_t* edict, const char* name) = 0;

protected:
  virtual ~IServerPluginHelpers() = default;
};
