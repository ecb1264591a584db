// The basic world's services: what works, and what is only recorded.
#include "basic_services.h"

#include <algorithm>
#include <cstring>

#include "edict.h"
#include "tier0.h"
#include "vstdlib.h"

namespace {

std::string VectorText(const Vector& v) {
  char text[96];
  snprintf(text, sizeof text, "%g %g %g", double(v.x), double(v.y), double(v.z));
  return text;
}

// The user messages of the demo game, by id.
constexpr const char* kUserMessages[] = {
    "SayText", "SayText2", "TextMsg", "HudMsg",   "ShowMenu", "HintText", "KeyHintText", "VGUIMenu",
    "Fade",    "Shake",    "ResetHUD", "HudText", "Damage",   "Battery",  "Train",       "CloseCaption",
};
constexpr int kUserMessageCount = int(sizeof kUserMessages / sizeof kUserMessages[0]);

// Names of the string tables that every level has, in id order.
constexpr const char* kStringTables[] = {"downloadables", "modelprecache", "genericprecache", "soundprecache",
                                         "decalprecache", "instancebaseline", "lightstyles", "userinfo"};

}  // namespace

// ---- call log ----

void CallLog::Add(const char* operation, std::string detail) {
  if (m_records.size() >= kMaxRecords) m_records.erase(m_records.begin());
  m_records.push_back(CallRecord{operation, std::move(detail)});
  DevMsg(2, "world: %s %s\n", operation, m_records.back().detail.c_str());
}

size_t CallLog::CountOf(const char* operation) const {
  return size_t(std::count_if(m_records.begin(), m_records.end(),
                              [&](const CallRecord& r) { return r.operation == operation; }));
}

// ---- effects ----

void CBasicEffects::Beam(const Vector& start, const Vector& end, int modelIndex, int, unsigned char, unsigned char,
                         float life, unsigned char, unsigned char, unsigned char, unsigned char, unsigned char,
                         unsigned char, unsigned char, unsigned char, unsigned char) {
  m_log.Add("Beam", VectorText(start) + " -> " + VectorText(end) + " model " + std::to_string(modelIndex));
}
void CBasicEffects::Smoke(const Vector& origin, int modelIndex, float, float) {
  m_log.Add("Smoke", VectorText(origin) + " model " + std::to_string(modelIndex));
}
void CBasicEffects::Sparks(const Vector& position, int, int, const Vector*) { m_log.Add("Sparks", VectorText(position)); }
void CBasicEffects::Dust(const Vector& position, const Vector&, float, float) { m_log.Add("Dust", VectorText(position)); }
void CBasicEffects::EnergySplash(const Vector& position, const Vector&, bool) {
  m_log.Add("EnergySplash", VectorText(position));
}

// ---- game ----

CBaseEntity* CBasicGameEnts::EdictToBaseEntity(edict_t* edict) {
  return edict && edict->GetUnknown() ? edict->GetUnknown()->GetBaseEntity() : nullptr;
}

bool CBasicGameDLL::GetUserMessageInfo(int msgType, char* name, int maxNameLength, int& size) {
  if (msgType < 0 || msgType >= kUserMessageCount || !name) return false;
  Q_strncpy(name, kUserMessages[msgType], maxNameLength);
  size = -1;  // variable length
  return true;
}

// ---- voice ----

bool CBasicVoiceServer::GetClientListening(int receiver, int sender) {
  return Valid(receiver) && Valid(sender) && !m_muted[receiver][sender];
}

bool CBasicVoiceServer::SetClientListening(int receiver, int sender, bool listen) {
  if (!Valid(receiver) || !Valid(sender)) return false;
  m_muted[receiver][sender] = !listen;
  return true;
}

// ---- sounds ----

bool CBasicEngineSound::PrecacheSound(const char* sample, bool) {
  m_log.Add("PrecacheSound", sample ? sample : "");
  return sample && sample[0];
}

void CBasicEngineSound::EmitSound(IRecipientFilter& filter, int entityIndex, int channel, const char* sample,
                                  float volume, float, int, int pitch, const Vector*, const Vector*,
                                  std::vector<Vector>*, bool, float, int) {
  m_log.Add("EmitSound", std::string(sample ? sample : "") + " entity " + std::to_string(entityIndex) + " channel " +
                             std::to_string(channel) + " pitch " + std::to_string(pitch));
}

