// The game event manager: event declarations read from resource files, listeners by event name, and the
// events themselves, typed values by key. Events handed out are tracked, so a pointer that was never
// handed out, or was already taken back, is refused instead of freed twice.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "console.h"
#include "igameevents.h"

class IBaseFileSystem;
class KeyValues;

// Field types of an event declaration, as the resource files name them.
enum class EventFieldType { None, String, Bool, Byte, Short, Long, Float, Local };

struct EventDescriptor {
  std::string name;
  std::string file;  // the resource file that declared it last; empty while only listened to
  std::vector<std::pair<std::string, EventFieldType>> fields;
  std::vector<IGameEventListener2*> listeners;  // in registration order; null while being removed
};

class CGameEvent final : public IGameEvent {
public:
  explicit CGameEvent(EventDescriptor* descriptor);
  CGameEvent(EventDescriptor* descriptor, const KeyValues& data);
  ~CGameEvent() override;
  CGameEvent(const CGameEvent&) = delete;
  CGameEvent& operator=(const CGameEvent&) = delete;

  const char* GetName() const override;
  bool IsEmpty(const char* key = nullptr) override;
  bool GetBool(const char* key = nullptr, bool defaultValue = false) override;
  int GetInt(const char* key = nullptr, int defaultValue = 0) override;
  float GetFloat(const char* key = nullptr, float defaultValue = 0.0f) override;
  const char* GetString(const char* key = nullptr, const char* defaultValue = "") override;
  void SetBool(const char* key, bool value) override;
  void SetInt(const char* key, int value) override;
  void SetFloat(const char* key, float value) override;
  void SetString(const char* key, const char* value) override;

  EventDescriptor* Descriptor() const { return m_descriptor; }
  const KeyValues& Data() const { return *m_data; }

private:
  // Keys name values of the event itself; an empty or missing key names nothing.
  static bool ValidKey(const char* key) { return key && key[0]; }

  EventDescriptor* m_descriptor;
  KeyValues* m_data;
};

class CGameEventManager final : public IGameEventManager2 {
public:
  explicit CGameEventManager(IBaseFileSystem* fileSystem) : m_fileSystem(fileSystem) {}
  ~CGameEventManager() override;
  CGameEventManager(const CGameEventManager&) = delete;
  CGameEventManager& operator=(const CGameEventManager&) = delete;

  int LoadEventsFromFile(const char* filename) override;
  bool AddListener(IGameEventListener2* listener, const char* name, bool serverSide) override;
  bool FindListener(IGameEventListener2* listener, const char* name) override;
  void RemoveListener(IGameEventListener2* listener) override;
  IGameEvent* CreateEvent(const char* name, bool force = false) override;
  bool FireEvent(IGameEvent* event, bool dontBroadcast = false) override;
  IGameEvent* DuplicateEvent(IGameEvent* event) override;
  void FreeEvent(IGameEvent* event) override;

  // The declaration of an event by name (ignoring case), or null.
  EventDescriptor* FindDescriptor(const char* name);
  // The events that a resource file declared, by file in the order the files were read, then by name.
  std::vector<const EventDescriptor*> DeclaredEvents() const;
  // Events handed out and not yet taken back.
  size_t LiveEvents() const { return m_live.size(); }

private:
  EventDescriptor* Declare(const char* name);
  CGameEvent* Track(CGameEvent* event);
  CGameEvent* Live(IGameEvent* event) const;
  void CompactListeners();

  IBaseFileSystem* m_fileSystem;
  std::unordered_map<std::string, std::unique_ptr<EventDescriptor>, CaseFoldHash, CaseFoldEqual> m_events;
  std::unordered_set<IGameEvent*> m_live;
  std::vector<std::string> m_files;  // the resource files read, in order, each once
  int m_firing = 0;          // depth of FireEvent calls in progress
  bool m_removedWhileFiring = false;
};

EventFieldType ParseEventFieldType(const char* text);
// The name the resource files give a field type.
const char* EventFieldTypeName(EventFieldType type);
