// Player lookup: the slot scan behind every conversion between a player's identities, the eight steps of
// FindUserIDByString, the getters through the player-info interface and the player counts. Holds no state;
// nothing is allocated on the way, and no edict or player-info pointer outlives the call that found it.
#include "world/players.h"

#include <cstring>
#include <strings.h>

#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iplayerinfo.h"
#include "vstdlib.h"
#include "world/properties.h"

namespace {

// Characters of a network id that make a text look like a steam id, and its shortest length.
constexpr char kSteamPrefix[] = "STEAM_";
constexpr size_t kSteamPrefixLength = sizeof kSteamPrefix - 1;
constexpr size_t kShortestSteamId = 7;
constexpr const char* kDeadFlagPath = "CBasePlayer.pl.deadflag";

// Levels of the getters' "doesn't exist" and "isn't a player" messages.
constexpr int kGetterLevel = 1;
constexpr int kLocationLevel = 2;
constexpr int kLastCommandLevel = 3;

// Walks the player slots 1 to MaxClients, lowest first, over usable edicts only, and gives the first
// index for which `test(index, edict)` holds; 0 when none does.
template <class Test>
int FirstSlot(Test test) {
  if (!engine) return 0;
  for (int index = 1; index <= MaxClients; ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (IsUsableEdict(edict) && test(index, edict)) return index;
  }
  return 0;
}

// "" for an entity without an object; null (the slot is skipped) for a networkable without a name.
const char* SlotClassName(edict_t* edict) {
  if (!edict->GetUnknown()) return "";
  IServerNetworkable* networkable = edict->GetNetworkable();
  return networkable ? networkable->GetClassName() : nullptr;
}

// The player info of a slot that takes part in the name tests: it exists and is connected.
IPlayerInfo* ConnectedInfo(edict_t* edict) {
  IPlayerInfo* info = playerinfomanager ? playerinfomanager->GetPlayerInfo(edict) : nullptr;
  return info && info->IsConnected() ? info : nullptr;
}

// The player info for a getter: each miss prints its message and gives null.
IPlayerInfo* GetterInfo(edict_t* edict, int userid, int level) {
  if (!edict) {
    DbgMsg(level, "Player doesn't exist: %d\n", userid);
    return nullptr;
  }
  if (!playerinfomanager) {
    DbgMsg(1, "playerinfomanager isn't ready yet.\n");
    return nullptr;
  }
  IPlayerInfo* info = playerinfomanager->GetPlayerInfo(edict);
  if (!info || !info->IsPlayer()) {
    DbgMsg(level, "Userid isn't a player: %d\n", userid);
    return nullptr;
  }
  return info;
}

IPlayerInfo* GetterInfo(int userid, int level) { return GetterInfo(LookupEdictByUserid(userid), userid, level); }

// The userid of the first connected player whose name passes `matches`; 0 when none. A slot that takes
// part and fails prints `missTrace` (with the name when it has a %s).
template <class Matches>
int ScanNames(Matches matches, const char* missTrace) {
  int userid = 0;
  FirstSlot([&](int, edict_t* edict) {
    IPlayerInfo* info = ConnectedInfo(edict);
    const char* name = info ? info->GetName() : nullptr;
    if (!name) return false;
    if (matches(name)) {
      userid = info->GetUserID();
      return true;
    }
    if (missTrace) DbgMsg(1, missTrace, name);
    return false;
  });
  return userid;
}

// ---- the steps of FindUserIDByString ----

int AnyConnectedPlayer() {
  DbgMsg(1, "FindUserIDByString: Look for any connected player\n");
  int userid = 0;
  FirstSlot([&](int, edict_t* edict) {
    IPlayerInfo* info = ConnectedInfo(edict);
    if (info) userid = info->GetUserID();
    return info != nullptr;
  });
  return userid;
}

int ByUseridOrHandle(const char* text) {
  DbgMsg(1, "FindUserIDByString: is it a userid?\n");
  int n = Q_atoi(text);
  if (n == 0) return 0;
  DbgMsg(1, "FindUserIDByString: Probably is a userid.\n");
  if (LookupEdictByUserid(n)) {
    DbgMsg(1, "FindUserIDByString: Yep, it's a userid.\n");
    return n;
  }
  DbgMsg(1, "FindUserIDByString: Hmm, maybe it's a handle?\n");
  int byHandle = LookupUseridByHandle(n);
  if (byHandle > 0) {
    DbgMsg(1, "FindUserIDByString: Yep, it's a handle.\n");
    return byHandle;
  }
  DbgMsg(1, "FindUserIDByString: Not a handle or userid.\n");
  return 0;
}

int BySteamId(const char* text) {
  DbgMsg(1, "FindUserIDByString: is it a steamid?\n");
  if (strlen(text) < kShortestSteamId) return 0;
  DbgMsg(1, "FindUserIDByString: looks like a steamid?\n");
  if (Q_strncasecmp(text, kSteamPrefix, int(kSteamPrefixLength)) != 0) return 0;
  DbgMsg(1, "FindUserIDByString: really looks like a steamid.\n");
  int userid = LookupUseridBySteamID(text);
  if (userid) DbgMsg(1, "FindUserIDByString: was a steamid\n");
  return userid;
}

int ByExactName(const char* text) {
  DbgMsg(1, "FindUserIDByString: Look for exact name?\n");
  int userid = ScanNames([&](const char* name) { return Q_strcasecmp(name, text) == 0; },
                         "FindUserIDByString: not an exact name\n");
  if (userid) DbgMsg(1, "FindUserIDByString: found exact name\n");
  return userid;
}

int ByNameInAnyCase(const char* text) {
  DbgMsg(1, "FindUserIDByString: is there a name case-insensitive?\n");
  int userid = ScanNames([&](const char* name) { return strcasecmp(name, text) == 0; }, nullptr);
  if (userid) DbgMsg(1, "FindUserIDByString: yep, there's a name case-insensitive!\n");
  return userid;
}

int ByBotId(const char* text) {
  DbgMsg(1, "FindUserIDByString: is it a BOT steamid?\n");
  if (Q_strcasecmp(text, "BOT") != 0) return 0;
  DbgMsg(1, "FindUserIDByString: really looks like a BOT steamid.\n");
  int userid = LookupUseridBySteamID(text);
  if (userid) DbgMsg(1, "FindUserIDByString: was a steamid\n");
  return userid;
}

int ByPartOfName(const char* text) {
  DbgMsg(1, "FindUserIDByString: is it a part of their name!\n");
  int userid = 0;
  FirstSlot([&](int, edict_t* edict) {
    IPlayerInfo* info = ConnectedInfo(edict);
    const char* name = info ? info->GetName() : nullptr;
    if (!name) return false;
    if (!Q_stristr(name, text)) {
      DbgMsg(1, "FindUserIDByString: didn't match: %s\n", name);
      return false;
    }
    DbgMsg(1, "FindUserIDByString: it is a part of their name: %s\n", name);
    userid = info->GetUserID();
    return true;
  });
  return userid;
}

}  // namespace

