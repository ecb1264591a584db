// Entities: server classes and offsets reaching the stand-in's own storage, the edicts' flags and counts,
// the game's cheat commands and whom they act for, physics props and the game's entity interface.
#include <gtest/gtest.h>

#include "iplayerinfo.h"
#include "vphysics.h"
#include "world_fixture.h"

namespace {

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
  IServerGameDLL* Dll() { return GameInterface<IServerGameDLL>("ServerGameDLL005"); }
  int Offset(const char* path) { return PropertyOffset(Dll(), path); }
  char* Object(int index) { return reinterpret_cast<char*>(Engine().PEntityOfEntIndex(index)->GetUnknown()); }
  IPlayerInfo* Info(int index) {
    return GameInterface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(Engine().PEntityOfEntIndex(index));
  }
  std::string Wrapped(const char* command, int slot, bool cheats, const std::string& args) {
    g_wrapped = command;
    g_wrapSlot = slot;
    g_wrapCheats = cheats;
    return server.Run("test_wrap " + args);
  }
};

TEST_F(EntityTest, ServerClassesPublishTheirProperties) {
  std::string names;
  for (ServerClass* c = Dll()->GetAllServerClasses(); c; c = c->m_pNext) names += std::string(c->GetName()) + " ";
  EXPECT_EQ(names, "CWorld CBaseEntity CBasePlayer CCSPlayer CWeaponCSBase CPhysicsProp CDynamicProp ");
  EXPECT_EQ(Offset("CWorld.m_flWorldVersion"), 0);
  EXPECT_GT(Offset("CBaseEntity.m_vecOrigin"), 0);
  EXPECT_EQ(Offset("CCSPlayer.baseclass.baseclass.m_iTeamNum"), Offset("CBaseEntity.m_iTeamNum"));
  EXPECT_EQ(Offset("cbaseplayer.PL.DeadFlag"), Offset("CBasePlayer.pl.deadflag"));
  EXPECT_EQ(Offset("CBasePlayer.pl"), -1);
  EXPECT_EQ(Offset("CCSPlayer.m_iHealth"), -1);  // inherited properties are reached through "baseclass"
}

TEST_F(EntityTest, PropertyWritesReachWhatPlayerInfoReads) {
  server.Run("sim_connect Alice");
  char* player = Object(1);
  *reinterpret_cast<int*>(player + Offset("CBasePlayer.m_iHealth")) = 42;
  *reinterpret_cast<int*>(player + Offset("CCSPlayer.m_ArmorValue")) = 77;
  *reinterpret_cast<int*>(player + Offset("CBaseEntity.m_iTeamNum")) = 3;
  float* origin = reinterpret_cast<float*>(player + Offset("CBaseEntity.m_vecOrigin"));
  origin[0] = 5, origin[1] = 6, origin[2] = 7;
  EXPECT_EQ(Info(1)->GetHealth(), 42);
  EXPECT_EQ(Info(1)->GetArmorValue(), 77);
  EXPECT_EQ(Info(1)->GetTeamIndex(), 3);
  EXPECT_EQ(Info(1)->GetAbsOrigin(), Vector(5, 6, 7));
  *reinterpret_cast<int*>(player + Offset("CBasePlayer.pl.deadflag")) = 1;
  EXPECT_TRUE(Info(1)->IsDead());
  server.Run("sim_set 2 money 1234");
  EXPECT_EQ(*reinterpret_cast<int*>(player + Offset("CCSPlayer.m_iAccount")), 1234);
}

TEST_F(EntityTest, TheDeadFlagFollowsTheDeadState) {
  server.Run("sim_connect A\nsim_connect B");
  int deadflag = Offset("CBasePlayer.pl.deadflag");
  int lifeState = Offset("CBasePlayer.m_lifeState");
  server.Run("sim_kill 2 3");
  EXPECT_EQ(*reinterpret_cast<int*>(Object(2) + deadflag), 1);
  EXPECT_EQ(*reinterpret_cast<int*>(Object(2) + lifeState), int(LIFE_DEAD));
  server.Run("sim_spawn 3");
  EXPECT_EQ(*reinterpret_cast<int*>(Object(2) + deadflag), 0);
  EXPECT_EQ(*reinterpret_cast<int*>(Object(2) + lifeState), int(LIFE_ALIVE));
}

