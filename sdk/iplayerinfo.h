// The game's view of a player, through PlayerInfoManager002.
#pragma once

#include "basetypes.h"

struct edict_t;
class CGlobalVars;

#define INTERFACEVERSION_PLAYERINFOMANAGER "PlayerInfoManager002"

// A player's last user command. Copied by value; its one virtual operation is the destructor.
class CBotCmd {
public:
  virtual ~CBotCmd() = default;
  int command_number = 0;
  int tick_count = 0;
  QAngle viewangles;
  float forwardmove = 0;
  float sidemove = 0;
  float upmove = 0;
  int buttons = 0;
  unsigned char impulse = 0;
  int weaponselect = 0;
  int weaponsubtype = 0;
  int random_seed = 0;
  short mousedx = 0;
  short mousedy = 0;
  bool hasbeenpredicted = false;
};

class IPlayerInfo {
public:
  virtual const char* GetName() = 0;
  virtual int GetUserID() = 0;
  virtual const char* GetNetworkIDString() = 0;
  virtual int GetTeamIndex() = 0;
  virtual void ChangeTeam(int team) = 0;
  virtual int GetFragCount() = 0;
  virtual int GetDeathCount() = 0;
  virtual bool IsConnected() = 0;
  virtual int GetArmorValue() = 0;
  virtual bool IsHLTV() = 0;
  virtual bool IsPlayer() = 0;
  virtual bool IsFakeClient() = 0;
  virtual bool IsDead() = 0;
  virtual bool IsInAVehicle() = 0;
  virtual bool IsObserver() = 0;
  virtual const Vector GetAbsOrigin() = 0;
  virtual const QAngle GetAbsAngles() = 0;
  virtual const char* GetWeaponName() = 0;
  virtual const char* GetModelName() = 0;
  virtual int GetHealth() = 0;
  virtual int GetMaxHealth() = 0;
  virtual CBotCmd GetLastUserCommand() = 0;

protected:
  virtual ~IPlayerInfo() = default;
};

class IPlayerInfoManager {
public:
  virtual IPlayerInfo* GetPlayerInfo(edict_t* edict) = 0;  // null for an edict that holds no player
  virtual CGlobalVars* GetGlobalVars() = 0;

protected:
  virtual ~IPlayerInfoManager() = default;
};
