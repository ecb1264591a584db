// IVEngineServer as the stand-in gives it: the command buffer, the current command, the log, time and the
// game directory are the core's; every operation that names a player or an entity goes to the world.
#pragma once

#include "eiface.h"

class CStandIn;

// Bytes of one client command that ClientCommand formats.
constexpr int ENGINE_CLIENT_COMMAND_BYTES = 2048;

class CEngineServer final : public IVEngineServer {
public:
  explicit CEngineServer(CStandIn& server) : m_server(server) {}
  ~CEngineServer() override = default;

  void ServerCommand(const char* text) override;
  void InsertServerCommand(const char* text) override;
  void ServerExecute() override;
  int Cmd_Argc() override;
  const char* Cmd_Argv(int index) override;
  const char* Cmd_Args() override;
  void LogPrint(const char* text) override;
  void GetGameDir(char* out, int maxlen) override;
  float Time() override;
  bool IsDedicatedServer() override;
  bool IsMapValid(const char* name) override;
  int PrecacheModel(const char* name, bool preload) override;
  int PrecacheDecal(const char* name, bool preload) override;
  int GetPlayerUserId(const edict_t* edict) override;
  const char* GetPlayerNetworkIDString(const edict_t* edict) override;
  int GetEntityCount() override;
  int IndexOfEdict(const edict_t* edict) override;
  edict_t* PEntityOfEntIndex(int index) override;
  INetChannelInfo* GetPlayerNetInfo(int playerIndex) override;
  const char* GetClientConVarValue(int clientIndex, const char* name) override;
  void SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) override;
  edict_t* CreateFakeClient(const char* name) override;
  void SetView(const edict_t* client, const edict_t* viewEnt) override;
  void ClientCommand(edict_t* edict, const char* format, ...) override;
  void FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                        float fadeInSeconds) override;
  void LightStyle(int style, const char* value) override;
  bf_write* UserMessageBegin(IRecipientFilter* filter, int msgType) override;
  void MessageEnd() override;
  bool LockNetworkStringTables(bool lock) override;

private:
  CStandIn& m_server;
};
