// Player identities and state: conversions between userid, entity index, edict, entity handle and network
// id, the getters that read a player through the player-info interface, and the counting of players.
// Every lookup is a fresh scan of the player slots 1 to MaxClients, lowest first: nothing is cached, so a
// player who left is simply not found. Userids are above 0; 0 means no player in every result here.
#pragma once

#include <memory>

#include "basetypes.h"

struct edict_t;
class IPlayerInfo;
class CBotCmd;

// An edict that holds an entity: not null, not marked free.
bool IsUsableEdict(const edict_t* edict);
// The player info of an edict, or null (no manager, no player info, or not a player by IsPlayer).
IPlayerInfo* PlayerInfoOf(edict_t* edict);

// ---- lookups ----

// The edict of the player with that userid; only an entity of the class "player" counts. Null when none.
edict_t* LookupEdictByUserid(int userid);
// The entity index of the slot with that userid (no class test), or 0.
int LookupIndexByUserid(int userid);
// The value of the player's entity reference handle, or 0.
int LookupHandleByUserid(int userid);
// The userid of the player whose entity handle has that value, or 0.
int LookupUseridByHandle(int handle);
// The userid of the player whose network id is that text (case ignored), or 0.
int LookupUseridBySteamID(const char* networkId);
// A userid from free text, in this order: any connected player for a null or empty text; a userid; an
// entity handle; a steam id; an exact name; a name in any case; "BOT"; a part of a name. 0 when none.
int FindUserIDByString(const char* text);

// ---- getters: the failure value when the player or the player-info interface is missing ----

const char* GetPlayerName(int userid);       // null
const char* GetPlayerNetworkID(int userid);  // null
int GetPlayerTeam(int userid);               // 0
int GetPlayerKills(int userid);              // 0
int GetPlayerDeaths(int userid);             // 0
int GetPlayerArmor(int userid);              // 0
int GetPlayerHealth(int userid);             // 0
const char* GetPlayerWeapon(int userid);     // null
// The player's origin into `location`; false, `location` untouched, on failure.
bool GetPlayerLocation(int userid, Vector& location);
// A copy of the player's last user command, or null.
std::unique_ptr<CBotCmd> GetPlayerLastCommand(int userid);
// 0 alive, non-zero dead, -1 when it can't be told (callers test for non-zero, so -1 counts as dead).
// tidewright_deadflag above 0 reads "CBasePlayer.pl.deadflag"; otherwise the player info's IsDead.
int IsPlayerDead(int userid);

// Players of a team (a negative team: all teams), only the living ones when asked; -1 when the
// player-info interface is missing while a slot is in use.
int GetPlayerCount(int team, bool livingOnly);
