// The world's frame of life: levels, edicts and the entities in them, entity inputs, the interfaces the
// world hands out, and the frames that deliver what waits (client answers, queries, delayed inputs).
#include "world/sim_world.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "standin.h"
#include "tier0.h"
#include "vstdlib.h"

IServerWorld* CreateServerWorld() { return new CSimWorld(); }

CSimWorld& SimWorld() { return static_cast<CSimWorld&>(g_standIn->World()); }

CSimWorld::CSimWorld() { m_message.StartWriting(m_messageData, sizeof m_messageData); }

CSimWorld::~CSimWorld() { LevelEnd(); }

void CSimWorld::Init(const WorldSetup& setup) {
  m_setup = setup;
  RegisterGameCommands(*setup.console);
  RegisterSimCommands(*setup.console);
  RegisterMessagingSimCommands(*setup.console);
}

double CSimWorld::Now() const { return g_standIn ? g_standIn->Clock().Now() : 0.0; }

long long CSimWorld::FramesFor(float seconds) const {
  float tick = m_setup.globals && m_setup.globals->interval_per_tick > 0 ? m_setup.globals->interval_per_tick : 0.015f;
  double frames = std::ceil(double(seconds) / double(tick));
  return frames < 0 ? 0 : frames > 1e9 ? (long long)1e9 : (long long)frames;
}

// ---- levels ----

// Clients stay connected over a level change, as they do on a real server: each gets a new player entity in
// its slot and enters the new level on its first frame. Clients whose slot the new level lacks are dropped.
void CSimWorld::LevelStart(const char* mapName, int maxClients) {
  LevelEnd();
  DropClientsAbove(maxClients);
  m_maxClients = maxClients;
  m_edicts.assign(WORLD_MAX_ENTITIES, edict_t{});
  m_entities.resize(WORLD_MAX_ENTITIES);
  m_clients.resize(size_t(maxClients) + 1);
  m_highWater = 0;
  m_stringTables.Reset(mapName);
  m_voice.Reset();
  m_physics.Environment().Reset();
  AttachEntity(0, std::make_unique<CEntity>(&m_edicts[0], *FindEntityType("worldspawn")));
  for (CClient* client : Clients()) {
    MakePlayerEntity(*client);
    m_reentering.push_back(client->userid);
  }
  m_stringTables.Lock(true);
}

void CSimWorld::LevelEnd() {
  // The level's entities go, the players' weapons with them: a player comes back into the next level
  // holding nothing until the game gives it something.
  for (CClient* client : Clients()) {
    client->entity = nullptr;
    client->weapon.clear();
  }
  for (size_t i = 0; i < m_entities.size(); ++i)
    if (m_entities[i]) FreeEdict(int(i));
  m_inputs.clear();
  m_reentering.clear();
  m_messageType = -1;
}

void CSimWorld::Frame() {
  ++m_frame;
  ReenterClients();
  RunPendingClientText();
  m_helpers.AnswerQueries(m_frame);
  RunPendingInputs();
  m_physics.Environment().Frame(m_setup.globals ? m_setup.globals->interval_per_tick : 0.0f);
}

bool CSimWorld::Busy() const {
  return !m_clientText.empty() || !m_reentering.empty() || m_helpers.QueriesPending();
}

// ---- edicts and entities ----

edict_t* CSimWorld::AllocEdict(int index) {
  edict_t& e = m_edicts[size_t(index)];
  e.ClearFree();
  e.m_fStateFlags &= ~FL_EDICT_CHANGED;
  ++e.m_NetworkSerialNumber;
  m_highWater = std::max(m_highWater, index + 1);
  return &e;
}

void CSimWorld::AttachEntity(int index, std::unique_ptr<CEntity> entity) {
  edict_t* e = AllocEdict(index);
  entity->SetRefEHandle(CBaseHandle(index, e->m_NetworkSerialNumber));
  e->m_pNetworkable = entity.get();
  e->m_pUnk = entity.get();
  m_entities[size_t(index)] = std::move(entity);
}

void CSimWorld::FreeEdict(int index) {
  std::unique_ptr<CEntity>& slot = m_entities[size_t(index)];
  if (slot && slot->Physics()) m_physics.Environment().Remove(slot->Physics());
  edict_t& e = m_edicts[size_t(index)];
  e.m_pNetworkable = nullptr;
  e.m_pUnk = nullptr;
  e.SetFree();
  slot.reset();
}

CEntity* CSimWorld::CreateEntity(const EntityType& type, const Vector& origin) {
  int index = m_maxClients + 1;
  while (index < int(m_edicts.size()) && !m_edicts[size_t(index)].IsFree()) ++index;
  if (index >= int(m_edicts.size())) {
    Warning("No free edict for %s; nothing made\n", type.name);
    return nullptr;
  }
  auto owned = std::make_unique<CEntity>(&m_edicts[size_t(index)], type);
  CEntity* entity = owned.get();
  AttachEntity(index, std::move(owned));
  entity->fields.origin = origin;
  if (type.model[0]) entity->SetModel(PrecacheModel(type.model, false));
  if (type.physics) {
    entity->SetPhysics(std::make_unique<CPhysicsObject>(*entity, m_physics.Environment()));
    m_physics.Environment().Add(entity->Physics());
  }
  return entity;
}

void CSimWorld::RemoveEntity(CEntity& entity) {
  int index = entity.Index();
  if (index <= m_maxClients) return;  // the world and the players aren't removed this way
  FreeEdict(index);
}

CEntity* CSimWorld::EntityAt(int index) const {
  if (index < 0 || index >= int(m_entities.size())) return nullptr;
  return m_entities[size_t(index)].get();
}

