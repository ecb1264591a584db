// Entities: property offsets reaching the storage player info reads, edicts freed and reused, the game's
// cheat commands acting for the command client, physics objects and their entities.
#include <gtest/gtest.h>

#include <sstream>

#include "dt_send.h"
#include "vphysics.h"
#include "world_fixture.h"

namespace {

class EntityTest : public WorldTest {
protected:
  IServerGameDLL* Dll() { return Iface<IServerGameDLL>("ServerGameDLL005"); }
  // The offset of a dotted property path, walked through the server classes as a plugin walks them; -1 when
  // the path doesn't end at a property.
  int Offset(const char* path) {
    std::istringstream in(path);
    std::string part;
    std::getline(in, part, '.');
    SendTable* table = nullptr;
    for (ServerClass* c = Dll()->GetAllServerClasses(); c; c = c->m_pNext)
      if (strcasecmp(c->GetName(), part.c_str()) == 0) table = c->m_pTable;
    for (int offset = 0; table && std::getline(in, part, '.');) {
      SendProp* found = nullptr;
      for (int i = 0; i < table->GetNumProps(); ++i)
        if (const char* name = table->GetProp(i)->GetName(); name && strcasecmp(name, part.c_str()) == 0)
          found = table->GetProp(i);
      if (!found) return -1;
      offset += found->GetOffset();
      if (found->GetType() != DPT_DataTable) return in.eof() ? offset : -1;
      table = found->GetDataTable();
    }
    return -1;
  }
  // The property at `path` of the entity at `index`, reached by its offset as a plugin reaches it.
  template <class T>
  T& Field(int index, const char* path) {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(Edict(index)->GetUnknown()) + Offset(path));
  }
};

TEST_F(EntityTest, PropertiesFoundThroughTheServerClassesReachWhatPlayerInfoReadsAndTheDeadFlagFollowsDeath) {
  server.Run("sim_connect Alice\nsim_connect Bob");
  Field<int>(1, "CBasePlayer.m_iHealth") = 42;
  Field<int>(1, "CCSPlayer.m_ArmorValue") = 77;
  Field<int>(1, "CBaseEntity.m_iTeamNum") = 3;
  IPlayerInfo* info = Info(1);
  EXPECT_EQ(info->GetHealth(), 42);
  EXPECT_EQ(info->GetArmorValue(), 77);
  EXPECT_EQ(info->GetTeamIndex(), 3);
  Field<int>(1, "CBasePlayer.pl.deadflag") = 1;
  EXPECT_TRUE(info->IsDead());
  info->ChangeTeam(2);
  EXPECT_EQ(Field<int>(1, "CBaseEntity.m_iTeamNum"), 2);
  server.Run("sim_kill 2 3");
  EXPECT_EQ(Field<int>(2, "CBasePlayer.m_lifeState"), int(LIFE_DEAD));
  server.Run("sim_spawn 3");
  EXPECT_EQ(Field<int>(2, "CBasePlayer.m_lifeState"), int(LIFE_ALIVE));
  EXPECT_EQ(Info(0), nullptr);
  EXPECT_EQ(Iface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(nullptr), nullptr);
}

TEST_F(EntityTest, CheatCommandsActForTheCommandClientAndARemovedEntitysEdictIsFree) {
  server.Run("sim_connect Alice\nsim_connect Bob\nsim_set 3 origin 10,20,30\nsv_cheats 1\n"
             "sim_client 3 give weapon_awp");
  EXPECT_EQ(Field<int>(5, "CWeaponCSBase.m_iClip1"), 10);
  EXPECT_EQ(Field<Vector>(5, "CBaseEntity.m_vecOrigin"), Vector(10, 20, 30));
  EXPECT_EQ(Edict(1)->m_fStateFlags & FL_EDICT_CHANGED, 0);
  server.Run("sim_client 2 setpos 1 2 3");
  EXPECT_NE(Edict(1)->m_fStateFlags & FL_EDICT_CHANGED, 0);
  const CBaseHandle& handle = Edict(1)->GetUnknown()->GetRefEHandle();
  EXPECT_EQ(handle.GetEntryIndex(), 1);
  EXPECT_EQ(handle.GetSerialNumber(), Edict(1)->m_NetworkSerialNumber);
  edict_t* awp = Edict(5);
  int serial = awp->m_NetworkSerialNumber;
  EXPECT_EQ(server.Run("ent_remove 5"), "Removed 5 (weapon_awp)\n");
  EXPECT_TRUE(awp->IsFree());
  EXPECT_EQ(awp->GetNetworkable(), nullptr);
  EXPECT_EQ(Edict(5), nullptr);
  EXPECT_EQ(Engine().GetEntityCount(), 6);  // the high-water mark stays
  server.Run("sim_client 2 Test_CreateEntity info_target");
  EXPECT_EQ(awp->m_NetworkSerialNumber, serial + 1);
  EXPECT_EQ(Edict(2048), nullptr);
  EXPECT_EQ(Engine().IndexOfEdict(nullptr), -1);
}

// The physics scenario shows objects sleeping and waking; here an object leads back to its edict, a forged
// entity pointer to none.
TEST_F(EntityTest, APhysicsObjectLeadsToItsEdictAndAForgedEntityToNone) {
  server.Run("sv_cheats 1\nsim_connect Alice\nsim_client 2 prop_physics_create props/barrel");
  auto* ents = Iface<IServerGameEnts>("ServerGameEnts001");
  IPhysicsEnvironment* env = Iface<IPhysics>("VPhysics030")->GetActiveEnvironmentByIndex(0);
  ASSERT_EQ(env->GetActiveObjectCount(), 1);
  IPhysicsObject* object = nullptr;
  env->GetActiveObjects(&object);
  EXPECT_EQ(ents->BaseEntityToEdict(static_cast<CBaseEntity*>(object->GetGameData())), Edict(5));
  int forged = 0;
  EXPECT_EQ(ents->BaseEntityToEdict(reinterpret_cast<CBaseEntity*>(&forged)), nullptr);
}

}  // namespace
