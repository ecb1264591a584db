// The game's server classes and send tables, built once over the one entity layout, the entity names the
// game knows, and the entity objects themselves.
#include "world/entities.h"

#include <strings.h>

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "world/services.h"

namespace {

// clang-format off
const EntityType kEntityTypes[] = {
    // name                serverClass      model                                   clip physics creatable
    {"worldspawn",         "CWorld",        "",                                     -1, false, false},
    {"player",             "CCSPlayer",     "models/player.mdl",                    -1, false, false},
    {"weapon_ak47",        "CWeaponCSBase", "models/weapons/w_rif_ak47.mdl",        30, false, true},
    {"weapon_m4a1",        "CWeaponCSBase", "models/weapons/w_rif_m4a1.mdl",        30, false, true},
    {"weapon_awp",         "CWeaponCSBase", "models/weapons/w_snip_awp.mdl",        10, false, true},
    {"weapon_deagle",      "CWeaponCSBase", "models/weapons/w_pist_deagle.mdl",      7, false, true},
    {"weapon_usp",         "CWeaponCSBase", "models/weapons/w_pist_usp.mdl",        12, false, true},
    {"weapon_glock",       "CWeaponCSBase", "models/weapons/w_pist_glock18.mdl",    20, false, true},
    {"weapon_knife",       "CWeaponCSBase", "models/weapons/w_knife_t.mdl",         -1, false, true},
    {"weapon_hegrenade",   "CWeaponCSBase", "models/weapons/w_eq_fraggrenade.mdl",  -1, false, true},
    {"weapon_flashbang",   "CWeaponCSBase", "models/weapons/w_eq_flashbang.mdl",    -1, false, true},
    {"weapon_c4",          "CWeaponCSBase", "models/weapons/w_c4.mdl",              -1, false, true},
    {"item_assaultsuit",   "CBaseEntity",   "models/items/battery.mdl",             -1, false, true},
    {"item_kevlar",        "CBaseEntity",   "models/items/battery.mdl",             -1, false, true},
    {"info_target",        "CBaseEntity",   "",                                     -1, false, true},
    {"prop_physics",       "CPhysicsProp",  "",                                     -1, true,  true},
    {"prop_dynamic",       "CDynamicProp",  "",                                     -1, false, true},
    {"entity_blocker",     "CBaseEntity",   "",                                     -1, false, true},
};
// clang-format on

std::unordered_set<const void*> g_liveEntities;

SendProp Prop(SendPropType type, const char* name, int offset, SendTable* table = nullptr, int elements = 1) {
  SendProp p;
  p.m_Type = type;
  p.m_pVarName = name;
  p.m_pDataTable = table;
  p.m_Offset = offset;
  p.m_nElements = elements;
  return p;
}

// The send tables and server classes, made once over the entity layout. A table's offsets are relative to
// the table that holds it: the "baseclass" tables stand at 0, so inherited properties keep their offsets.
struct ClassTables {
  std::vector<SendProp> baseEntity, world, playerState, basePlayer, csPlayer, weapon, physicsProp, dynamicProp;
  SendTable tBaseEntity, tWorld, tPlayerState, tBasePlayer, tCSPlayer, tWeapon, tPhysicsProp, tDynamicProp;
  ServerClass classes[7];

