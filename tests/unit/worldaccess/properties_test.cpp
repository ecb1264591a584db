// Property paths and entity memory: offsets summed along datatables, names in any case, the ends of a walk
// (a datatable, an unknown type, a value with more path behind it), offset 0, the changed bit, the limits
// of a path and the refusal of a class the entity doesn't have. The game's own paths, read and written as a
// script does, are shown by the player_properties scenario.
#include <gtest/gtest.h>

#include <string>

#include "dt_send.h"
#include "worldaccess_fixture.h"
#include "world/properties.h"

namespace {

SendProp Prop(SendPropType type, const char* name, int offset, SendTable* table = nullptr) {
  SendProp p;
  p.m_Type = type;
  p.m_pVarName = name;
  p.m_Offset = offset;
  p.m_pDataTable = table;
  return p;
}

// outer: a@4, inner@100 { b@8, deep@20 { c@4 }, odd@12 of type 7, neg@16 of type -1 }, unnamed@1
struct Tables {
  SendProp deepProps[1] = {Prop(DPT_Float, "c", 4)};
  SendTable deep{deepProps, 1, "deep"};
  SendProp innerProps[4] = {Prop(DPT_Int, "b", 8), Prop(DPT_DataTable, "deep", 20, &deep),
                            Prop(SendPropType(7), "odd", 12), Prop(SendPropType(-1), "neg", 16)};
  SendTable inner{innerProps, 4, "inner"};
  SendProp outerProps[3] = {Prop(DPT_Vector, "a", 4), Prop(DPT_DataTable, "inner", 100, &inner),
                            Prop(DPT_Int, nullptr, 1)};
  SendTable outer{outerProps, 3, "outer"};
};

struct WalkCase {
  const char* path;
  bool found;
  int offset;  // only meaningful when found, but the reset of an unknown type is checked too
  int type;
};

TEST(PropertyWalk, OffsetsAddUpAlongTheDatatablesAndTheWalkEndsWhereItMust) {
  Tables t;
  const WalkCase cases[] = {
      {"a", true, 4, DPT_Vector},
      {"A", true, 4, DPT_Vector},                 // case ignored
      {"inner.b", true, 108, DPT_Int},
      {"INNER.Deep.C", true, 124, DPT_Float},     // the sum of three offsets
      {"a.ignored.rest", true, 4, DPT_Vector},    // the walk stops at the first value
      {"inner", false, 100, DPT_DataTable},       // a datatable end: empty head, nothing matches
      {"inner.deep", false, 120, DPT_DataTable},
      {"inner.odd", false, 0, 7},                 // an unknown type resets the offset
      {"inner.neg", false, 0, -1},
      {"missing", false, 0, -99},
      {"", false, 0, -99},
  };
  for (const WalkCase& c : cases) {
    int offset = 0, type = -99;
    EXPECT_EQ(FindPropertyInTable(&t.outer, c.path, offset, type), c.found) << c.path;
    EXPECT_EQ(offset, c.offset) << c.path;
    EXPECT_EQ(type, c.type) << c.path;
  }
}

TEST(PropertyWalk, SplitPathKeepsItsLimitsAndReportsANullPath) {
  std::string_view head, tail;
  EXPECT_TRUE(SplitPath("CBasePlayer.pl.deadflag", head, tail));
  EXPECT_EQ(head, "CBasePlayer");
  EXPECT_EQ(tail, "pl.deadflag");
  EXPECT_TRUE(SplitPath("NoDot", head, tail));
  EXPECT_EQ(head, "NoDot");
  EXPECT_EQ(tail, "");
  std::string longHead(kMaxPathHead + 1, 'c');
  EXPECT_FALSE(SplitPath((longHead + ".x").c_str(), head, tail));
  std::string longTail = "C." + std::string(kMaxPathTail + 1, 't');
  EXPECT_FALSE(SplitPath(longTail.c_str(), head, tail));
  OutputCapture capture;
  EXPECT_FALSE(SplitPath(nullptr, head, tail));
  EXPECT_EQ(capture.Text(), "ERROR: invalid SplitPath parameters.\n  Error source (console): (no script)\n");
}

class PropertiesTest : public WorldAccessTest {};

TEST_F(PropertiesTest, AnEntityReachesOnlyItsOwnClassAndItsBaseClasses) {
  int userid = Connect("Owner");
  edict_t* player = EdictOf(userid);
  CEntity* weapon = SimWorld().CreateEntity(*FindEntityType("weapon_ak47"), Vector());
  edict_t* gun = weapon->GetEdict();
  int offset = 0, type = 0;
  EXPECT_TRUE(FindEntityProperty(player, "CCSPlayer.m_iAccount", offset, type));
  EXPECT_TRUE(FindEntityProperty(gun, "CWeaponCSBase.m_iClip1", offset, type));
  EXPECT_FALSE(FindEntityProperty(gun, "CCSPlayer.m_iAccount", offset, type));
  EXPECT_FALSE(FindEntityProperty(player, "CWeaponCSBase.m_iClip1", offset, type));
  EXPECT_FALSE(FindEntityProperty(nullptr, "CBaseEntity.m_iTeamNum", offset, type));
  SimWorld().RemoveEntity(*weapon);
  EXPECT_FALSE(FindEntityProperty(gun, "CBaseEntity.m_iTeamNum", offset, type));  // a free edict
}

// The player_properties scenario shows the world's offset 0 never read or written; here the changed bit
// follows only a write that lands, and edicts without an entity are refused.
TEST_F(PropertiesTest, OnlyAWriteThatLandsMarksTheEdictChanged) {
  edict_t* edict = EdictOf(Connect("Rich"));
  int offset = 0, type = 0, money = 0;
  ASSERT_TRUE(FindProperty("CCSPlayer.m_iAccount", offset, type));
  edict->m_fStateFlags &= ~FL_EDICT_CHANGED;
  EXPECT_TRUE(ReadPropertyInt(offset, edict, money));
  EXPECT_EQ(money, 800);
  EXPECT_FALSE(WritePropertyInt(0, edict, 1));
  EXPECT_FALSE(WritePropertyInt(-4, edict, 1));
  EXPECT_EQ(edict->m_fStateFlags & FL_EDICT_CHANGED, 0);
  EXPECT_TRUE(WritePropertyInt(offset, edict, 16000));
  EXPECT_NE(edict->m_fStateFlags & FL_EDICT_CHANGED, 0);
  edict_t unused;  // free by default
  EXPECT_FALSE(ReadPropertyInt(4, nullptr, money));
  EXPECT_FALSE(ReadPropertyInt(4, &unused, money));
}

}  // namespace