CEntity* CSimWorld::EntityOfHandle(uint32_t handle) const {
  if (handle == CBaseHandle::kInvalid) return nullptr;
  CEntity* entity = EntityAt(int(handle & ((1u << CBaseHandle::kIndexBits) - 1)));
  return entity && entity->GetRefEHandle().ToInt() == handle ? entity : nullptr;
}

std::vector<CEntity*> CSimWorld::FindTargets(const char* target) const {
  std::vector<CEntity*> found;
  if (!target || !target[0]) return found;
  bool digits = strspn(target, "0123456789") == strlen(target);
  if (digits) {
    if (CEntity* e = EntityAt(atoi(target))) found.push_back(e);
    return found;
  }
  for (int i = 0; i < m_highWater; ++i) {
    CEntity* e = m_entities[size_t(i)].get();
    if (e && (strcasecmp(e->TargetName().c_str(), target) == 0 || strcasecmp(e->GetClassName(), target) == 0))
      found.push_back(e);
  }
  return found;
}

edict_t* CSimWorld::PEntityOfEntIndex(int index) {
  if (index < 0 || index >= int(m_edicts.size()) || m_edicts[size_t(index)].IsFree()) return nullptr;
  return &m_edicts[size_t(index)];
}

int CSimWorld::IndexOfEdict(const edict_t* edict) {
  if (m_edicts.empty() || edict < m_edicts.data() || edict >= m_edicts.data() + m_edicts.size()) return -1;
  return int(edict - m_edicts.data());
}

// ---- inputs ----

namespace {

std::string InputTarget(CEntity& e) {
  std::string text = std::to_string(e.Index()) + " (" + e.GetClassName();
  if (!e.TargetName().empty()) text += " \"" + e.TargetName() + "\"";
  return text + ")";
}

}  // namespace

void CSimWorld::FireInput(CEntity& entity, const char* action, const char* value) {
  Announce("input", std::string(action) + " " + EscapedText(value) + " to " + InputTarget(entity));
  int amount = atoi(value);
  CClient* player = ClientBySlot(entity.Index());
  if (strcasecmp(action, "Kill") == 0 || strcasecmp(action, "KillHierarchy") == 0) {
    if (!player) RemoveEntity(entity);
  } else if (strcasecmp(action, "SetHealth") == 0) {
    entity.fields.health = amount;
    if (player && amount <= 0) Kill(*player, nullptr, "world");
  } else if (strcasecmp(action, "AddHealth") == 0) {
    entity.fields.health += amount;
  } else if (strcasecmp(action, "RemoveHealth") == 0) {
    if (player) Hurt(*player, nullptr, amount, "world");
    else entity.fields.health -= amount;
  } else if (strcasecmp(action, "SetTeam") == 0) {
    if (player) ChangeTeam(*player, amount);
    else entity.fields.teamNum = amount;
  } else if (CPhysicsObject* body = entity.Physics()) {
    if (strcasecmp(action, "Wake") == 0 && body->Push()) m_physics.Environment().Woke(body);
    if (strcasecmp(action, "Sleep") == 0 && body->Sleep()) m_physics.Environment().Slept(body);
  }
}

void CSimWorld::QueueInput(CEntity& entity, const char* action, const char* value, float delay) {
  m_inputs.push_back(PendingInput{m_frame + FramesFor(delay), entity.GetRefEHandle().ToInt(), action, value});
}

void CSimWorld::RunPendingInputs() {
  std::deque<PendingInput> later;
  while (!m_inputs.empty()) {
    PendingInput input = std::move(m_inputs.front());
    m_inputs.pop_front();
    if (input.dueFrame > m_frame) {
      later.push_back(std::move(input));
    } else if (CEntity* e = EntityOfHandle(input.target)) {
      FireInput(*e, input.action.c_str(), input.value.c_str());
    }
  }
  m_inputs.swap(later);
}

// ---- engine operations on the level ----

bool CSimWorld::IsMapValid(const char* name) {
  return name && name[0] && !strchr(name, '/') && !strchr(name, '\\');
}

int CSimWorld::PrecacheModel(const char* name, bool) {
  CStringTable* table = m_stringTables.Table("modelprecache");
  int index = table ? table->AddInternal(name) : INVALID_STRING_INDEX;
  return index == INVALID_STRING_INDEX ? 0 : index;
}

int CSimWorld::PrecacheDecal(const char* name, bool) {
  CStringTable* table = m_stringTables.Table("decalprecache");
  int index = table ? table->AddInternal(name) : INVALID_STRING_INDEX;
  return index == INVALID_STRING_INDEX ? 0 : index;
}

void CSimWorld::LightStyle(int style, const char* value) {
  Announce("lightstyle", std::to_string(style) + " " + EscapedText(value ? value : ""));
}

// ---- interfaces ----

void* CSimWorld::FindGameInterface(const char* name) {
  struct Entry {
    const char* name;
    void* object;
  };
  const Entry entries[] = {
      {INTERFACEVERSION_PLAYERINFOMANAGER, static_cast<IPlayerInfoManager*>(&m_playerInfo)},
      {IEFFECTS_INTERFACE_VERSION, static_cast<IEffects*>(&m_effects)},
      {INTERFACEVERSION_SERVERGAMEENTS, static_cast<IServerGameEnts*>(&m_gameEnts)},
      {"ServerGameDLL005", static_cast<IServerGameDLL*>(&m_gameDll)},
      {"ServerGameClients003", static_cast<IServerGameClients*>(&m_gameClients)},
  };
  for (const Entry& e : entries)
    if (strcmp(e.name, name) == 0) return e.object;
  return nullptr;
}

void* CSimWorld::FindEngineInterface(const char* name) {
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