TEST_F(EntityTest, EdictsCarryClassNamesHandlesAndFlags) {
  server.Run("sim_connect Alice");
  edict_t* e = Engine().PEntityOfEntIndex(1);
  EXPECT_STREQ(e->GetNetworkable()->GetClassName(), "player");
  EXPECT_STREQ(e->GetNetworkable()->GetServerClass()->GetName(), "CCSPlayer");
  const CBaseHandle& handle = e->GetUnknown()->GetRefEHandle();
  EXPECT_EQ(handle.GetEntryIndex(), 1);
  EXPECT_EQ(handle.GetSerialNumber(), e->m_NetworkSerialNumber);
  EXPECT_STREQ(Engine().PEntityOfEntIndex(0)->GetNetworkable()->GetServerClass()->GetName(), "CWorld");
  EXPECT_EQ(Engine().PEntityOfEntIndex(-1), nullptr);
  EXPECT_EQ(Engine().PEntityOfEntIndex(2048), nullptr);
  EXPECT_EQ(Engine().IndexOfEdict(nullptr), -1);
}

TEST_F(EntityTest, CheatCommandsWantSvCheatsEvenThroughDispatch) {
  server.Run("sim_connect Alice");
  EXPECT_EQ(server.Run("sim_client 2 give weapon_ak47"), "Can't use cheat command give unless sv_cheats is 1\n");
  EXPECT_EQ(Wrapped("give", 1, false, "weapon_ak47"), "Can't use cheat command give unless sv_cheats is 1\n");
  EXPECT_EQ(Engine().GetEntityCount(), 2);
  EXPECT_EQ(server.Server().Console().FindVar("sv_cheats")->GetInt(), 0);
}

TEST_F(EntityTest, GiveMakesAnEntityForTheCommandClient) {
  server.Run("sim_connect Alice\nsim_connect Bob\nsim_set 3 origin 10,20,30");
  EXPECT_EQ(Wrapped("give", 2, true, "weapon_awp"), "> precache model: \"models/weapons/w_snip_awp.mdl\" at 5\n");
  edict_t* e = Engine().PEntityOfEntIndex(5);  // the lowest free index above the four player slots
  ASSERT_NE(e, nullptr);
  EXPECT_STREQ(e->GetNetworkable()->GetClassName(), "weapon_awp");
  EXPECT_EQ(*reinterpret_cast<int*>(Object(5) + Offset("CWeaponCSBase.m_iClip1")), 10);
  float* origin = reinterpret_cast<float*>(Object(5) + Offset("CBaseEntity.m_vecOrigin"));
  EXPECT_EQ(Vector(origin[0], origin[1], origin[2]), Vector(10, 20, 30));
  EXPECT_STREQ(Info(2)->GetWeaponName(), "weapon_awp");
  EXPECT_STREQ(Info(1)->GetWeaponName(), "");
  EXPECT_EQ(Engine().GetEntityCount(), 6);
  EXPECT_EQ(Wrapped("give", 2, true, "weapon_bfg"), "NULL Ent in GiveNamedItem! (weapon_bfg)\n");
  EXPECT_EQ(Engine().PEntityOfEntIndex(6), nullptr);
  EXPECT_EQ(Wrapped("give", 0, true, "weapon_awp"), "give: no player runs this (the server console acts for nobody)\n");
}

TEST_F(EntityTest, SetposAndSetangMoveTheCommandClient) {
  server.Run("sim_connect Alice\nsim_connect Bob");
  Wrapped("setpos", 2, true, "1 2 3");
  Wrapped("setang", 2, true, "10 20");
  EXPECT_EQ(Info(2)->GetAbsOrigin(), Vector(1, 2, 3));
  EXPECT_EQ(Info(2)->GetAbsAngles().y, 20.0f);
  EXPECT_EQ(Info(1)->GetAbsOrigin(), Vector(0, 0, 0));
  EXPECT_NE(Engine().PEntityOfEntIndex(2)->m_fStateFlags & FL_EDICT_CHANGED, 0);
}

