// The services around clients and entities: the game's interfaces, sounds, effects, string tables, voice,
// physics and the plugin helpers. Each acts on the world and shows what reaches clients.
#include "world/services.h"

#include <strings.h>

#include <algorithm>
#include <cstring>

#include "KeyValues.h"
#include "standin.h"
#include "tier0.h"
#include "world/sim_world.h"

namespace {

std::string VectorText(const Vector& v) {
  char text[96];
  snprintf(text, sizeof text, "%g,%g,%g", double(v.x), double(v.y), double(v.z));
  return text;
}

std::string Number(const char* format, double value) {
  char text[48];
  snprintf(text, sizeof text, format, value);
  return text;
}

// Names of the string tables that every level has, in id order.
constexpr const char* kStringTables[] = {"downloadables", "modelprecache", "genericprecache", "soundprecache",
                                         "decalprecache", "instancebaseline", "lightstyles", "userinfo"};

// What a string table's change is called in its delivery line.
std::string TableKind(const std::string& table) {
  if (table == "modelprecache") return "precache model";
  if (table == "soundprecache") return "precache sound";
  if (table == "decalprecache") return "precache decal";
  if (table == "genericprecache") return "precache generic";
  return "stringtable " + table;
}

const char* QueryStatusText(EQueryCvarValueStatus status) {
  switch (status) {
    case eQueryCvarValueStatus_ValueIntact: return "success";
    case eQueryCvarValueStatus_CvarNotFound: return "not found";
    case eQueryCvarValueStatus_NotACvar: return "not variable";
    default: return "protected";
  }
}

// What a client answers for a variable name: passwords are protected, its console's commands are no
// variables, its own variables are read, and anything else isn't there.
EQueryCvarValueStatus QueryStatus(const CClient& client, const char* name) {
  static const char* const kProtected[] = {"password", "rcon_password"};
  static const char* const kCommands[] = {"kill", "jointeam", "say", "say_team", "menuselect", "disconnect", "quit"};
  for (const char* p : kProtected)
    if (strcasecmp(p, name) == 0) return eQueryCvarValueStatus_CvarProtected;
  for (const char* c : kCommands)
    if (strcasecmp(c, name) == 0) return eQueryCvarValueStatus_NotACvar;
  return client.vars.count(name) ? eQueryCvarValueStatus_ValueIntact : eQueryCvarValueStatus_CvarNotFound;
}

}  // namespace

// ---- the game's interfaces ----

IPlayerInfo* CPlayerInfoManager::GetPlayerInfo(edict_t* edict) {
  CClient* client = m_world.ClientOfEdict(edict);
  return client ? &client->info : nullptr;
}

CGlobalVars* CPlayerInfoManager::GetGlobalVars() { return m_world.Setup().globals; }

edict_t* CGameEnts::BaseEntityToEdict(CBaseEntity* entity) {
  CEntity* e = CEntity::FromBaseEntity(entity);
  return e ? e->GetEdict() : nullptr;
}

CBaseEntity* CGameEnts::EdictToBaseEntity(edict_t* edict) {
  return edict && !edict->IsFree() && edict->GetUnknown() ? edict->GetUnknown()->GetBaseEntity() : nullptr;
}

ServerClass* CGameDLL::GetAllServerClasses() { return EntityServerClasses(); }

bool CGameDLL::GetUserMessageInfo(int msgType, char* name, int maxNameLength, int& size) {
  return UserMessageInfoOf(msgType, name, maxNameLength, size);
}

// ---- effects ----

void CEffects::Beam(const Vector& start, const Vector& end, int modelIndex, int haloIndex, unsigned char frameStart,
                    unsigned char frameRate, float life, unsigned char width, unsigned char endWidth,
                    unsigned char fadeLength, unsigned char noise, unsigned char red, unsigned char green,
                    unsigned char blue, unsigned char brightness, unsigned char speed) {
  m_world.Announce("effect", "beam " + VectorText(start) + " to " + VectorText(end) + " model " +
                                 std::to_string(modelIndex) + " halo " + std::to_string(haloIndex) + " frames " +
                                 std::to_string(frameStart) + "+" + std::to_string(frameRate) + " life " +
                                 Number("%g", life) + " width " + std::to_string(width) + "/" +
                                 std::to_string(endWidth) + " fade " + std::to_string(fadeLength) + " noise " +
                                 std::to_string(noise) + " color " + std::to_string(red) + "," +
                                 std::to_string(green) + "," + std::to_string(blue) + " brightness " +
                                 std::to_string(brightness) + " speed " + std::to_string(speed));
}

