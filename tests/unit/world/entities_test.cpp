// Entities: property offsets reaching the storage player info reads, edicts freed and reused, the game's
// cheat commands gated by sv_cheats and acting for the command client, physics objects.
#include <gtest/gtest.h>

#include <sstream>

#include "dt_send.h"
#include "iplayerinfo.h"
#include "vphysics.h"
#include "world_fixture.h"

namespace {

// The offset of a dotted property path, walked through the server classes as a plugin walks them; -1 when
// the path doesn't end at a property.
int PropertyOffset(IServerGameDLL* dll, const char* path) {
  std::vector<std::string> parts;
  std::istringstream in(path);
  for (std::string part; std::getline(in, part, '.');) parts.push_back(part);
  SendTable* table = nullptr;
  for (ServerClass* c = dll->GetAllServerClasses(); c; c = c->m_pNext)
    if (strcasecmp(c->GetName(), parts[0].c_str()) == 0) table = c->m_pTable;
  int offset = 0;
  for (size_t i = 1; table && i < parts.size(); ++i) {
    SendProp* found = nullptr;
    for (int j = 0; j < table->GetNumProps(); ++j) {
      SendProp* prop = table->GetProp(j);
      if (prop->GetName() && strcasecmp(prop->GetName(), parts[i].c_str()) == 0) found = prop;
    }
    if (!found) return -1;
    offset += found->GetOffset();
    if (found->GetType() != DPT_DataTable) return i + 1 == parts.size() ? offset : -1;
    table = found->GetDataTable();
  }
  return -1;
}

// What a plugin's command wrapper does: `test_wrap ARGS` runs the game's command `g_wrapped` through its
// Dispatch for the player in `g_wrapSlot`, with the cheat gate's fields opened for that one call when
// `g_wrapCheats` says so.
const char* g_wrapped = "";
int g_wrapSlot = 0;
bool g_wrapCheats = false;

void Wrap_f() {
  CCvar& console = g_standIn->Console();
  ConVar* cheats = console.FindVar("sv_cheats");
  int savedInt = cheats->m_nValue;
  float savedFloat = cheats->m_fValue;
  if (g_wrapCheats) cheats->m_nValue = 1, cheats->m_fValue = 1;
  static_cast<IServerGameClients*>(CStandIn::GameFactory("ServerGameClients003", nullptr))->SetCommandClient(g_wrapSlot - 1);
  static_cast<ConCommand*>(console.FindCommandBase(g_wrapped))->Dispatch();
  cheats->m_nValue = savedInt, cheats->m_fValue = savedFloat;
}

class EntityTest : public WorldTest {
protected:
  EntityTest() {
    const ConsoleCommandDef def[] = {{"test_wrap", Wrap_f, "", 0}};
    server.Server().Console().AddCommands(def, 1);
  }
  int Offset(const char* path) { return PropertyOffset(Iface<IServerGameDLL>("ServerGameDLL005"), path); }
  // The property at `path` of the entity at `index`, reached by its offset as a plugin reaches it.
  template <class T>
  T& Field(int index, const char* path) {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(Edict(index)->GetUnknown()) + Offset(path));
  }
  IPlayerInfo* Info(int index) { return Iface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(Edict(index)); }
  std::string Wrapped(const char* command, int slot, bool cheats, const std::string& args) {
    g_wrapped = command;
    g_wrapSlot = slot;
    g_wrapCheats = cheats;
    return server.Run("test_wrap " + args);
  }
};

