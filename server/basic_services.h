// The engine's and the game's smaller services as the basic world gives them: working where the rest of
// the stand-in needs them (global variables, string tables, voice routing, the game description and user
// message names), recording calls elsewhere so that tests can see what a plugin asked for.
#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "eiface.h"
#include "iplayerinfo.h"
#include "iserverplugin.h"
#include "iservices.h"
#include "vphysics.h"

// Calls that the basic world only records: operation name and a short description, oldest first.
struct CallRecord {
  std::string operation;
  std::string detail;
};
class CallLog {
public:
  static constexpr size_t kMaxRecords = 4096;  // the oldest records go when more come
  void Add(const char* operation, std::string detail = {});
  const std::vector<CallRecord>& Records() const { return m_records; }
  size_t CountOf(const char* operation) const;
  void Clear() { m_records.clear(); }

private:
  std::vector<CallRecord> m_records;
};

class CBasicPlayerInfoManager final : public IPlayerInfoManager {
public:
  explicit CBasicPlayerInfoManager(CGlobalVars* globals) : m_globals(globals) {}
  IPlayerInfo* GetPlayerInfo(edict_t*) override { return nullptr; }
  CGlobalVars* GetGlobalVars() override { return m_globals; }

private:
  CGlobalVars* m_globals;
};

class CBasicEffects final : public IEffects {
public:
  explicit CBasicEffects(CallLog& log) : m_log(log) {}
  void Beam(const Vector&, const Vector&, int, int, unsigned char, unsigned char, float, unsigned char, unsigned char,
            unsigned char, unsigned char, unsigned char, unsigned char, unsigned char, unsigned char,
            unsigned char) override;
  void Smoke(const Vector&, int, float, float) override;
  void Sparks(const Vector&, int, int, const Vector*) override;
  void Dust(const Vector&, const Vector&, float, float) override;
  void EnergySplash(const Vector&, const Vector&, bool) override;

private:
  CallLog& m_log;
};

class CBasicGameEnts final : public IServerGameEnts {
public:
  edict_t* BaseEntityToEdict(CBaseEntity*) override { return nullptr; }
  CBaseEntity* EdictToBaseEntity(edict_t* edict) override;
};

// The demo game's description, as GetGameDescription gives it.
#define BASIC_GAME_DESCRIPTION "Tidewright Demo"

class CBasicGameDLL final : public IServerGameDLL {
public:
  ServerClass* GetAllServerClasses() override { return nullptr; }
  const char* GetGameDescription() override { return BASIC_GAME_DESCRIPTION; }
  bool GetUserMessageInfo(int msgType, char* name, int maxNameLength, int& size) override;
};

class CBasicGameClients final : public IServerGameClients {
public:
  void SetCommandClient(int index) override { m_commandClient = index; }
  int CommandClient() const { return m_commandClient; }

private:
  int m_commandClient = -1;
};

class CBasicVoiceServer final : public IVoiceServer {
public:
  static constexpr int kMaxSlots = 65;  // entity indexes 0..64
  bool GetClientListening(int receiver, int sender) override;
  bool SetClientListening(int receiver, int sender, bool listen) override;

private:
  static bool Valid(int slot) { return slot >= 0 && slot < kMaxSlots; }
  bool m_muted[kMaxSlots][kMaxSlots] = {};
};

class CBasicEngineTrace final : public IEngineTrace {
public:
  int GetPointContents(const Vector&) override { return 0; }
};

class CBasicEngineSound final : public IEngineSound {
public:
  explicit CBasicEngineSound(CallLog& log) : m_log(log) {}
  bool PrecacheSound(const char* sample, bool preload) override;
  void EmitSound(IRecipientFilter& filter, int entityIndex, int channel, const char* sample, float volume,
                 float attenuation, int flags, int pitch, const Vector* origin, const Vector* direction,
                 std::vector<Vector>* origins, bool updatePositions, float soundTime, int speakerEntity) override;
  void StopSound(int entityIndex, int channel, const char* sample) override;

private:
  CallLog& m_log;
};

class CBasicStringTable final : public INetworkStringTable {
public:
  static constexpr int kMaxStrings = 4096;
  CBasicStringTable(const char* name, int id, const bool& locked) : m_name(name), m_id(id), m_locked(locked) {}
  const char* GetTableName() const override { return m_name.c_str(); }
  int GetTableId() const override { return m_id; }
  int GetNumStrings() const override { return int(m_strings.size()); }
  int GetMaxStrings() const override { return kMaxStrings; }
  int AddString(const char* value, int length, const void* userData) override;
  const char* GetString(int index) override;
  void SetStringUserData(int index, int length, const void* userData) override;
  const void* GetStringUserData(int index, int* length) override;
  int FindStringIndex(const char* value) override;

private:
  struct Entry {
    std::string text;
    std::vector<unsigned char> userData;
  };
  std::string m_name;
  int m_id;
  const bool& m_locked;
  std::vector<Entry> m_strings;
  std::unordered_map<std::string, int> m_index;
};

class CBasicStringTables final : public INetworkStringTableContainer {
public:
  CBasicStringTables();
  INetworkStringTable* FindTable(const char* name) const override;
  INetworkStringTable* GetTable(int id) const override;
  int GetNumTables() const override { return int(m_tables.size()); }
  bool Lock(bool lock);

private:
  bool m_locked = false;
  std::vector<std::unique_ptr<CBasicStringTable>> m_tables;
};

class CBasicRandomStream final : public IUniformRandomStream {
public:
  void SetSeed(int seed) override { m_rng.seed(uint32_t(seed)); }
  float RandomFloat(float min, float max) override;
  int RandomInt(int min, int max) override;

private:
  std::mt19937 m_rng{20070926u};
};

class CBasicPhysicsEnvironment final : public IPhysicsEnvironment {
public:
  void SetGravity(const Vector& gravity) override { m_gravity = gravity; }
  void GetGravity(Vector* gravity) const override;
  void SetAirDensity(float density) override { m_airDensity = density; }
  float GetAirDensity() const override { return m_airDensity; }
  void SetObjectEventHandler(IPhysicsObjectEvent* handler) override { m_handler = handler; }
  int GetActiveObjectCount() const override { return 0; }
  void GetActiveObjects(IPhysicsObject**) const override {}

private:
  Vector m_gravity{0, 0, -600};
  float m_airDensity = 2.0f;
  IPhysicsObjectEvent* m_handler = nullptr;
};

class CBasicPhysics final : public IPhysics {
public:
  IPhysicsEnvironment* GetActiveEnvironmentByIndex(int index) override { return index == 0 ? &m_env : nullptr; }

private:
  CBasicPhysicsEnvironment m_env;
};

class CBasicPluginHelpers final : public IServerPluginHelpers {
public:
  explicit CBasicPluginHelpers(CallLog& log) : m_log(log) {}
  void CreateMessage(edict_t* edict, DIALOG_TYPE type, KeyValues* data, IServerPluginCallbacks* plugin) override;
  void ClientCommand(edict_t* edict, const char* command) override;
  QueryCvarCookie_t StartQueryCvarValue(edict_t* edict, const char* name) override;

private:
  CallLog& m_log;
};