bool IsUsableEdict(const edict_t* edict) { return edict && !edict->IsFree(); }

IPlayerInfo* PlayerInfoOf(edict_t* edict) {
  IPlayerInfo* info = playerinfomanager && IsUsableEdict(edict) ? playerinfomanager->GetPlayerInfo(edict) : nullptr;
  return info && info->IsPlayer() ? info : nullptr;
}

// ---- lookups ----

edict_t* LookupEdictByUserid(int userid) {
  int index = FirstSlot([&](int i, edict_t* edict) {
    DbgMsg(6, "LookupEdictByUserid: Looking for %d at %d entity index.\n", userid, i);
    const char* className = SlotClassName(edict);
    return className && strcasecmp(className, "player") == 0 && engine->GetPlayerUserId(edict) == userid;
  });
  if (!index) {
    DbgMsg(3, "Userid not found. %d\n", userid);
    return nullptr;
  }
  DbgMsg(6, "LookupEdictByUserid: Found userid %d at %d and entity index %d.\n", userid, index, index);
  return engine->PEntityOfEntIndex(index);
}

int LookupIndexByUserid(int userid) {
  int index = FirstSlot([&](int, edict_t* edict) { return engine->GetPlayerUserId(edict) == userid; });
  if (!index) DbgMsg(3, "Userid not found. %d\n", userid);
  return index;
}

