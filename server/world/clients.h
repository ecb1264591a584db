// The clients of the server, people and bots: who they are (userid, name, network id), what the game keeps
// of them beside their entity (frags, deaths, weapon, flags, last user command), their console variables
// and net channel, and the player info objects through which the game shows all of it. Health, armor,
// team, money, origin and the dead state live in the player's entity (entities.h), so property writes and
// player info always agree.
#pragma once

#include <strings.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "inetchannelinfo.h"
#include "iplayerinfo.h"

class CEntity;
class CSimWorld;
class KeyValues;
struct CClient;

// Team numbers of the demo game.
enum { TEAM_UNASSIGNED = 0, TEAM_SPECTATOR = 1, TEAM_T = 2, TEAM_CT = 3 };

// The first userid handed out; each connection takes the next, and none comes back while the process runs.
constexpr int CLIENT_FIRST_USERID = 2;
constexpr float CLIENT_DEFAULT_LATENCY = 0.05f;  // seconds, both ways
constexpr int CLIENT_FIRST_PORT = 27005;
constexpr size_t CLIENT_MAX_NAME = 31;
constexpr size_t CLIENT_MAX_VARS = 256;

struct CaseLess {
  bool operator()(const std::string& a, const std::string& b) const { return strcasecmp(a.c_str(), b.c_str()) < 0; }
};

class CNetChannel final : public INetChannelInfo {
public:
  explicit CNetChannel(const CClient& client) : m_client(client) {}
  const char* GetName() const override;
  const char* GetAddress() const override;
  float GetTimeConnected() const override;
  float GetAvgLatency(int flow) const override;
  float GetAvgLoss(int flow) const override;
  bool IsLoopback() const override { return false; }

private:
  const CClient& m_client;
};

class CPlayerInfo final : public IPlayerInfo {
public:
  CPlayerInfo(CClient& client, CSimWorld& world) : m_client(client), m_world(world) {}
  const char* GetName() override;
  int GetUserID() override;
  const char* GetNetworkIDString() override;
  int GetTeamIndex() override;
  void ChangeTeam(int team) override;
  int GetFragCount() override;
  int GetDeathCount() override;
  bool IsConnected() override { return true; }
  int GetArmorValue() override;
  bool IsHLTV() override;
  bool IsPlayer() override { return true; }
  bool IsFakeClient() override;
  bool IsDead() override;
  bool IsInAVehicle() override;
  bool IsObserver() override;
  const Vector GetAbsOrigin() override;
  const QAngle GetAbsAngles() override;
  const char* GetWeaponName() override;
  const char* GetModelName() override;
  int GetHealth() override;
  int GetMaxHealth() override;
  CBotCmd GetLastUserCommand() override;

private:
  CClient& m_client;
  CSimWorld& m_world;
};

// The menu a client shows: the "ShowMenu" pieces joined up to the one with more = 0, with that piece's
// keys and time. A new menu replaces it; an answer closes it, and so does its time running out.
struct ClientMenu {
  std::string pieces;   // text of the pieces with more = 1 that wait for their last one
  std::string text;
  int keys = 0;         // key 1 is bit 0, key 0 bit 9
  bool open = false;
  bool timed = false;   // false: stays until answered (time -1)
  double closesAt = 0;  // clock seconds, when timed
};

struct KeyValuesDeleter {
  void operator()(KeyValues* record) const;
};

// The last dialog a client was shown: its type and a copy of its record, until it is answered.
struct ClientDialog {
  int type = -1;  // none
  std::unique_ptr<KeyValues, KeyValuesDeleter> record;
};

struct CClient {
  CClient(CSimWorld& world, int slot, int userid) : slot(slot), userid(userid), info(*this, world), net(*this) {}
  CClient(const CClient&) = delete;
  CClient& operator=(const CClient&) = delete;

  const int slot;    // entity index, 1..maxClients
  const int userid;
  std::string name;
  std::string networkId;
  bool fake = false;
  bool hltv = false;
  bool observer = false;
  bool inVehicle = false;
  int frags = 0;
  int deaths = 0;
  std::string weapon;        // the active weapon's entity name, "" for none
  std::string model;
  CBotCmd lastCommand;
  std::map<std::string, std::string, CaseLess> vars;  // the client's console variables
  double connectedAt = 0;    // clock seconds
  float latency = CLIENT_DEFAULT_LATENCY;
  float loss = 0;
  std::string address;
  uint32_t lastMade = 0xFFFFFFFFu;  // entity handle of the last entity this player made: what it looks at
  CEntity* entity = nullptr;
  ClientMenu menu;
  ClientDialog dialog;

  CPlayerInfo info;
  CNetChannel net;
};

// The text of a client variable, or "" when the client has none of that name.
const char* ClientVar(const CClient& client, const char* name);