TEST_F(EntityTest, ServerClassesPublishTheirPropertiesAndInheritedOnesGoThroughBaseclass) {
  std::string names;
  for (ServerClass* c = Iface<IServerGameDLL>("ServerGameDLL005")->GetAllServerClasses(); c; c = c->m_pNext)
    names += std::string(c->GetName()) + " ";
  EXPECT_EQ(names, "CWorld CBaseEntity CBasePlayer CCSPlayer CWeaponCSBase CPhysicsProp CDynamicProp ");
  EXPECT_EQ(Offset("CWorld.m_flWorldVersion"), 0);
  EXPECT_GT(Offset("CBaseEntity.m_vecOrigin"), 0);
  EXPECT_EQ(Offset("CCSPlayer.baseclass.baseclass.m_iTeamNum"), Offset("CBaseEntity.m_iTeamNum"));
  EXPECT_EQ(Offset("cbaseplayer.PL.DeadFlag"), Offset("CBasePlayer.pl.deadflag"));
  EXPECT_EQ(Offset("CBasePlayer.pl"), -1);
  EXPECT_EQ(Offset("CCSPlayer.m_iHealth"), -1);
}

TEST_F(EntityTest, PropertyWritesReachWhatPlayerInfoReadsAndTheDeadFlagFollowsDeath) {
  server.Run("sim_connect Alice\nsim_connect Bob");
  Field<int>(1, "CBasePlayer.m_iHealth") = 42;
  Field<int>(1, "CCSPlayer.m_ArmorValue") = 77;
  Field<int>(1, "CBaseEntity.m_iTeamNum") = 3;
  Field<Vector>(1, "CBaseEntity.m_vecOrigin") = Vector(5, 6, 7);
  IPlayerInfo* info = Info(1);
  EXPECT_EQ(info->GetHealth(), 42);
  EXPECT_EQ(info->GetArmorValue(), 77);
  EXPECT_EQ(info->GetTeamIndex(), 3);
  EXPECT_EQ(info->GetAbsOrigin(), Vector(5, 6, 7));
  EXPECT_EQ(info->GetUserID(), 2);
  Field<int>(1, "CBasePlayer.pl.deadflag") = 1;
  EXPECT_TRUE(info->IsDead());
  info->ChangeTeam(2);
  EXPECT_EQ(Field<int>(1, "CBaseEntity.m_iTeamNum"), 2);
  server.Run("sim_set 2 money 1234\nsim_kill 2 3");
  EXPECT_EQ(Field<int>(1, "CCSPlayer.m_iAccount"), 1234);
  EXPECT_EQ(Field<int>(2, "CBasePlayer.pl.deadflag"), 1);
  EXPECT_EQ(Field<int>(2, "CBasePlayer.m_lifeState"), int(LIFE_DEAD));
  server.Run("sim_spawn 3");
  EXPECT_EQ(Field<int>(2, "CBasePlayer.pl.deadflag"), 0);
  EXPECT_EQ(Field<int>(2, "CBasePlayer.m_lifeState"), int(LIFE_ALIVE));
  EXPECT_EQ(Iface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(Edict(0)), nullptr);
  EXPECT_EQ(Iface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(nullptr), nullptr);
}

TEST_F(EntityTest, ARemovedEntitysEdictIsSeenAsFreeAndComesBackWithANewSerial) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 ent_create info_target targetname spot\n"
             "sim_client 2 prop_dynamic_create tree");
  const CBaseHandle& handle = Edict(1)->GetUnknown()->GetRefEHandle();
  EXPECT_EQ(handle.GetEntryIndex(), 1);
  EXPECT_EQ(handle.GetSerialNumber(), Edict(1)->m_NetworkSerialNumber);
  edict_t* spot = Edict(5);
  int serial = spot->m_NetworkSerialNumber;
  EXPECT_EQ(server.Run("ent_remove spot"), "Removed 5 (info_target)\n");
  EXPECT_TRUE(spot->IsFree());
  EXPECT_EQ(spot->GetNetworkable(), nullptr);
  EXPECT_EQ(Edict(5), nullptr);
  EXPECT_EQ(Engine().GetEntityCount(), 7);  // the high-water mark stays
  server.Run("sim_client 2 Test_CreateEntity info_target");
  EXPECT_EQ(spot->m_NetworkSerialNumber, serial + 1);
  EXPECT_EQ(Edict(-1), nullptr);
  EXPECT_EQ(Edict(2048), nullptr);
  EXPECT_EQ(Engine().IndexOfEdict(nullptr), -1);
}

