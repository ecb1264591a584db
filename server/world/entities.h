// The game's entities: the server classes with their send tables, the entity objects whose memory those
// tables describe, and the names of the entities the game can make. Where entities live (edicts, indexes,
// serial numbers) is the world's (sim_world.h); this file only knows one entity at a time.
#pragma once

#include <memory>
#include <string>

#include "dt_send.h"
#include "edict.h"

class CPhysicsObject;

constexpr int ENTITY_AMMO_TYPES = 32;
constexpr int ENTITY_PLACE_NAME_BYTES = 18;
constexpr int PLAYER_FULL_HEALTH = 100;
constexpr int PLAYER_FULL_ARMOR = 100;

// Values of m_lifeState.
enum { LIFE_ALIVE = 0, LIFE_DYING = 1, LIFE_DEAD = 2 };
// Bits of m_fFlags.
enum { FL_ONGROUND = 1 << 0, FL_FAKECLIENT = 1 << 8 };

// The networked storage of every entity, laid out as the send tables say. One layout serves all classes;
// a class's table names the part it has.
struct PlayerStateFields {
  int deadflag;
};
struct EntityFields {
  float worldVersion;
  Vector origin;
  QAngle angles;
  int teamNum;
  int modelIndex;
  int ownerEntity;  // entity handle value of the owner, -1 for none
  int skin;
  int health;
  int lifeState;
  int flags;
  PlayerStateFields pl;
  int account;
  int armorValue;
  int hasHelmet;
  int ammo[ENTITY_AMMO_TYPES];
  char lastPlaceName[ENTITY_PLACE_NAME_BYTES];
  int clip1;
};

// What the game knows of an entity name: its server class and how it starts.
struct EntityType {
  const char* name;
  const char* serverClass;  // network name
  const char* model;        // "" for none
  int clip;                 // m_iClip1 of a weapon, -1 for none
  bool physics;             // gets a physics object
  bool creatable;           // give, ent_create and the like may make it
};

// The type of an entity name (case ignored), or null.
const EntityType* FindEntityType(const char* name);
// The head of the server class list that GetAllServerClasses gives.
ServerClass* EntityServerClasses();
ServerClass* FindServerClass(const char* networkName);

class CEntity final : public IServerUnknown, public IServerNetworkable {
public:
  CEntity(edict_t* edict, const EntityType& type);
  ~CEntity();
  CEntity(const CEntity&) = delete;
  CEntity& operator=(const CEntity&) = delete;

  // ---- IServerUnknown ----
  void SetRefEHandle(const CBaseHandle& handle) override { m_handle = handle; }
  const CBaseHandle& GetRefEHandle() const override { return m_handle; }
  IServerNetworkable* GetNetworkable() override { return this; }
  CBaseEntity* GetBaseEntity() override;

  // ---- IServerNetworkable ----
  IHandleEntity* GetEntityHandle() override { return this; }
  ServerClass* GetServerClass() override;
  edict_t* GetEdict() const override { return m_edict; }
  const char* GetClassName() const override { return m_type.name; }
  void Release() override {}

  // The entity object whose unknown pointer this is, or null for a pointer that isn't one of ours.
  static CEntity* FromBaseEntity(CBaseEntity* entity);

  int Index() const { return m_handle.GetEntryIndex(); }
  const std::string& TargetName() const { return m_targetName; }
  void SetTargetName(const char* name) { m_targetName = name ? name : ""; }
  // The model's precache index; the name lives in the model precache table.
  void SetModel(int index) { fields.modelIndex = index; }
  CPhysicsObject* Physics() const { return m_physics.get(); }
  void SetPhysics(std::unique_ptr<CPhysicsObject> physics);

  EntityFields fields{};

private:
  edict_t* m_edict;
  const EntityType& m_type;
  ServerClass* m_serverClass;
  CBaseHandle m_handle;
  std::string m_targetName;
  std::unique_ptr<CPhysicsObject> m_physics;
};

// Byte offset of CEntity::fields from the entity object (the IServerUnknown pointer).
int EntityFieldsOffset();
