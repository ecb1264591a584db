// The basic world: edicts with the world entity and no players, and the interfaces of basic_services.h.
#include "basic_world.h"

#include <cstring>
#include <string>

#include "tier0.h"

// The world entity: what the engine and plugins read of edict 0.
class CBasicWorld::CWorldEntity final : public IServerUnknown, public IServerNetworkable {
public:
  explicit CWorldEntity(edict_t* edict) : m_edict(edict) {}
  void SetRefEHandle(const CBaseHandle& handle) override { m_handle = handle; }
  const CBaseHandle& GetRefEHandle() const override { return m_handle; }
  IServerNetworkable* GetNetworkable() override { return this; }
  CBaseEntity* GetBaseEntity() override { return nullptr; }
  IHandleEntity* GetEntityHandle() override { return this; }
  ServerClass* GetServerClass() override { return nullptr; }
  edict_t* GetEdict() const override { return m_edict; }
  const char* GetClassName() const override { return "worldspawn"; }
  void Release() override {}

private:
  edict_t* m_edict;
  CBaseHandle m_handle{0, 0};
};

__attribute__((weak)) IServerWorld* CreateServerWorld() { return new CBasicWorld(); }

CBasicWorld::CBasicWorld() { m_message.StartWriting(m_messageData, sizeof m_messageData); }

CBasicWorld::~CBasicWorld() = default;

void CBasicWorld::Init(const WorldSetup& setup) {
  m_setup = setup;
  m_playerInfo = std::make_unique<CBasicPlayerInfoManager>(setup.globals);
}

void CBasicWorld::LevelStart(const char* mapName, int maxClients) {
  m_maxClients = maxClients;
  m_edicts.assign(WORLD_MAX_ENTITIES, edict_t{});
  edict_t& world = m_edicts[0];
  m_worldEntity = std::make_unique<CWorldEntity>(&world);
  world.ClearFree();
  world.m_pNetworkable = m_worldEntity.get();
  world.m_pUnk = m_worldEntity.get();
}

void CBasicWorld::LevelEnd() {
  for (edict_t& e : m_edicts) e = edict_t{};
  m_worldEntity.reset();
}

void* CBasicWorld::FindGameInterface(const char* name) {
  struct Entry {
    const char* name;
    void* object;
  };
  const Entry entries[] = {
      {INTERFACEVERSION_PLAYERINFOMANAGER, static_cast<IPlayerInfoManager*>(m_playerInfo.get())},
      {IEFFECTS_INTERFACE_VERSION, static_cast<IEffects*>(&m_effects)},
      {INTERFACEVERSION_SERVERGAMEENTS, static_cast<IServerGameEnts*>(&m_gameEnts)},
      {"ServerGameDLL005", static_cast<IServerGameDLL*>(&m_gameDll)},
      {"ServerGameClients003", static_cast<IServerGameClients*>(&m_gameClients)},
  };
  for (const Entry& e : entries)
    if (strcmp(e.name, name) == 0) return e.object;
  return nullptr;
}

void* CBasicWorld::FindEngineInterface(const char* name) {
  struct Entry {
    const char* name;
    void* object;
  };
  const Entry entries[] = {
      {INTERFACEVERSION_VOICESERVER, static_cast<IVoiceServer*>(&m_voice)},
      {INTERFACEVERSION_ISERVERPLUGINHELPERS, static_cast<IServerPluginHelpers*>(&m_helpers)},
      {INTERFACEVERSION_ENGINETRACE_SERVER, static_cast<IEngineTrace*>(&m_trace)},
      {IENGINESOUND_SERVER_INTERFACE_VERSION, static_cast<IEngineSound*>(&m_sound)},
      {INTERFACENAME_NETWORKSTRINGTABLESERVER, static_cast<INetworkStringTableContainer*>(&m_stringTables)},
      {VENGINE_SERVER_RANDOM_INTERFACE_VERSION, static_cast<IUniformRandomStream*>(&m_random)},
      {VPHYSICS_INTERFACE_VERSION, static_cast<IPhysics*>(&m_physics)},
  };
  for (const Entry& e : entries)
    if (strcmp(e.name, name) == 0) return e.object;
  return nullptr;
}

bool CBasicWorld::IsMapValid(const char* name) {
  return name && name[0] && !strchr(name, '/') && !strchr(name, '\\');
}

int CBasicWorld::PrecacheModel(const char* name, bool) {
  INetworkStringTable* table = m_stringTables.FindTable("modelprecache");
  int index = table->AddString(name, -1, nullptr);
  return index == INVALID_STRING_INDEX ? 0 : index;
}

int CBasicWorld::PrecacheDecal(const char* name, bool) {
  INetworkStringTable* table = m_stringTables.FindTable("decalprecache");
  int index = table->AddString(name, -1, nullptr);
  return index == INVALID_STRING_INDEX ? 0 : index;
}

int CBasicWorld::GetEntityCount() {
  int count = 0;
  for (const edict_t& e : m_edicts)
    if (!e.IsFree()) ++count;
  return count;
}

int CBasicWorld::IndexOfEdict(const edict_t* edict) {
  if (m_edicts.empty() || edict < m_edicts.data() || edict >= m_edicts.data() + m_edicts.size()) return -1;
  return int(edict - m_edicts.data());
}

edict_t* CBasicWorld::PEntityOfEntIndex(int index) {
  if (index < 0 || index >= int(m_edicts.size()) || m_edicts[size_t(index)].IsFree()) return nullptr;
  return &m_edicts[size_t(index)];
}

void CBasicWorld::SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) {
  m_calls.Add("SetFakeClientConVarValue", std::string(name ? name : "") + " " + (value ? value : ""));
}

edict_t* CBasicWorld::CreateFakeClient(const char* name) {
  m_calls.Add("CreateFakeClient", name ? name : "");
  return nullptr;
}

void CBasicWorld::SetView(const edict_t* client, const edict_t* viewEnt) {
  m_calls.Add("SetView", std::to_string(IndexOfEdict(client)) + " " + std::to_string(IndexOfEdict(viewEnt)));
}

void CBasicWorld::ClientCommand(edict_t* edict, const char* text) {
  m_calls.Add("ClientCommand", std::to_string(IndexOfEdict(edict)) + " " + (text ? text : ""));
}

void CBasicWorld::FadeClientVolume(const edict_t* edict, float fadePercent, float, float, float) {
  m_calls.Add("FadeClientVolume", std::to_string(IndexOfEdict(edict)) + " " + std::to_string(fadePercent));
}

void CBasicWorld::LightStyle(int style, const char* value) {
  m_calls.Add("LightStyle", std::to_string(style) + " " + (value ? value : ""));
}

bf_write* CBasicWorld::UserMessageBegin(IRecipientFilter* filter, int msgType) {
  if (m_messageType >= 0) Warning("UserMessageBegin: message %d was never ended; dropped\n", m_messageType);
  m_messageType = msgType;
  m_message.StartWriting(m_messageData, sizeof m_messageData);
  return &m_message;
}

void CBasicWorld::MessageEnd() {
  if (m_messageType < 0) {
    Warning("MessageEnd without UserMessageBegin; ignored\n");
    return;
  }
  m_calls.Add("UserMessage", std::to_string(m_messageType) + " bytes " + std::to_string(m_message.GetNumBytesWritten()) +
                                 (m_message.IsOverflowed() ? " overflowed" : ""));
  m_messageType = -1;
}
