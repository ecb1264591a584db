// The engine's and the game's services around clients and entities: sounds, temporary effects, network
// string tables, voice routing, physics, the plugin helpers, and the game library's interfaces
// (ServerGameDLL, ServerGameClients, ServerGameEnts, PlayerInfoManager). Each acts on the world and shows
// what reaches clients through the world's delivery lines (messages.cpp).
#pragma once

#include <deque>
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
#include "world.h"

class CSimWorld;
class CEntity;

// Frames an awake physics object stays awake without a push before it falls asleep.
constexpr int PHYSICS_SLEEP_FRAMES = 200;
constexpr float PHYSICS_DEFAULT_MASS = 50.0f;

class CPlayerInfoManager final : public IPlayerInfoManager {
public:
  explicit CPlayerInfoManager(CSimWorld& world) : m_world(world) {}
  IPlayerInfo* GetPlayerInfo(edict_t* edict) override;
  CGlobalVars* GetGlobalVars() override;

private:
  CSimWorld& m_world;
};

class CEffects final : public IEffects {
public:
  explicit CEffects(CSimWorld& world) : m_world(world) {}
  void Beam(const Vector& start, const Vector& end, int modelIndex, int haloIndex, unsigned char frameStart,
            unsigned char frameRate, float life, unsigned char width, unsigned char endWidth, unsigned char fadeLength,
            unsigned char noise, unsigned char red, unsigned char green, unsigned char blue, unsigned char brightness,
            unsigned char speed) override;
  void Smoke(const Vector& origin, int modelIndex, float scale, float frameRate) override;
  void Sparks(const Vector& position, int magnitude, int trailLength, const Vector* direction) override;
  void Dust(const Vector& position, const Vector& direction, float size, float speed) override;
  void EnergySplash(const Vector& position, const Vector& direction, bool explosive) override;

private:
  CSimWorld& m_world;
};

class CGameEnts final : public IServerGameEnts {
public:
  edict_t* BaseEntityToEdict(CBaseEntity* entity) override;
  CBaseEntity* EdictToBaseEntity(edict_t* edict) override;
};

class CGameDLL final : public IServerGameDLL {
public:
  ServerClass* GetAllServerClasses() override;
  const char* GetGameDescription() override { return WORLD_GAME_DESCRIPTION; }
  bool GetUserMessageInfo(int msgType, char* name, int maxNameLength, int& size) override;
};

class CGameClients final : public IServerGameClients {
public:
  void SetCommandClient(int index) override { m_commandClient = index; }
  int CommandClient() const { return m_commandClient; }

private:
  int m_commandClient = -1;
};

class CVoiceServer final : public IVoiceServer {
public:
  static constexpr int kMaxSlots = 65;  // entity indexes 0..64
  bool GetClientListening(int receiver, int sender) override;
  bool SetClientListening(int receiver, int sender, bool listen) override;
  // Everybody hears everybody again: at a new level, and for a slot that a new client takes.
  void Reset();
  void ResetSlot(int slot);

private:
  static bool Valid(int slot) { return slot >= 0 && slot < kMaxSlots; }
  bool m_muted[kMaxSlots][kMaxSlots] = {};
};

class CEngineTrace final : public IEngineTrace {
public:
  int GetPointContents(const Vector&) override { return 0; }
};

class CEngineSound final : public IEngineSound {
public:
  explicit CEngineSound(CSimWorld& world) : m_world(world) {}
  bool PrecacheSound(const char* sample, bool preload) override;
  void EmitSound(IRecipientFilter& filter, int entityIndex, int channel, const char* sample, float volume,
                 float attenuation, int flags, int pitch, const Vector* origin, const Vector* direction,
                 std::vector<Vector>* origins, bool updatePositions, float soundTime, int speakerEntity) override;
  void StopSound(int entityIndex, int channel, const char* sample) override;

private:
  CSimWorld& m_world;
};

class CStringTables;

class CStringTable final : public INetworkStringTable {
public:
  static constexpr int kMaxStrings = 4096;
  CStringTable(const char* name, int id, CStringTables& owner) : m_name(name), m_id(id), m_owner(owner) {}
  const char* GetTableName() const override { return m_name.c_str(); }
  int GetTableId() const override { return m_id; }
  int GetNumStrings() const override { return int(m_strings.size()); }
  int GetMaxStrings() const override { return kMaxStrings; }
  int AddString(const char* value, int length, const void* userData) override;
  const char* GetString(int index) override;
  void SetStringUserData(int index, int length, const void* userData) override;
  const void* GetStringUserData(int index, int* length) override;
  int FindStringIndex(const char* value) override;
  // The engine's own adds (precaching), which the lock doesn't hold back.
  int AddInternal(const char* value);

private:
  int Append(const char* value);
  struct Entry {
    std::string text;
    std::vector<unsigned char> userData;
  };
  std::string m_name;
  int m_id;
  CStringTables& m_owner;
  std::vector<Entry> m_strings;
  std::unordered_map<std::string, int> m_index;
};