  ClassTables() {
    const int f = EntityFieldsOffset();
    auto at = [f](size_t fieldOffset) { return f + int(fieldOffset); };
    baseEntity = {Prop(DPT_Vector, "m_vecOrigin", at(offsetof(EntityFields, origin))),
                  Prop(DPT_Vector, "m_angRotation", at(offsetof(EntityFields, angles))),
                  Prop(DPT_Int, "m_iTeamNum", at(offsetof(EntityFields, teamNum))),
                  Prop(DPT_Int, "m_nModelIndex", at(offsetof(EntityFields, modelIndex))),
                  Prop(DPT_Int, "m_hOwnerEntity", at(offsetof(EntityFields, ownerEntity)))};
    world = {Prop(DPT_Float, "m_flWorldVersion", 0), Prop(DPT_DataTable, "baseclass", 0, &tBaseEntity)};
    playerState = {Prop(DPT_Int, "deadflag", int(offsetof(PlayerStateFields, deadflag)))};
    basePlayer = {Prop(DPT_DataTable, "baseclass", 0, &tBaseEntity),
                  Prop(DPT_Int, "m_iHealth", at(offsetof(EntityFields, health))),
                  Prop(DPT_Int, "m_lifeState", at(offsetof(EntityFields, lifeState))),
                  Prop(DPT_Int, "m_fFlags", at(offsetof(EntityFields, flags))),
                  Prop(DPT_DataTable, "pl", at(offsetof(EntityFields, pl)), &tPlayerState)};
    csPlayer = {Prop(DPT_DataTable, "baseclass", 0, &tBasePlayer),
                Prop(DPT_Int, "m_iAccount", at(offsetof(EntityFields, account))),
                Prop(DPT_Int, "m_ArmorValue", at(offsetof(EntityFields, armorValue))),
                Prop(DPT_Int, "m_bHasHelmet", at(offsetof(EntityFields, hasHelmet))),
                Prop(DPT_Array, "m_iAmmo", at(offsetof(EntityFields, ammo)), nullptr, ENTITY_AMMO_TYPES),
                Prop(DPT_String, "m_szLastPlaceName", at(offsetof(EntityFields, lastPlaceName)))};
    weapon = {Prop(DPT_DataTable, "baseclass", 0, &tBaseEntity),
              Prop(DPT_Int, "m_iClip1", at(offsetof(EntityFields, clip1)))};
    physicsProp = {Prop(DPT_DataTable, "baseclass", 0, &tBaseEntity),
                   Prop(DPT_Int, "m_nSkin", at(offsetof(EntityFields, skin)))};
    dynamicProp = physicsProp;

    Table(tBaseEntity, baseEntity, "DT_BaseEntity");
    Table(tWorld, world, "DT_WORLD");
    Table(tPlayerState, playerState, "DT_PlayerState");
    Table(tBasePlayer, basePlayer, "DT_BasePlayer");
    Table(tCSPlayer, csPlayer, "DT_CSPlayer");
    Table(tWeapon, weapon, "DT_WeaponCSBase");
    Table(tPhysicsProp, physicsProp, "DT_PhysicsProp");
    Table(tDynamicProp, dynamicProp, "DT_DynamicProp");

    const std::pair<const char*, SendTable*> order[] = {
        {"CWorld", &tWorld},          {"CBaseEntity", &tBaseEntity},   {"CBasePlayer", &tBasePlayer},
        {"CCSPlayer", &tCSPlayer},    {"CWeaponCSBase", &tWeapon},     {"CPhysicsProp", &tPhysicsProp},
        {"CDynamicProp", &tDynamicProp}};
    for (int i = 0; i < 7; ++i) {
      classes[i].m_pNetworkName = order[i].first;
      classes[i].m_pTable = order[i].second;
      classes[i].m_ClassID = i;
      classes[i].m_InstanceBaselineIndex = i;
      classes[i].m_pNext = i + 1 < 7 ? &classes[i + 1] : nullptr;
    }
  }

  static void Table(SendTable& t, std::vector<SendProp>& props, const char* name) {
    t.m_pProps = props.data();
    t.m_nProps = int(props.size());
    t.m_pNetTableName = name;
  }
};

ClassTables& Tables() {
  static ClassTables tables;
  return tables;
}

}  // namespace

const EntityType* FindEntityType(const char* name) {
  if (!name) return nullptr;
  for (const EntityType& t : kEntityTypes)
    if (strcasecmp(t.name, name) == 0) return &t;
  return nullptr;
}

ServerClass* EntityServerClasses() { return &Tables().classes[0]; }

ServerClass* FindServerClass(const char* networkName) {
  for (ServerClass* c = EntityServerClasses(); c; c = c->m_pNext)
    if (strcasecmp(c->m_pNetworkName, networkName) == 0) return c;
  return nullptr;
}

int EntityFieldsOffset() {
  static const int offset = [] {
    edict_t probeEdict;
    CEntity probe(&probeEdict, kEntityTypes[0]);
    const char* object = reinterpret_cast<const char*>(static_cast<IServerUnknown*>(&probe));
    return int(reinterpret_cast<const char*>(&probe.fields) - object);
  }();
  return offset;
}

// ---- entity objects ----

CEntity::CEntity(edict_t* edict, const EntityType& type)
    : m_edict(edict), m_type(type), m_serverClass(nullptr) {
  fields.ownerEntity = -1;
  fields.clip1 = type.clip;
  g_liveEntities.insert(static_cast<IServerUnknown*>(this));
}

CEntity::~CEntity() { g_liveEntities.erase(static_cast<IServerUnknown*>(this)); }

// Found on first use, so that the probe that measures the layout needs no class tables.
ServerClass* CEntity::GetServerClass() {
  if (!m_serverClass) m_serverClass = FindServerClass(m_type.serverClass);
  return m_serverClass;
}

CBaseEntity* CEntity::GetBaseEntity() {
  return reinterpret_cast<CBaseEntity*>(static_cast<IServerUnknown*>(this));
}

CEntity* CEntity::FromBaseEntity(CBaseEntity* entity) {
  if (!entity || !g_liveEntities.count(entity)) return nullptr;
  return static_cast<CEntity*>(reinterpret_cast<IServerUnknown*>(entity));
}

void CEntity::SetPhysics(std::unique_ptr<CPhysicsObject> physics) { m_physics = std::move(physics); }
