// The list commands (tw_createplayerlist, tw_createentitylist) and the dumps (tw_dumpserverclasses,
// tw_dumpentities): walks over the player slots and the entities, reading what the player info, the net
// channel and the send tables tell. Rows go out as one list result; writing it into a keygroup or a Python
// dictionary is the doors' business.
#include "world/lists.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <utility>

#include "dt_send.h"
#include "edict.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "inetchannelinfo.h"
#include "iplayerinfo.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/results.h"
#include "library/vectors.h"
#include "vstdlib.h"
#include "world/players.h"
#include "world/properties.h"

namespace {

constexpr int kLowestPing = 5;
constexpr int kHighestPing = 1000;

// ---- shared by the walks ----

const char* TextOr(const char* text, const char* fallback) { return text ? text : fallback; }

// The class name of an entity, as the walks see it: "" without an entity object, else what its networkable
// says (null, and the entity is skipped, without one).
const char* WalkClassName(edict_t* edict) {
  if (!edict->GetUnknown()) return "";
  IServerNetworkable* networkable = edict->GetNetworkable();
  return networkable ? networkable->GetClassName() : nullptr;
}

// A property's full path "<prefix>.<name>" into `out`; false when it would pass the limit.
bool PropertyPath(char (&out)[kMaxListKeyName + 1], const char* prefix, const SendProp* prop) {
  int n = snprintf(out, sizeof out, "%s.%s", prefix, TextOr(prop->GetName(), ""));
  return n >= 0 && size_t(n) <= kMaxListKeyName;
}

// ---- the player list ----

// The fields of one player, in the list's order.
void ListPlayer(ListResult& list, int index, edict_t* edict, IPlayerInfo* info) {
  const int userid = info->GetUserID();
  DbgMsg(1, "listing: %d\n", userid);
  list.AddRow(userid);
  list.Text("name", TextOr(info->GetName(), ""));
  list.Text("steamid", TextOr(info->GetNetworkIDString(), ""));
  list.Int("index", index);
  list.Int("teamid", info->GetTeamIndex());
  list.Int("kills", info->GetFragCount());
  list.Int("deaths", info->GetDeathCount());
  list.Int("armor", info->GetArmorValue());
  list.Text("model", TextOr(info->GetModelName(), ""));
  list.Int("isdead", IsPlayerDead(userid) != 0);
  list.Int("isbot", info->IsFakeClient());
  list.Int("ishltv", info->IsHLTV());
  list.Int("isobserver", info->IsObserver());
  list.Int("isinavehicle", info->IsInAVehicle());
  list.Int("health", info->GetHealth());
  list.Int("serialnumber", edict->m_NetworkSerialNumber);
  list.Text("weapon", TextOr(info->GetWeaponName(), ""));
  list.Int("handle", LookupHandleByUserid(userid));
  ConnectionInfo connection = GetPlayerConnectionInfo(userid);
  list.Int("ping", connection.ping);
  list.Int("packetloss", connection.packetLoss);
  list.Float("timeconnected", connection.timeConnected);
  list.Text("address", connection.address.c_str());
  DbgMsg(1, "listing: %d location\n", userid);
  Vector location;
  GetPlayerLocation(userid, location);
  list.Float("x", location.x);
  list.Float("y", location.y);
  list.Float("z", location.z);
  list.Text("language", TextOr(engine->GetClientConVarValue(index, "cl_language"), ""));
  DbgMsg(1, "listing done: %d\n", userid);
}

// Every player, or the one of `onlyUserid` when it is not null. A missing player-info interface ends the
// walk with what was listed.
ListResult PlayerList(const char* onlyUserid) {
  ListResult list;
  const int wanted = onlyUserid ? atoi(onlyUserid) : 0;
  for (int index = 1; index <= MaxClients; ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!IsUsableEdict(edict)) continue;
    if (!playerinfomanager) {
      ReportScriptError(0, "ERROR: Playerinfomanager couldn't be contacted.\n");
      SetLastErrorText("Playerinfomanager couldn't be accessed.");
      break;
    }
    IPlayerInfo* info = playerinfomanager->GetPlayerInfo(edict);
    if (!info || !info->IsPlayer()) continue;
    if (onlyUserid && info->GetUserID() != wanted) continue;
    ListPlayer(list, index, edict, info);
    if (onlyUserid) break;
  }
  return list;
}

// Console form <keygroup> [userid], Python form [userid]. Each run appends its rows.
void CreatePlayerList_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int filterIndex = fromConsole ? 2 : 1;
  KeyValues* group = fromConsole ? OpenListGroup(args.Argv(1)) : nullptr;
  if (fromConsole && !group) return;
  ListResult list = PlayerList(args.Argc() > filterIndex ? args.Argv(filterIndex) : nullptr);
  ReturnList(fromConsole, group, std::move(list), ListRows::Append);
}

// ---- the entity list ----