void CEffects::Smoke(const Vector& origin, int modelIndex, float scale, float frameRate) {
  m_world.Announce("effect", "smoke at " + VectorText(origin) + " model " + std::to_string(modelIndex) + " scale " +
                                 Number("%g", scale) + " framerate " + Number("%g", frameRate));
}

void CEffects::Sparks(const Vector& position, int magnitude, int trailLength, const Vector* direction) {
  m_world.Announce("effect", "sparks at " + VectorText(position) + " magnitude " + std::to_string(magnitude) +
                                 " trail " + std::to_string(trailLength) + " direction " +
                                 (direction ? VectorText(*direction) : std::string("none")));
}

void CEffects::Dust(const Vector& position, const Vector& direction, float size, float speed) {
  m_world.Announce("effect", "dust at " + VectorText(position) + " direction " + VectorText(direction) + " size " +
                                 Number("%g", size) + " speed " + Number("%g", speed));
}

void CEffects::EnergySplash(const Vector& position, const Vector& direction, bool explosive) {
  m_world.Announce("effect", "energysplash at " + VectorText(position) + " direction " + VectorText(direction) +
                                 (explosive ? " explosive" : ""));
}

// ---- voice ----

bool CVoiceServer::GetClientListening(int receiver, int sender) {
  return Valid(receiver) && Valid(sender) && !m_muted[receiver][sender];
}

bool CVoiceServer::SetClientListening(int receiver, int sender, bool listen) {
  if (!Valid(receiver) || !Valid(sender)) return false;
  m_muted[receiver][sender] = !listen;
  return true;
}

void CVoiceServer::Reset() { memset(m_muted, 0, sizeof m_muted); }

void CVoiceServer::ResetSlot(int slot) {
  if (!Valid(slot)) return;
  for (int i = 0; i < kMaxSlots; ++i) m_muted[slot][i] = m_muted[i][slot] = false;
}

// ---- sounds ----

bool CEngineSound::PrecacheSound(const char* sample, bool) {
  if (!sample || !sample[0]) return false;
  CStringTable* table = m_world.StringTables().Table("soundprecache");
  return table && table->AddInternal(sample) != INVALID_STRING_INDEX;
}

void CEngineSound::EmitSound(IRecipientFilter& filter, int entityIndex, int channel, const char* sample, float volume,
                             float attenuation, int flags, int pitch, const Vector* origin, const Vector*,
                             std::vector<Vector>*, bool, float, int) {
  std::string content = EscapedText(sample) + " entity " + std::to_string(entityIndex) + " channel " +
                        std::to_string(channel) + " volume " + Number("%.2f", volume) + " attenuation " +
                        Number("%.2f", attenuation) + " pitch " + std::to_string(pitch);
  if (flags) content += " flags " + std::to_string(flags);
  if (origin) content += " at " + VectorText(*origin);
  m_world.Deliver("sound", m_world.Recipients(filter), content);
}

void CEngineSound::StopSound(int entityIndex, int channel, const char* sample) {
  m_world.Announce("stopsound", EscapedText(sample) + " entity " + std::to_string(entityIndex) + " channel " +
                                    std::to_string(channel));
}

// ---- string tables ----

int CStringTable::Append(const char* value) {
  if (int(m_strings.size()) >= kMaxStrings) {
    Warning("String table %s is full (%d strings); \"%s\" not added\n", m_name.c_str(), kMaxStrings, value);
    return INVALID_STRING_INDEX;
  }
  int index = int(m_strings.size());
  m_strings.push_back(Entry{value, {}});
  m_index.emplace(value, index);
  m_owner.World().Announce(TableKind(m_name).c_str(), EscapedText(value) + " at " + std::to_string(index));
  return index;
}

int CStringTable::AddString(const char* value, int length, const void* userData) {
  if (!value) return INVALID_STRING_INDEX;
  int found = FindStringIndex(value);
  if (found == INVALID_STRING_INDEX) {
    if (m_owner.Locked()) return INVALID_STRING_INDEX;
    found = Append(value);
  }
  if (found != INVALID_STRING_INDEX && userData && !m_owner.Locked()) SetStringUserData(found, length, userData);
  return found;
}

int CStringTable::AddInternal(const char* value) {
  if (!value) return INVALID_STRING_INDEX;
  int found = FindStringIndex(value);
  return found != INVALID_STRING_INDEX ? found : Append(value);
}

