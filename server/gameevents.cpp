// Game events: declarations, listeners, and typed values by key.
#include "gameevents.h"

#include <algorithm>
#include <cstring>

#include "KeyValues.h"
#include "filesystem.h"
#include "tier0.h"

namespace {

struct FieldTypeName {
  const char* name;
  EventFieldType type;
};

constexpr FieldTypeName kFieldTypes[] = {
    {"string", EventFieldType::String}, {"bool", EventFieldType::Bool},   {"byte", EventFieldType::Byte},
    {"short", EventFieldType::Short},   {"long", EventFieldType::Long},   {"float", EventFieldType::Float},
    {"local", EventFieldType::Local},   {"none", EventFieldType::None},
};

}  // namespace

EventFieldType ParseEventFieldType(const char* text) {
  for (const FieldTypeName& t : kFieldTypes)
    if (text && strcasecmp(text, t.name) == 0) return t.type;
  return EventFieldType::String;
}

const char* EventFieldTypeName(EventFieldType type) {
  for (const FieldTypeName& t : kFieldTypes)
    if (t.type == type) return t.name;
  return "string";
}

// ---- events ----

CGameEvent::CGameEvent(EventDescriptor* descriptor) : m_descriptor(descriptor), m_data(new KeyValues("event")) {}

CGameEvent::CGameEvent(EventDescriptor* descriptor, const KeyValues& data)
    : m_descriptor(descriptor), m_data(data.MakeCopy()) {}

CGameEvent::~CGameEvent() { m_data->deleteThis(); }

const char* CGameEvent::GetName() const { return m_descriptor->name.c_str(); }

bool CGameEvent::IsEmpty(const char* key) {
  if (!ValidKey(key)) return m_data->GetFirstSubKey() == nullptr;
  return m_data->IsEmpty(key);
}

bool CGameEvent::GetBool(const char* key, bool defaultValue) {
  return ValidKey(key) ? m_data->GetInt(key, defaultValue ? 1 : 0) != 0 : defaultValue;
}

int CGameEvent::GetInt(const char* key, int defaultValue) {
  return ValidKey(key) ? m_data->GetInt(key, defaultValue) : defaultValue;
}

float CGameEvent::GetFloat(const char* key, float defaultValue) {
  return ValidKey(key) ? m_data->GetFloat(key, defaultValue) : defaultValue;
}

const char* CGameEvent::GetString(const char* key, const char* defaultValue) {
  const char* fallback = defaultValue ? defaultValue : "";
  return ValidKey(key) ? m_data->GetString(key, fallback) : fallback;
}

void CGameEvent::SetBool(const char* key, bool value) {
  if (ValidKey(key)) m_data->SetInt(key, value ? 1 : 0);
}

void CGameEvent::SetInt(const char* key, int value) {
  if (ValidKey(key)) m_data->SetInt(key, value);
}

void CGameEvent::SetFloat(const char* key, float value) {
  if (ValidKey(key)) m_data->SetFloat(key, value);
}

void CGameEvent::SetString(const char* key, const char* value) {
  if (ValidKey(key)) m_data->SetString(key, value ? value : "");
}

// ---- the manager ----

CGameEventManager::~CGameEventManager() {
  for (IGameEvent* e : m_live) delete static_cast<CGameEvent*>(e);
}

EventDescriptor* CGameEventManager::FindDescriptor(const char* name) {
  if (!name) return nullptr;
  auto it = m_events.find(std::string_view(name));
  return it == m_events.end() ? nullptr : it->second.get();
}

EventDescriptor* CGameEventManager::Declare(const char* name) {
  EventDescriptor* d = FindDescriptor(name);
  if (d) return d;
  auto descriptor = std::make_unique<EventDescriptor>();
  descriptor->name = name;
  d = descriptor.get();
  m_events.emplace(name, std::move(descriptor));
  return d;
}

int CGameEventManager::LoadEventsFromFile(const char* filename) {
  KeyValues* file = new KeyValues("events");
  if (!filename || !file->LoadFromFile(m_fileSystem, filename)) {
    file->deleteThis();
    DevMsg(1, "GameEventManager: couldn't load %s\n", filename ? filename : "(null)");
    return 0;
  }
  int count = 0;
  for (KeyValues* section = file; section; section = section->GetNextKey()) {
    for (KeyValues* ev = section->GetFirstSubKey(); ev; ev = ev->GetNextKey()) {
      EventDescriptor* d = Declare(ev->GetName());
      d->file = filename;
      d->fields.clear();
      for (KeyValues* field = ev->GetFirstSubKey(); field; field = field->GetNextKey())
        d->fields.emplace_back(field->GetName(), ParseEventFieldType(field->GetString()));
      ++count;
    }
  }
  file->deleteThis();
  if (std::find(m_files.begin(), m_files.end(), filename) == m_files.end()) m_files.push_back(filename);
  return count;
}

