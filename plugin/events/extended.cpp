// The extended variables of a wanted event: one table row per value, read through the player getters for
// the event's "userid" and "attacker". Events nobody wants never come here.
#include "events/extended.h"

#include "host/diagnostics.h"
#include "igameevents.h"
#include "world/players.h"

namespace {

// One value about a player: its key for the victim (or subject) and for the attacker, and its getter,
// either a text (left out when null) or a number.
struct ExtendedVariable {
  const char* userKey;
  const char* attackerKey;
  const char* (*text)(int userid);
  int (*number)(int userid);
};

const ExtendedVariable kVariables[] = {
    {"tw_username", "tw_attackername", GetPlayerName, nullptr},
    {"tw_steamid", "tw_attackersteamid", GetPlayerNetworkID, nullptr},
    {"tw_userweapon", "tw_attackerweapon", GetPlayerWeapon, nullptr},
    {"tw_userteam", "tw_attackerteam", nullptr, GetPlayerTeam},
    {"tw_userarmor", "tw_attackerarmor", nullptr, GetPlayerArmor},
    {"tw_userhealth", "tw_attackerhealth", nullptr, GetPlayerHealth},
    {"tw_userdeaths", "tw_attackerdeaths", nullptr, GetPlayerDeaths},
    {"tw_userkills", "tw_attackerkills", nullptr, GetPlayerKills},
    {"tw_userdead", "tw_attackerdead", nullptr, IsPlayerDead},
    {"tw_userindex", "tw_attackerindex", nullptr, LookupIndexByUserid},
};

// Each getter is given the key's value read afresh, as the event holds it at that moment.
void SetPlayerVariables(IGameEvent* event, const char* idKey, bool attacker) {
  if (event->GetInt(idKey, 0) == 0) return;
  for (const ExtendedVariable& v : kVariables) {
    const char* key = attacker ? v.attackerKey : v.userKey;
    int userid = event->GetInt(idKey, 0);
    if (v.number) {
      event->SetInt(key, v.number(userid));
      DbgMsg(3, "%s set.\n", key);
      continue;
    }
    const char* value = v.text(userid);
    if (!value) continue;
    event->SetString(key, value);
    if (attacker)
      DbgMsg(3, "%s set.\n", key);
    else
      DbgMsg(3, "%s set: %s\n", key, value);
  }
}

}  // namespace

void SetExtendedEventVariables(IGameEvent* event) {
  SetPlayerVariables(event, "userid", false);
  SetPlayerVariables(event, "attacker", true);
}
