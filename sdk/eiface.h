// The engine's main interface to the game and plugins, and the three interfaces that the game library
// offers: ServerGameDLL, ServerGameClients, ServerGameEnts.
#pragma once

#include "basetypes.h"
#include "edict.h"

class bf_write;
class IRecipientFilter;
class INetChannelInfo;
class ServerClass;

#define INTERFACEVERSION_VENGINESERVER "VEngineServer021"
// The game's interfaces exist in many versions; plugins probe "%03d" forms of these prefixes.
#define INTERFACEVERSION_SERVERGAMEDLL_PREFIX "ServerGameDLL"
#define INTERFACEVERSION_SERVERGAMECLIENTS_PREFIX "ServerGameClients"
#define INTERFACEVERSION_SERVERGAMEENTS "ServerGameEnts001"

class IVEngineServer {
public:
  // The server command buffer. ServerCommand appends at the tail, InsertServerCommand inserts at the head;
  // ServerExecute runs the buffer now, inside the caller, until it is empty or a `wait` ends the run.
  virtual void ServerCommand(const char* text) = 0;
  virtual void InsertServerCommand(const char* text) = 0;
  virtual void ServerExecute() = 0;

  // The tokens of the console command that is running. Argv past the end is "", never null.
  virtual int Cmd_Argc() = 0;
  virtual const char* Cmd_Argv(int index) = 0;
  virtual const char* Cmd_Args() = 0;  // the raw text behind the command name, quotes kept; "" if none

  virtual void LogPrint(const char* text) = 0;
  virtual void GetGameDir(char* out, int maxlen) = 0;  // full path, no trailing separator
  virtual float Time() = 0;                            // strictly rising within a frame
  virtual bool IsDedicatedServer() = 0;
  virtual bool IsMapValid(const char* name) = 0;

  virtual int PrecacheModel(const char* name, bool preload = false) = 0;
  virtual int PrecacheDecal(const char* name, bool preload = false) = 0;

  virtual int GetPlayerUserId(const edict_t* edict) = 0;  // -1 when the edict is no client
  virtual const char* GetPlayerNetworkIDString(const edict_t* edict) = 0;
  virtual int GetEntityCount() = 0;
  virtual int IndexOfEdict(const edict_t* edict) = 0;
  virtual edict_t* PEntityOfEntIndex(int index) = 0;
  virtual INetChannelInfo* GetPlayerNetInfo(int playerIndex) = 0;  // player index = entity index
  virtual const char* GetClientConVarValue(int clientIndex, const char* name) = 0;  // client index = entity index
  virtual void SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) = 0;
  virtual edict_t* CreateFakeClient(const char* name) = 0;
  virtual void SetView(const edict_t* client, const edict_t* viewEnt) = 0;
  // Runs `format` on the client as if typed there. Plugins pass "%s" and the text.
  virtual void ClientCommand(edict_t* edict, const char* format, ...) = 0;
  virtual void FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                                float fadeInSeconds) = 0;
  virtual void LightStyle(int style, const char* value) = 0;

  // User messages: Begin hands out the writer of one message, End delivers it to the filter's recipients.
  virtual bf_write* UserMessageBegin(IRecipientFilter* filter, int msgType) = 0;
  virtual void MessageEnd() = 0;

  virtual bool LockNetworkStringTables(bool lock) = 0;  // the former state

protected:
  virtual ~IVEngineServer() = default;
};

class IServerGameDLL {
public:
  virtual ServerClass* GetAllServerClasses() = 0;
  virtual const char* GetGameDescription() = 0;
  // Name and size of the user message `msgType`; false when there is no such id.
  virtual bool GetUserMessageInfo(int msgType, char* name, int maxNameLength, int& size) = 0;

protected:
  virtual ~IServerGameDLL() = default;
};

class IServerGameClients {
public:
  // The client (player slot - 1, or -1 for none) for whom the game runs the next console command.
  virtual void SetCommandClient(int index) = 0;

protected:
  virtual ~IServerGameClients() = default;
};

class IServerGameEnts {
public:
  virtual edict_t* BaseEntityToEdict(CBaseEntity* entity) = 0;
  virtual CBaseEntity* EdictToBaseEntity(edict_t* edict) = 0;

protected:
  virtual ~IServerGameEnts() = default;
};