TEST_F(EntityTest, RemovingFreesTheEdictAndTheHighWaterMarkStays) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 ent_create info_target targetname spot\n"
             "sim_client 2 prop_dynamic_create tree");
  EXPECT_EQ(Engine().GetEntityCount(), 7);
  edict_t* spot = Engine().PEntityOfEntIndex(5);
  int serial = spot->m_NetworkSerialNumber;
  EXPECT_EQ(server.Run("ent_remove spot"), "Removed 5 (info_target)\n");
  EXPECT_TRUE(spot->IsFree());
  EXPECT_EQ(spot->GetNetworkable(), nullptr);
  EXPECT_EQ(Engine().GetEntityCount(), 7);
  EXPECT_EQ(server.Run("ent_remove 1"), "ent_remove: 1 (player) can't be removed\n");
  server.Run("sim_client 2 Test_CreateEntity info_target");
  EXPECT_EQ(spot->m_NetworkSerialNumber, serial + 1);
  EXPECT_EQ(server.Run("ent_remove nothing_here"), "ent_remove: no entity \"nothing_here\"\n");
}

TEST_F(EntityTest, EntFireShowsInputsAndActsOnKnownOnes) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 give weapon_knife\nsim_client 2 ent_setname blade");
  EXPECT_EQ(server.Run("ent_fire blade Color \"255 0 0\""), "> input: Color \"255 0 0\" to 5 (weapon_knife \"blade\")\n");
  EXPECT_EQ(server.Run("ent_fire blade Kill \"\" 0.5"), "");
  EXPECT_NE(Engine().PEntityOfEntIndex(5), nullptr);
  EXPECT_EQ(server.Run("sim_advance 1"), "> input: Kill \"\" to 5 (weapon_knife \"blade\")\n");
  EXPECT_EQ(Engine().PEntityOfEntIndex(5), nullptr);
  server.Run("ent_fire 1 SetHealth 30");
  EXPECT_EQ(Info(1)->GetHealth(), 30);
}

TEST_F(EntityTest, PhysicsPropsAreActivePhysicsObjects) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 prop_physics_create props/barrel");
  auto* physics = EngineInterface<IPhysics>("VPhysics030");
  auto* ents = GameInterface<IServerGameEnts>("ServerGameEnts001");
  IPhysicsEnvironment* env = physics->GetActiveEnvironmentByIndex(0);
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(physics->GetActiveEnvironmentByIndex(1), nullptr);
  ASSERT_EQ(env->GetActiveObjectCount(), 1);
  IPhysicsObject* object = nullptr;
  env->GetActiveObjects(&object);
  edict_t* edict = ents->BaseEntityToEdict(static_cast<CBaseEntity*>(object->GetGameData()));
  EXPECT_EQ(Engine().IndexOfEdict(edict), 5);
  EXPECT_EQ(object->GetGameIndex(), 5);
  EXPECT_EQ(ents->EdictToBaseEntity(edict), object->GetGameData());
  object->SetPosition(Vector(4, 5, 6), QAngle(), true);
  float* origin = reinterpret_cast<float*>(Object(5) + Offset("CBaseEntity.m_vecOrigin"));
  EXPECT_EQ(Vector(origin[0], origin[1], origin[2]), Vector(4, 5, 6));
  int forged = 0;
  EXPECT_EQ(ents->BaseEntityToEdict(reinterpret_cast<CBaseEntity*>(&forged)), nullptr);
  EXPECT_EQ(ents->BaseEntityToEdict(nullptr), nullptr);
}

TEST_F(EntityTest, ObjectsFallAsleepAndWakeThroughTheHandler) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 prop_physics_create barrel");
  struct Handler : IPhysicsObjectEvent {
    std::string seen;
    void ObjectWake(IPhysicsObject* o) override { seen += "wake " + std::to_string(o->GetGameIndex()) + ";"; }
    void ObjectSleep(IPhysicsObject* o) override { seen += "sleep " + std::to_string(o->GetGameIndex()) + ";"; }
  } handler;
  IPhysicsEnvironment* env = EngineInterface<IPhysics>("VPhysics030")->GetActiveEnvironmentByIndex(0);
  env->SetObjectEventHandler(&handler);
  server.Run("sim_frames " + std::to_string(PHYSICS_SLEEP_FRAMES + 1));
  EXPECT_EQ(handler.seen, "sleep 5;");
  EXPECT_EQ(env->GetActiveObjectCount(), 0);
  IPhysicsObject* asleep = World().EntityAt(5)->Physics();
  asleep->ApplyForceCenter(Vector(0, 0, 100));
  EXPECT_EQ(handler.seen, "sleep 5;wake 5;");
  EXPECT_EQ(env->GetActiveObjectCount(), 1);
  env->SetObjectEventHandler(nullptr);
}

}  // namespace
