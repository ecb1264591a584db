// Game events: declared by resource files, created by name, fired to the listeners of that name.
#pragma once

#define INTERFACEVERSION_GAMEEVENTSMANAGER2 "GAMEEVENTSMANAGER002"

// An event holds typed values by key. Keys outside the declaration can be set, and a value reads back in
// any type: GetString of an integer gives its decimal text, GetInt of a string parses it; a missing key
// gives the default.
class IGameEvent {
public:
  virtual ~IGameEvent() = default;
  virtual const char* GetName() const = 0;
  virtual bool IsEmpty(const char* key = nullptr) = 0;

  virtual bool GetBool(const char* key = nullptr, bool defaultValue = false) = 0;
  virtual int GetInt(const char* key = nullptr, int defaultValue = 0) = 0;
  virtual float GetFloat(const char* key = nullptr, float defaultValue = 0.0f) = 0;
  virtual const char* GetString(const char* key = nullptr, const char* defaultValue = "") = 0;

  virtual void SetBool(const char* key, bool value) = 0;
  virtual void SetInt(const char* key, int value) = 0;
  virtual void SetFloat(const char* key, float value) = 0;
  virtual void SetString(const char* key, const char* value) = 0;
};

class IGameEventListener2 {
public:
  virtual ~IGameEventListener2() = default;
  virtual void FireGameEvent(IGameEvent* event) = 0;
};

class IGameEventManager2 {
public:
  // Declares the events of a resource file; the number of events declared, 0 on failure.
  virtual int LoadEventsFromFile(const char* filename) = 0;
  virtual bool AddListener(IGameEventListener2* listener, const char* name, bool serverSide) = 0;
  virtual bool FindListener(IGameEventListener2* listener, const char* name) = 0;
  virtual void RemoveListener(IGameEventListener2* listener) = 0;  // every registration of the listener
  // Null for an undeclared name, and unless forced also when nobody listens to it.
  virtual IGameEvent* CreateEvent(const char* name, bool force = false) = 0;
  // Delivers to the listeners in the order they registered and takes the event back, whatever the result.
  virtual bool FireEvent(IGameEvent* event, bool dontBroadcast = false) = 0;
  virtual IGameEvent* DuplicateEvent(IGameEvent* event) = 0;  // the caller owns the copy
  virtual void FreeEvent(IGameEvent* event) = 0;

protected:
  virtual ~IGameEventManager2() = default;
};