// Every property of a table, datatables walked, by full path: values read with the guard (a failed guard
// keeps nothing), other types as their type word.
void DumpPropertiesToKey(SendTable* table, edict_t* edict, int base, const char* prefix, ListResult& list) {
  char name[kMaxListKeyName + 1];
  for (int i = 0; table && i < table->GetNumProps(); ++i) {
    const SendProp* prop = table->GetProp(i);
    if (!PropertyPath(name, prefix, prop)) {
      DbgMsg(1, "createentitylist: a property path longer than %d characters is skipped: %.64s...\n",
             int(kMaxListKeyName), name);
      continue;
    }
    const int offset = base + prop->GetOffset();
    int number = 0;
    float real = 0;
    Vector vector;
    switch (prop->GetType()) {
      case DPT_DataTable: DumpPropertiesToKey(prop->GetDataTable(), edict, offset, name, list); break;
      case DPT_Int:
        if (ReadPropertyInt(offset, edict, number)) list.Int(name, number);
        break;
      case DPT_Float:
        if (ReadPropertyFloat(offset, edict, real)) list.Float(name, real);
        break;
      case DPT_Vector:
        if (ReadPropertyVector(offset, edict, vector)) list.Text(name, VectorToString(vector).text);
        break;
      default: list.Text(name, PropertyTypeWord(prop->GetType()));
    }
  }
}

// Whether the filter takes the entity: an index of 1 or more names that entity alone (`byIndex`), any other
// text a class name.
bool FilterTakes(const char* filter, int index, const char* className, bool& byIndex) {
  int n = atoi(filter);
  byIndex = n >= 1 && n == index;
  return byIndex || strcasecmp(filter, className) == 0;
}

// The entity count is asked again at each step: the walk sees what the engine has at that moment.
ListResult EntityList(const char* filter) {
  ListResult list;
  for (int index = 0; index < engine->GetEntityCount(); ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!edict) continue;
    const char* className = WalkClassName(edict);
    if (!className || !className[0]) continue;
    bool byIndex = false;
    if (filter && !FilterTakes(filter, index, className, byIndex)) continue;
    TW_ASSERT(edict->GetNetworkable(), "a class name is the networkable's");
    ServerClass* serverClass = edict->GetNetworkable()->GetServerClass();
    if (serverClass && serverClass->GetName()) {
      list.AddRow(index);
      list.Text("classname", className);
      DumpPropertiesToKey(serverClass->m_pTable, edict, 0, serverClass->GetName(), list);
    }
    if (byIndex) break;
  }
  return list;
}

// Console form <keygroupname> [entity-class], Python form [entity-class]. Each run appends its rows.
void CreateEntityList_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int filterIndex = fromConsole ? 2 : 1;
  KeyValues* group = fromConsole ? OpenListGroup(args.Argv(1)) : nullptr;
  if (fromConsole && !group) return;
  ListResult list = EntityList(args.Argc() > filterIndex ? args.Argv(filterIndex) : nullptr);
  ReturnList(fromConsole, group, std::move(list), ListRows::Append);
}

// ---- the dumps ----

void DumpServerClasses_f() {
  for (ServerClass* c = gamedll ? gamedll->GetAllServerClasses() : nullptr; c; c = c->m_pNext) {
    SendTable* table = c->m_pTable;
    const int count = table ? table->GetNumProps() : 0;
    DbgMsg(0, "%s %d (%d properties)\n", TextOr(c->GetName(), ""), c->m_InstanceBaselineIndex, count);
    for (int i = 0; i < count; ++i) {
      const SendProp* prop = table->GetProp(i);
      const char* name = TextOr(prop->GetName(), "");
      DbgMsg(0, "---------%s : %s\n", PropertyTypeWord(prop->GetType()), name);
      SendTable* inner = prop->GetType() == DPT_DataTable ? prop->GetDataTable() : nullptr;
      if (!inner || strcasecmp(name, "baseclass") == 0) continue;
      for (int j = 0; j < inner->GetNumProps(); ++j)
        DbgMsg(0, "------------------%s : %s\n", PropertyTypeWord(inner->GetProp(j)->GetType()),
               TextOr(inner->GetProp(j)->GetName(), ""));
    }
  }
}

// One property line of the entity dump, printed only when the guard of a read at its offset passes.
void DumpValue(const SendProp* prop, edict_t* edict, int offset, const char* name) {
  int number = 0;
  float real = 0;
  Vector vector;
  switch (prop->GetType()) {
    case DPT_Int:
      if (ReadPropertyInt(offset, edict, number)) DbgMsg(0, "%s = %d\n", name, number);
      return;
    case DPT_Float:
      if (ReadPropertyFloat(offset, edict, real)) DbgMsg(0, "%s = %f\n", name, double(real));
      return;
    case DPT_Vector:
      if (ReadPropertyVector(offset, edict, vector)) DbgMsg(0, "%s = %s\n", name, VectorToString(vector).text);
      return;
    case DPT_String:
    case DPT_Array:
      if (ReadPropertyInt(offset, edict, number))
        DbgMsg(0, "%s = (TODO: %s)\n", name, PropertyTypeWord(prop->GetType()));
      return;
    default:
      if (ReadPropertyInt(offset, edict, number)) DbgMsg(0, "%s = (%s)\n", name, PropertyTypeWord(prop->GetType()));
  }
}