TEST_F(EntityTest, CheatCommandsWantSvCheatsEvenThroughDispatchAndActForTheCommandClient) {
  server.Run("sim_connect Alice\nsim_connect Bob\nsim_set 3 origin 10,20,30");
  EXPECT_EQ(Wrapped("give", 2, false, "weapon_awp"), "Can't use cheat command give unless sv_cheats is 1\n");
  EXPECT_EQ(Engine().GetEntityCount(), 3);
  EXPECT_EQ(Wrapped("give", 2, true, "weapon_awp"), "> precache model: \"models/weapons/w_snip_awp.mdl\" at 5\n");
  EXPECT_STREQ(Edict(5)->GetNetworkable()->GetClassName(), "weapon_awp");
  EXPECT_EQ(Field<int>(5, "CWeaponCSBase.m_iClip1"), 10);
  EXPECT_EQ(Field<Vector>(5, "CBaseEntity.m_vecOrigin"), Vector(10, 20, 30));
  EXPECT_STREQ(Info(2)->GetWeaponName(), "weapon_awp");
  EXPECT_STREQ(Info(1)->GetWeaponName(), "");
  Wrapped("setpos", 2, true, "1 2 3");
  EXPECT_EQ(Info(2)->GetAbsOrigin(), Vector(1, 2, 3));
  EXPECT_EQ(Info(1)->GetAbsOrigin(), Vector(0, 0, 0));
  EXPECT_NE(Edict(2)->m_fStateFlags & FL_EDICT_CHANGED, 0);
  EXPECT_EQ(Wrapped("give", 0, true, "weapon_awp"), "give: no player runs this (the server console acts for nobody)\n");
}

TEST_F(EntityTest, PhysicsPropsAreActiveObjectsThatSleepAndWake) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 prop_physics_create props/barrel");
  auto* ents = Iface<IServerGameEnts>("ServerGameEnts001");
  IPhysicsEnvironment* env = Iface<IPhysics>("VPhysics030")->GetActiveEnvironmentByIndex(0);
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(Iface<IPhysics>("VPhysics030")->GetActiveEnvironmentByIndex(1), nullptr);
  ASSERT_EQ(env->GetActiveObjectCount(), 1);
  IPhysicsObject* object = nullptr;
  env->GetActiveObjects(&object);
  EXPECT_EQ(ents->BaseEntityToEdict(static_cast<CBaseEntity*>(object->GetGameData())), Edict(5));
  EXPECT_EQ(ents->EdictToBaseEntity(Edict(5)), object->GetGameData());
  int forged = 0;
  EXPECT_EQ(ents->BaseEntityToEdict(reinterpret_cast<CBaseEntity*>(&forged)), nullptr);
  object->SetPosition(Vector(4, 5, 6), QAngle(), true);
  EXPECT_EQ(Field<Vector>(5, "CBaseEntity.m_vecOrigin"), Vector(4, 5, 6));
  struct Handler : IPhysicsObjectEvent {
    std::string seen;
    void ObjectWake(IPhysicsObject* o) override { seen += "wake " + std::to_string(o->GetGameIndex()) + ";"; }
    void ObjectSleep(IPhysicsObject* o) override { seen += "sleep " + std::to_string(o->GetGameIndex()) + ";"; }
  } handler;
  env->SetObjectEventHandler(&handler);
  server.Run("sim_frames " + std::to_string(PHYSICS_SLEEP_FRAMES + 1));
  EXPECT_EQ(env->GetActiveObjectCount(), 0);
  object->ApplyForceCenter(Vector(0, 0, 100));
  EXPECT_EQ(handler.seen, "sleep 5;wake 5;");
  EXPECT_EQ(env->GetActiveObjectCount(), 1);
  env->SetObjectEventHandler(nullptr);
}

}  // namespace
