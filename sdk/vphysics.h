// The physics engine as plugins see it: environments of simulated objects.
#pragma once

#include "basetypes.h"

#define VPHYSICS_INTERFACE_VERSION "VPhysics030"

class IPhysicsObject {
public:
  virtual void* GetGameData() const = 0;        // the CBaseEntity that owns the object
  virtual unsigned short GetGameIndex() const = 0;
  virtual void SetMass(float mass) = 0;
  virtual float GetMass() const = 0;
  virtual void ApplyForceCenter(const Vector& force) = 0;
  virtual void SetPosition(const Vector& position, const QAngle& angles, bool teleport) = 0;
  virtual void GetPosition(Vector* position, QAngle* angles) const = 0;
  virtual void SetVelocity(const Vector* velocity, const AngularImpulse* angular) = 0;
  virtual void GetVelocity(Vector* velocity, AngularImpulse* angular) const = 0;
  virtual bool IsAsleep() const = 0;

protected:
  virtual ~IPhysicsObject() = default;
};

class IPhysicsObjectEvent {
public:
  virtual void ObjectWake(IPhysicsObject* object) = 0;
  virtual void ObjectSleep(IPhysicsObject* object) = 0;

protected:
  virtual ~IPhysicsObjectEvent() = default;
};

class IPhysicsEnvironment {
public:
  virtual void SetGravity(const Vector& gravity) = 0;
  virtual void GetGravity(Vector* gravity) const = 0;
  virtual void SetAirDensity(float density) = 0;
  virtual float GetAirDensity() const = 0;
  virtual void SetObjectEventHandler(IPhysicsObjectEvent* handler) = 0;
  virtual int GetActiveObjectCount() const = 0;
  // Fills `out`, which has room for GetActiveObjectCount() entries.
  virtual void GetActiveObjects(IPhysicsObject** out) const = 0;

protected:
  virtual ~IPhysicsEnvironment() = default;
};

class IPhysics {
public:
  virtual IPhysicsEnvironment* GetActiveEnvironmentByIndex(int index) = 0;

protected:
  virtual ~IPhysics() = default;
};