void DumpProperties(SendTable* table, edict_t* edict, int base, const char* prefix) {
  char name[kMaxListKeyName + 1];
  for (int i = 0; prefix && table && i < table->GetNumProps(); ++i) {
    const SendProp* prop = table->GetProp(i);
    if (!PropertyPath(name, prefix, prop)) continue;
    DbgMsg(1, "dumpti: %d\n", prop->GetType());
    DbgMsg(1, "dump2ti: %s\n", name);
    if (prop->GetType() == DPT_DataTable)
      DumpProperties(prop->GetDataTable(), edict, base + prop->GetOffset(), name);
    else
      DumpValue(prop, edict, base + prop->GetOffset(), name);
  }
}

void DumpEntities_f() {
  for (int index = 0; index < engine->GetEntityCount(); ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!edict) continue;
    const char* className = WalkClassName(edict);
    if (!className || !className[0]) continue;
    DbgMsg(1, "dump: %d\n", index);
    TW_ASSERT(edict->GetNetworkable(), "a class name is the networkable's");
    ServerClass* serverClass = edict->GetNetworkable()->GetServerClass();
    if (!serverClass || !serverClass->GetName()) {
      DbgMsg(0, "%d: %s.\n", index, className);
      continue;
    }
    char prefix[kMaxListKeyName + 1];
    snprintf(prefix, sizeof prefix, "%d[%s]: %s", index, className, serverClass->GetName());
    DumpProperties(serverClass->m_pTable, edict, 0, prefix);
    DbgMsg(1, "dump11: %d\n", index);
  }
}

const CommandRow kListCommands[] = {
    {"createplayerlist", CreatePlayerList_h, 2, "Syntax: %s <keygroup> [userid]\n",
     "Lists every player (or one) into a keygroup: name, steamid, team, health, ping, location and more.",
     DOORS_ALL},
    {"createentitylist", CreateEntityList_h, 2, "Syntax: %s <keygroupname> [entity-class]\n\n",
     "Lists every entity (or those of a class, or one index) into a keygroup with all its networked properties.",
     DOORS_ALL},
};
const CommandTable s_listCommands(kListCommands);

const PlainCommandRow kDumpCommands[] = {
    {"tw_xdumpserverclasses", DumpServerClasses_f, "Prints every server class with its networked properties."},
    {"tw_xdumpentities", DumpEntities_f, "Prints every entity with the values of its networked properties."},
};
const CommandTable s_dumpCommands(kDumpCommands);

const PrefixTwinRow kDumpTwins[] = {
    {"tw_dumpserverclasses", 0, "tw tw_xdumpserverclasses ", "", "tw_dumpserverclasses executing: \"%s\"", 2,
     "Prints every server class with its networked properties. Expands event and server variables."},
    {"tw_dumpentities", 0, "tw tw_xdumpentities ", "", "tw_dumpentities executing: \"%s\"", 2,
     "Prints every entity with the values of its networked properties. Expands event and server variables."},
};
const CommandTable s_dumpTwins(kDumpTwins);

}  // namespace

// ---- connection figures ----

int PingOf(float latency, const char* cmdRate, float tickInterval) {
  int rate = Q_atoi(cmdRate);
  if (rate < 1) rate = 1;
  float seconds = latency - (0.5f / float(rate) + tickInterval) - 0.5f * tickInterval;
  float milliseconds = seconds * 1000.0f;
  if (!(milliseconds > float(kLowestPing))) return kLowestPing;
  if (milliseconds >= float(kHighestPing)) return kHighestPing;
  return int(milliseconds);
}

int PacketLossOf(float loss) {
  float percent = loss * 100.0f;
  if (!(percent > 0.0f)) return 0;
  if (percent >= 100.0f) return 100;
  return int(percent);
}

ConnectionInfo GetPlayerConnectionInfo(int userid) {
  ConnectionInfo info;
  int index = LookupIndexByUserid(userid);
  edict_t* edict = index >= 1 ? engine->PEntityOfEntIndex(index) : nullptr;
  IPlayerInfo* player = edict ? PlayerInfoOf(edict) : nullptr;
  if (!player || player->IsFakeClient()) return info;
  INetChannelInfo* channel = engine->GetPlayerNetInfo(index);
  if (!channel) return info;
  const float tick = gpGlobals ? gpGlobals->interval_per_tick : 0.0f;
  info.ping = PingOf(channel->GetAvgLatency(FLOW_OUTGOING), engine->GetClientConVarValue(index, "cl_cmdrate"), tick);
  info.packetLoss = PacketLossOf(channel->GetAvgLoss(FLOW_INCOMING));
  info.timeConnected = channel->GetTimeConnected();
  info.address = TextOr(channel->GetAddress(), "");
  return info;
}