const char* CStringTable::GetString(int index) {
  return index >= 0 && index < int(m_strings.size()) ? m_strings[size_t(index)].text.c_str() : "";
}

void CStringTable::SetStringUserData(int index, int length, const void* userData) {
  if (index < 0 || index >= int(m_strings.size()) || length < 0) return;
  const unsigned char* bytes = static_cast<const unsigned char*>(userData);
  m_strings[size_t(index)].userData.assign(bytes, bytes + (userData ? length : 0));
}

const void* CStringTable::GetStringUserData(int index, int* length) {
  if (length) *length = 0;
  if (index < 0 || index >= int(m_strings.size())) return nullptr;
  const std::vector<unsigned char>& data = m_strings[size_t(index)].userData;
  if (length) *length = int(data.size());
  return data.empty() ? nullptr : data.data();
}

int CStringTable::FindStringIndex(const char* value) {
  auto it = value ? m_index.find(value) : m_index.end();
  return it == m_index.end() ? int(INVALID_STRING_INDEX) : it->second;
}

void CStringTables::Reset(const char* mapName) {
  m_tables.clear();
  m_locked = false;
  int id = 0;
  for (const char* name : kStringTables) m_tables.push_back(std::make_unique<CStringTable>(name, id++, *this));
  bool shown = m_world.DeliveriesShown();
  m_world.ShowDeliveries(false);
  Table("modelprecache")->AddInternal("");
  Table("modelprecache")->AddInternal((std::string("maps/") + (mapName ? mapName : "") + ".bsp").c_str());
  for (const char* model : {"models/player.mdl", "models/player/t_phoenix.mdl", "models/player/ct_urban.mdl"})
    Table("modelprecache")->AddInternal(model);
  Table("soundprecache")->AddInternal("");
  m_world.ShowDeliveries(shown);
}

INetworkStringTable* CStringTables::FindTable(const char* name) const {
  for (const auto& t : m_tables)
    if (name && strcasecmp(t->GetTableName(), name) == 0) return t.get();
  return nullptr;
}

INetworkStringTable* CStringTables::GetTable(int id) const {
  return id >= 0 && id < int(m_tables.size()) ? m_tables[size_t(id)].get() : nullptr;
}

bool CStringTables::Lock(bool lock) {
  bool previous = m_locked;
  m_locked = lock;
  return previous;
}

// ---- random stream ----

float CRandomStream::RandomFloat(float min, float max) {
  if (max < min) std::swap(min, max);
  if (max == min) return min;
  return std::uniform_real_distribution<float>(min, max)(m_rng);
}

int CRandomStream::RandomInt(int min, int max) {
  if (max < min) std::swap(min, max);
  return std::uniform_int_distribution<int>(min, max)(m_rng);
}

// ---- physics ----

void* CPhysicsObject::GetGameData() const { return m_entity.GetBaseEntity(); }
unsigned short CPhysicsObject::GetGameIndex() const { return (unsigned short)m_entity.Index(); }

void CPhysicsObject::SetMass(float mass) {
  if (mass > 0) m_mass = mass;
}

void CPhysicsObject::ApplyForceCenter(const Vector& force) {
  m_velocity = m_velocity + force * (1.0f / m_mass);
  if (Push()) m_environment.Woke(this);
}

void CPhysicsObject::SetPosition(const Vector& position, const QAngle& angles, bool) {
  m_entity.fields.origin = position;
  m_entity.fields.angles = angles;
  m_entity.GetEdict()->StateChanged();
  if (Push()) m_environment.Woke(this);
}

void CPhysicsObject::GetPosition(Vector* position, QAngle* angles) const {
  if (position) *position = m_entity.fields.origin;
  if (angles) *angles = m_entity.fields.angles;
}

void CPhysicsObject::SetVelocity(const Vector* velocity, const AngularImpulse* angular) {
  if (velocity) m_velocity = *velocity;
  if (angular) m_angular = *angular;
  if (Push()) m_environment.Woke(this);
}

void CPhysicsObject::GetVelocity(Vector* velocity, AngularImpulse* angular) const {
  if (velocity) *velocity = m_velocity;
  if (angular) *angular = m_angular;
}

bool CPhysicsObject::QuietFrame(float seconds) {
  if (m_asleep) return false;
  if (!(m_velocity == Vector())) {
    m_entity.fields.origin = m_entity.fields.origin + m_velocity * seconds;
    m_entity.GetEdict()->StateChanged();
  }
  return ++m_quietFrames >= PHYSICS_SLEEP_FRAMES && Sleep();
}