int LookupHandleByUserid(int userid) {
  edict_t* edict = LookupEdictByUserid(userid);
  if (!edict) return 0;
  IServerNetworkable* networkable = edict->GetNetworkable();
  IHandleEntity* handleEntity = networkable ? networkable->GetEntityHandle() : nullptr;
  if (!handleEntity) {
    DbgMsg(0, "Couldn't GetEntityHandle\n");
    return 0;
  }
  const CBaseHandle& handle = handleEntity->GetRefEHandle();
  if (!handle.IsValid()) {
    DbgMsg(0, "Couldn't get RefEHandle2\n");
    return 0;
  }
  return int(handle.ToInt());
}

int LookupUseridByHandle(int handle) {
  int userid = 0;
  FirstSlot([&](int, edict_t* edict) {
    int slotUserid = engine->GetPlayerUserId(edict);
    if (slotUserid <= 0 || LookupHandleByUserid(slotUserid) != handle) return false;
    userid = slotUserid;
    return true;
  });
  return userid;
}

int LookupUseridBySteamID(const char* networkId) {
  int userid = 0;
  if (networkId) {
    FirstSlot([&](int, edict_t* edict) {
      const char* id = engine->GetPlayerNetworkIDString(edict);
      if (!id || Q_strcasecmp(id, networkId) != 0) return false;
      userid = engine->GetPlayerUserId(edict);
      return true;
    });
  }
  if (!userid) DbgMsg(1, "STEAMID not found.\n");
  return userid;
}

int FindUserIDByString(const char* text) {
  if (!text || !text[0]) return AnyConnectedPlayer();
  DbgMsg(1, "FindUserIDByString: let's try to match this: %s\n", text);
  int userid = ByUseridOrHandle(text);
  if (!userid) userid = BySteamId(text);
  if (!userid) userid = ByExactName(text);
  if (!userid) userid = ByNameInAnyCase(text);
  if (!userid) userid = ByBotId(text);
  if (!userid) userid = ByPartOfName(text);
  if (!userid) DbgMsg(1, "FindUserIDByString: not found! %s\n", text);
  return userid;
}

// ---- getters ----

const char* GetPlayerName(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetName() : nullptr;
}

const char* GetPlayerNetworkID(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetNetworkIDString() : nullptr;
}

int GetPlayerTeam(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetTeamIndex() : 0;
}

int GetPlayerKills(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetFragCount() : 0;
}

int GetPlayerDeaths(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetDeathCount() : 0;
}

int GetPlayerArmor(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetArmorValue() : 0;
}

int GetPlayerHealth(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetHealth() : 0;
}

const char* GetPlayerWeapon(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kGetterLevel);
  return info ? info->GetWeaponName() : nullptr;
}

bool GetPlayerLocation(int userid, Vector& location) {
  IPlayerInfo* info = GetterInfo(userid, kLocationLevel);
  if (!info) return false;
  location = info->GetAbsOrigin();
  return true;
}

std::unique_ptr<CBotCmd> GetPlayerLastCommand(int userid) {
  IPlayerInfo* info = GetterInfo(userid, kLastCommandLevel);
  return info ? std::make_unique<CBotCmd>(info->GetLastUserCommand()) : nullptr;
}

int IsPlayerDead(int userid) {
  edict_t* edict = LookupEdictByUserid(userid);
  if (!edict) {
    DbgMsg(1, "Player doesn't exist: %d\n", userid);
    return -1;
  }
  if (tidewright_deadflag.GetInt() > 0) {
    int offset = 0, type = 0, value = 0;
    if (!FindEntityProperty(edict, kDeadFlagPath, offset, type) || !ReadPropertyInt(offset, edict, value)) return -1;
    return value;
  }
  IPlayerInfo* info = GetterInfo(edict, userid, kGetterLevel);
  if (!info) return -1;
  return info->IsDead() ? 1 : 0;
}

// ---- counting ----

int GetPlayerCount(int team, bool livingOnly) {
  int count = 0;
  bool managerMissing = false;
  FirstSlot([&](int, edict_t* edict) {
    if (!playerinfomanager) {
      managerMissing = true;
      return true;
    }
    IPlayerInfo* info = playerinfomanager->GetPlayerInfo(edict);
    if (!info || !info->IsPlayer()) return false;
    if (livingOnly && IsPlayerDead(info->GetUserID()) != 0) return false;
    if (team < 0 || info->GetTeamIndex() == team) ++count;
    return false;
  });
  if (!managerMissing) return count;
  ReportScriptError(0, "ERROR: Playerinfomanager couldn't be contacted.\n");
  SetLastErrorText("Playerinfomanager couldn't be accessed.");
  return -1;
}
