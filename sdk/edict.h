// The engine's entity slot and the interfaces an entity shows to the engine, plus the global variables block.
#pragma once

#include "basetypes.h"

struct edict_t;
class ServerClass;
class IServerNetworkable;

// State flags of an edict.
enum {
  FL_EDICT_CHANGED = 1 << 0,  // a networked property changed; the engine sends it to clients
  FL_EDICT_FREE = 1 << 1,     // the slot holds no entity
};

class IHandleEntity {
public:
  virtual ~IHandleEntity() = default;
  virtual void SetRefEHandle(const CBaseHandle& handle) = 0;
  virtual const CBaseHandle& GetRefEHandle() const = 0;
};

// The entity object as the engine knows it. Networked properties are read at byte offsets from this object.
class IServerUnknown : public IHandleEntity {
public:
  virtual IServerNetworkable* GetNetworkable() = 0;
  virtual CBaseEntity* GetBaseEntity() = 0;
};

class IServerNetworkable {
public:
  virtual IHandleEntity* GetEntityHandle() = 0;
  virtual ServerClass* GetServerClass() = 0;
  virtual edict_t* GetEdict() const = 0;
  virtual const char* GetClassName() const = 0;
  virtual void Release() = 0;

protected:
  virtual ~IServerNetworkable() = default;
};

struct edict_t {
  int m_fStateFlags = FL_EDICT_FREE;
  int m_NetworkSerialNumber = 0;
  IServerNetworkable* m_pNetworkable = nullptr;
  IServerUnknown* m_pUnk = nullptr;
  float freetime = 0;

  bool IsFree() const { return (m_fStateFlags & FL_EDICT_FREE) != 0; }
  void SetFree() { m_fStateFlags |= FL_EDICT_FREE; }
  void ClearFree() { m_fStateFlags &= ~FL_EDICT_FREE; }
  void StateChanged() { m_fStateFlags |= FL_EDICT_CHANGED; }
  IServerNetworkable* GetNetworkable() const { return m_pNetworkable; }
  IServerUnknown* GetUnknown() const { return m_pUnk; }
};

// The global variables block that the engine keeps current from frame to frame.
class CGlobalVars {
public:
  float realtime = 0;           // wall-clock time of the server, simulated in batch mode
  int framecount = 0;           // frames run since the process started
  float absoluteframetime = 0;
  float curtime = 0;            // game time of the current frame
  float frametime = 0;          // seconds per frame
  int maxClients = 0;           // player slots of the level
  int tickcount = 0;            // ticks since the level started
  float interval_per_tick = 0;  // seconds per tick
  float interpolation_amount = 0;
  int network_protocol = 0;
  const char* mapname = "";     // name of the current level
  int mapversion = 0;
  const char* startspot = "";
  bool deathmatch = true;
  bool coop = false;
  bool teamplay = false;
  int maxEntities = 0;          // edict slots of the level, player slots and the world included
};
