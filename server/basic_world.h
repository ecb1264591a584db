// The basic world: the level's edicts with the world entity in slot 0 and no players, the game's and the
// engine's client and entity services of basic_services.h, and the engine operations on players and
// entities answered as an empty server answers them. A fuller world derives from it (see world.h).
#pragma once

#include <memory>
#include <vector>

#include "basic_services.h"
#include "bitbuf.h"
#include "world.h"

// Edict slots of a level: the world, the player slots and every other entity.
constexpr int WORLD_MAX_ENTITIES = 2048;
// Bytes of one user message under construction.
constexpr int WORLD_USER_MESSAGE_BYTES = 2048;

class CBasicWorld : public IServerWorld {
public:
  CBasicWorld();
  ~CBasicWorld() override;

  void Init(const WorldSetup& setup) override;
  void LevelStart(const char* mapName, int maxClients) override;
  void LevelEnd() override;
  void Frame() override {}
  void PrintStatus() override {}

  edict_t* EdictList() override { return m_edicts.data(); }
  int MaxEntities() const override { return int(m_edicts.size()); }
  int MaxClients() const override { return m_maxClients; }

  void* FindGameInterface(const char* name) override;
  void* FindEngineInterface(const char* name) override;

  bool IsMapValid(const char* name) override;
  int PrecacheModel(const char* name, bool preload) override;
  int PrecacheDecal(const char* name, bool preload) override;
  int GetPlayerUserId(const edict_t* edict) override { return -1; }
  const char* GetPlayerNetworkIDString(const edict_t* edict) override { return ""; }
  int GetEntityCount() override;
  int IndexOfEdict(const edict_t* edict) override;
  edict_t* PEntityOfEntIndex(int index) override;
  INetChannelInfo* GetPlayerNetInfo(int playerIndex) override { return nullptr; }
  const char* GetClientConVarValue(int clientIndex, const char* name) override { return ""; }
  void SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) override;
  edict_t* CreateFakeClient(const char* name) override;
  void SetView(const edict_t* client, const edict_t* viewEnt) override;
  void ClientCommand(edict_t* edict, const char* text) override;
  void FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                        float fadeInSeconds) override;
  void LightStyle(int style, const char* value) override;
  bf_write* UserMessageBegin(IRecipientFilter* filter, int msgType) override;
  void MessageEnd() override;
  bool LockNetworkStringTables(bool lock) override { return m_stringTables.Lock(lock); }

  // What the basic world recorded of the calls it doesn't act on.
  CallLog& Calls() { return m_calls; }

protected:
  // The world entity of edict 0.
  class CWorldEntity;

  WorldSetup m_setup{};
  std::vector<edict_t> m_edicts;
  int m_maxClients = 0;
  CallLog m_calls;

  std::unique_ptr<CBasicPlayerInfoManager> m_playerInfo;
  CBasicEffects m_effects{m_calls};
  CBasicGameEnts m_gameEnts;
  CBasicGameDLL m_gameDll;
  CBasicGameClients m_gameClients;
  CBasicVoiceServer m_voice;
  CBasicEngineTrace m_trace;
  CBasicEngineSound m_sound{m_calls};
  CBasicStringTables m_stringTables;
  CBasicRandomStream m_random;
  CBasicPhysics m_physics;
  CBasicPluginHelpers m_helpers{m_calls};
  std::unique_ptr<CWorldEntity> m_worldEntity;

  bf_write m_message;
  unsigned char m_messageData[WORLD_USER_MESSAGE_BYTES] = {};
  int m_messageType = -1;  // the message under construction, -1 when none
};