// The level's tables, made anew for each level and locked once it has started, as the engine keeps them.
class CStringTables final : public INetworkStringTableContainer {
public:
  explicit CStringTables(CSimWorld& world) : m_world(world) {}
  INetworkStringTable* FindTable(const char* name) const override;
  INetworkStringTable* GetTable(int id) const override;
  int GetNumTables() const override { return int(m_tables.size()); }
  void Reset(const char* mapName);
  bool Lock(bool lock);
  bool Locked() const { return m_locked; }
  CStringTable* Table(const char* name) const { return static_cast<CStringTable*>(FindTable(name)); }
  CSimWorld& World() const { return m_world; }

private:
  CSimWorld& m_world;
  bool m_locked = false;
  std::vector<std::unique_ptr<CStringTable>> m_tables;
};

class CRandomStream final : public IUniformRandomStream {
public:
  void SetSeed(int seed) override { m_rng.seed(uint32_t(seed)); }
  float RandomFloat(float min, float max) override;
  int RandomInt(int min, int max) override;

private:
  std::mt19937 m_rng{20070926u};
};

class CPhysicsEnvironment;

// A physics prop's simulated body. Position and angles are the entity's own networked origin and angles.
// While awake it moves by its velocity each frame; a push (a force, a velocity, a position, the input
// Wake) wakes it, and PHYSICS_SLEEP_FRAMES frames without one put it to sleep with its velocity gone.
class CPhysicsObject final : public IPhysicsObject {
public:
  CPhysicsObject(CEntity& entity, CPhysicsEnvironment& environment) : m_entity(entity), m_environment(environment) {}
  void* GetGameData() const override;
  unsigned short GetGameIndex() const override;
  void SetMass(float mass) override;
  float GetMass() const override { return m_mass; }
  void ApplyForceCenter(const Vector& force) override;
  void SetPosition(const Vector& position, const QAngle& angles, bool teleport) override;
  void GetPosition(Vector* position, QAngle* angles) const override;
  void SetVelocity(const Vector* velocity, const AngularImpulse* angular) override;
  void GetVelocity(Vector* velocity, AngularImpulse* angular) const override;
  bool IsAsleep() const override { return m_asleep; }

  // Moves the object by its velocity over `seconds` and counts a quiet frame; true when the object has just
  // fallen asleep.
  bool QuietFrame(float seconds);
  // A push: the object wakes (true when it was asleep) and its quiet frames start again.
  bool Push();
  // Falls asleep at once (the input Sleep); true when it was awake.
  bool Sleep();
  CEntity& Entity() const { return m_entity; }

private:
  CEntity& m_entity;
  CPhysicsEnvironment& m_environment;
  float m_mass = PHYSICS_DEFAULT_MASS;
  Vector m_velocity;
  AngularImpulse m_angular;
  bool m_asleep = false;
  int m_quietFrames = 0;
};

// The level's environment 0: made fresh for each level (gravity 0,0,-600, air density 2, no handler).
class CPhysicsEnvironment final : public IPhysicsEnvironment {
public:
  void SetGravity(const Vector& gravity) override { m_gravity = gravity; }
  void GetGravity(Vector* gravity) const override;
  void SetAirDensity(float density) override { m_airDensity = density; }
  float GetAirDensity() const override { return m_airDensity; }
  void SetObjectEventHandler(IPhysicsObjectEvent* handler) override { m_handler = handler; }
  int GetActiveObjectCount() const override;
  void GetActiveObjects(IPhysicsObject** out) const override;

  void Add(CPhysicsObject* object) { m_objects.push_back(object); }
  void Remove(CPhysicsObject* object);
  void Woke(CPhysicsObject* object);
  void Slept(CPhysicsObject* object);
  // One frame of `seconds`: awake objects move, objects left alone fall asleep.
  void Frame(float seconds);
  // The state of a new level. Objects of the old level are gone with their entities.
  void Reset();
  // The objects in order of making.
  const std::vector<CPhysicsObject*>& Objects() const { return m_objects; }

private:
  static constexpr float kDefaultAirDensity = 2.0f;
  static Vector DefaultGravity() { return Vector(0, 0, -600); }
  Vector m_gravity = DefaultGravity();
  float m_airDensity = kDefaultAirDensity;
  IPhysicsObjectEvent* m_handler = nullptr;
  std::vector<CPhysicsObject*> m_objects;  // in order of making
};

class CPhysics final : public IPhysics {
public:
  IPhysicsEnvironment* GetActiveEnvironmentByIndex(int index) override { return index == 0 ? &m_environment : nullptr; }
  CPhysicsEnvironment& Environment() { return m_environment; }

private:
  CPhysicsEnvironment m_environment;
};

// Client variable queries wait here until their answer is due.
struct PendingQuery {
  QueryCvarCookie_t cookie;
  int userid;
  std::string name;
  long long dueFrame;
};

class CPluginHelpers final : public IServerPluginHelpers {
public:
  // Frames between a query and its answer.
  static constexpr int kQueryFrames = 2;
  explicit CPluginHelpers(CSimWorld& world) : m_world(world) {}
  void CreateMessage(edict_t* edict, DIALOG_TYPE type, KeyValues* data, IServerPluginCallbacks* plugin) override;
  void ClientCommand(edict_t* edict, const char* command) override;
  QueryCvarCookie_t StartQueryCvarValue(edict_t* edict, const char* name) override;

  // Answers the queries that are due by `frame`.
  void AnswerQueries(long long frame);
  bool QueriesPending() const { return !m_queries.empty(); }

private:
  CSimWorld& m_world;
  QueryCvarCookie_t m_nextCookie = 1;
  std::deque<PendingQuery> m_queries;
};