bool CPhysicsObject::Sleep() {
  if (m_asleep) return false;
  m_asleep = true;
  m_velocity = Vector();
  m_angular = AngularImpulse();
  return true;
}

bool CPhysicsObject::Push() {
  bool wasAsleep = m_asleep;
  m_asleep = false;
  m_quietFrames = 0;
  return wasAsleep;
}

void CPhysicsEnvironment::GetGravity(Vector* gravity) const {
  if (gravity) *gravity = m_gravity;
}

int CPhysicsEnvironment::GetActiveObjectCount() const {
  return int(std::count_if(m_objects.begin(), m_objects.end(), [](CPhysicsObject* o) { return !o->IsAsleep(); }));
}

void CPhysicsEnvironment::GetActiveObjects(IPhysicsObject** out) const {
  if (!out) return;
  for (CPhysicsObject* o : m_objects)
    if (!o->IsAsleep()) *out++ = o;
}

void CPhysicsEnvironment::Remove(CPhysicsObject* object) {
  m_objects.erase(std::remove(m_objects.begin(), m_objects.end(), object), m_objects.end());
}

void CPhysicsEnvironment::Woke(CPhysicsObject* object) {
  if (m_handler) m_handler->ObjectWake(object);
}

void CPhysicsEnvironment::Slept(CPhysicsObject* object) {
  if (m_handler) m_handler->ObjectSleep(object);
}

// The handler may push or remove objects while it hears of them, so the walk goes over a copy and skips
// what left meanwhile.
void CPhysicsEnvironment::Frame(float seconds) {
  std::vector<CPhysicsObject*> objects = m_objects;
  for (CPhysicsObject* o : objects) {
    if (std::find(m_objects.begin(), m_objects.end(), o) == m_objects.end()) continue;
    if (o->QuietFrame(seconds)) Slept(o);
  }
}

void CPhysicsEnvironment::Reset() {
  m_gravity = DefaultGravity();
  m_airDensity = kDefaultAirDensity;
  m_handler = nullptr;
  m_objects.clear();
}

// ---- plugin helpers ----

void CPluginHelpers::CreateMessage(edict_t* edict, DIALOG_TYPE type, KeyValues* data, IServerPluginCallbacks*) {
  CClient* client = m_world.ClientOfEdict(edict);
  if (!client) {
    Warning("CreateMessage: not a client; nothing shown\n");
    return;
  }
  m_world.ShowDialog(*client, int(type), data);
}

void CPluginHelpers::ClientCommand(edict_t* edict, const char* command) {
  if (!m_world.ClientOfEdict(edict) || !command) {
    Warning("ClientCommand: not a client; nothing run\n");
    return;
  }
  g_standIn->RunClientCommand(edict, command);
}

QueryCvarCookie_t CPluginHelpers::StartQueryCvarValue(edict_t* edict, const char* name) {
  CClient* client = m_world.ClientOfEdict(edict);
  if (!client || !name) return InvalidQueryCvarCookie;
  QueryCvarCookie_t cookie = m_nextCookie++;
  m_world.Deliver("query", std::to_string(client->userid), EscapedText(name));
  m_queries.push_back(PendingQuery{cookie, client->userid, name, m_world.FrameNumber() + kQueryFrames});
  return cookie;
}

void CPluginHelpers::AnswerQueries(long long frame) {
  while (!m_queries.empty() && m_queries.front().dueFrame <= frame) {
    PendingQuery q = std::move(m_queries.front());
    m_queries.pop_front();
    CClient* client = m_world.ClientByUserid(q.userid);
    if (!client) continue;
    EQueryCvarValueStatus status = QueryStatus(*client, q.name.c_str());
    const char* value = status == eQueryCvarValueStatus_ValueIntact ? ClientVar(*client, q.name.c_str()) : "";
    if (m_world.DeliveriesShown())
      Msg("< query from %d: %s = %s (%s)\n", q.userid, EscapedText(q.name.c_str()).c_str(), EscapedText(value).c_str(),
          QueryStatusText(status));
    if (IServerPluginCallbacks* plugin = m_world.Plugin())
      plugin->OnQueryCvarValueFinished(q.cookie, m_world.PEntityOfEntIndex(client->slot), status, q.name.c_str(), value);
  }
}