void CBasicEngineSound::StopSound(int entityIndex, int channel, const char* sample) {
  m_log.Add("StopSound", std::string(sample ? sample : "") + " entity " + std::to_string(entityIndex));
}

// ---- string tables ----

int CBasicStringTable::AddString(const char* value, int length, const void* userData) {
  if (!value) return INVALID_STRING_INDEX;
  int found = FindStringIndex(value);
  if (found != INVALID_STRING_INDEX) {
    if (userData && !m_locked) SetStringUserData(found, length, userData);
    return found;
  }
  if (m_locked || int(m_strings.size()) >= kMaxStrings) return INVALID_STRING_INDEX;
  int index = int(m_strings.size());
  m_strings.push_back(Entry{value, {}});
  m_index.emplace(value, index);
  if (userData) SetStringUserData(index, length, userData);
  return index;
}

const char* CBasicStringTable::GetString(int index) {
  return index >= 0 && index < int(m_strings.size()) ? m_strings[size_t(index)].text.c_str() : "";
}

void CBasicStringTable::SetStringUserData(int index, int length, const void* userData) {
  if (index < 0 || index >= int(m_strings.size()) || length < 0) return;
  const unsigned char* bytes = static_cast<const unsigned char*>(userData);
  m_strings[size_t(index)].userData.assign(bytes, bytes + (userData ? length : 0));
}

const void* CBasicStringTable::GetStringUserData(int index, int* length) {
  if (length) *length = 0;
  if (index < 0 || index >= int(m_strings.size())) return nullptr;
  const std::vector<unsigned char>& data = m_strings[size_t(index)].userData;
  if (length) *length = int(data.size());
  return data.empty() ? nullptr : data.data();
}

int CBasicStringTable::FindStringIndex(const char* value) {
  auto it = value ? m_index.find(value) : m_index.end();
  return it == m_index.end() ? int(INVALID_STRING_INDEX) : it->second;
}

CBasicStringTables::CBasicStringTables() {
  int id = 0;
  for (const char* name : kStringTables) m_tables.push_back(std::make_unique<CBasicStringTable>(name, id++, m_locked));
}

INetworkStringTable* CBasicStringTables::FindTable(const char* name) const {
  for (const auto& t : m_tables)
    if (name && strcasecmp(t->GetTableName(), name) == 0) return t.get();
  return nullptr;
}

INetworkStringTable* CBasicStringTables::GetTable(int id) const {
  return id >= 0 && id < int(m_tables.size()) ? m_tables[size_t(id)].get() : nullptr;
}

bool CBasicStringTables::Lock(bool lock) {
  bool previous = m_locked;
  m_locked = lock;
  return previous;
}

// ---- random stream ----

float CBasicRandomStream::RandomFloat(float min, float max) {
  if (max < min) std::swap(min, max);
  if (max == min) return min;
  return std::uniform_real_distribution<float>(min, max)(m_rng);
}

int CBasicRandomStream::RandomInt(int min, int max) {
  if (max < min) std::swap(min, max);
  return std::uniform_int_distribution<int>(min, max)(m_rng);
}

// ---- physics ----

void CBasicPhysicsEnvironment::GetGravity(Vector* gravity) const {
  if (gravity) *gravity = m_gravity;
}

// ---- plugin helpers ----

void CBasicPluginHelpers::CreateMessage(edict_t*, DIALOG_TYPE type, KeyValues*, IServerPluginCallbacks*) {
  m_log.Add("CreateMessage", "type " + std::to_string(int(type)));
}

void CBasicPluginHelpers::ClientCommand(edict_t*, const char* command) {
  m_log.Add("HelpersClientCommand", command ? command : "");
}

QueryCvarCookie_t CBasicPluginHelpers::StartQueryCvarValue(edict_t* edict, const char* name) {
  m_log.Add("StartQueryCvarValue", name ? name : "");
  return InvalidQueryCvarCookie;
}