std::vector<const EventDescriptor*> CGameEventManager::DeclaredEvents() const {
  std::vector<const EventDescriptor*> declared;
  for (const auto& [name, d] : m_events)
    if (!d->file.empty()) declared.push_back(d.get());
  auto fileOrder = [this](const EventDescriptor* d) {
    return std::find(m_files.begin(), m_files.end(), d->file) - m_files.begin();
  };
  std::sort(declared.begin(), declared.end(), [&](const EventDescriptor* a, const EventDescriptor* b) {
    auto fa = fileOrder(a), fb = fileOrder(b);
    return fa != fb ? fa < fb : strcasecmp(a->name.c_str(), b->name.c_str()) < 0;
  });
  return declared;
}

bool CGameEventManager::AddListener(IGameEventListener2* listener, const char* name, bool serverSide) {
  if (!listener || !name || !name[0]) return false;
  EventDescriptor* d = Declare(name);
  if (std::find(d->listeners.begin(), d->listeners.end(), listener) == d->listeners.end())
    d->listeners.push_back(listener);
  return true;
}

bool CGameEventManager::FindListener(IGameEventListener2* listener, const char* name) {
  EventDescriptor* d = FindDescriptor(name);
  return d && listener && std::find(d->listeners.begin(), d->listeners.end(), listener) != d->listeners.end();
}

void CGameEventManager::RemoveListener(IGameEventListener2* listener) {
  if (!listener) return;
  for (auto& [name, d] : m_events)
    for (IGameEventListener2*& l : d->listeners)
      if (l == listener) l = nullptr;
  m_removedWhileFiring = true;
  if (m_firing == 0) CompactListeners();
}

void CGameEventManager::CompactListeners() {
  for (auto& [name, d] : m_events) std::erase(d->listeners, nullptr);
  m_removedWhileFiring = false;
}

IGameEvent* CGameEventManager::CreateEvent(const char* name, bool force) {
  EventDescriptor* d = FindDescriptor(name);
  if (!d) return nullptr;
  bool heard = std::any_of(d->listeners.begin(), d->listeners.end(), [](auto* l) { return l != nullptr; });
  if (!force && !heard) return nullptr;
  return Track(new CGameEvent(d));
}

CGameEvent* CGameEventManager::Track(CGameEvent* event) {
  m_live.insert(event);
  return event;
}

CGameEvent* CGameEventManager::Live(IGameEvent* event) const {
  return event && m_live.count(event) ? static_cast<CGameEvent*>(event) : nullptr;
}

bool CGameEventManager::FireEvent(IGameEvent* event, bool dontBroadcast) {
  CGameEvent* e = Live(event);
  if (!e) {
    if (event) Warning("GameEventManager: FireEvent of an event that isn't live; ignored\n");
    return false;
  }
  EventDescriptor* d = e->Descriptor();
  ++m_firing;
  // By index: a listener may add listeners while it hears the event, and removed ones stay as nulls.
  for (size_t i = 0; i < d->listeners.size() && m_live.count(e); ++i)
    if (IGameEventListener2* l = d->listeners[i]) l->FireGameEvent(e);
  if (--m_firing == 0 && m_removedWhileFiring) CompactListeners();
  if (m_live.count(e)) FreeEvent(e);
  return true;
}

IGameEvent* CGameEventManager::DuplicateEvent(IGameEvent* event) {
  CGameEvent* e = Live(event);
  if (!e) {
    if (event) Warning("GameEventManager: DuplicateEvent of an event that isn't live; ignored\n");
    return nullptr;
  }
  return Track(new CGameEvent(e->Descriptor(), e->Data()));
}

void CGameEventManager::FreeEvent(IGameEvent* event) {
  CGameEvent* e = Live(event);
  if (!e) {
    if (event) Warning("GameEventManager: FreeEvent of an event that isn't live; ignored\n");
    return;
  }
  m_live.erase(e);
  delete e;
}
