// Property paths and entity memory: the walk of a dotted path through the server classes and their send
// tables, the refusal of a path whose class the entity doesn't have, and the guarded reads and writes at
// the offset found. Misses are silent at the default level; level-3 traces tell the walk.
#include "world/properties.h"

#include <cstring>
#include <strings.h>

#include "dt_send.h"
#include "edict.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "world/players.h"

namespace {

const char* const kTypeWords[] = {"int", "float", "vector", "string", "array", "datatable"};
// Deepest chain of "baseclass" tables followed; the game's hierarchies are a handful deep.
constexpr int kMaxBaseclassDepth = 64;

// A name of the game's tables equals a path component, case ignored. A null name matches nothing.
bool NameIs(const char* name, std::string_view component) {
  if (!name) return false;
  if (component.empty()) return name[0] == '\0';
  return strncasecmp(name, component.data(), component.size()) == 0 && name[component.size()] == '\0';
}

ServerClass* FirstServerClass() { return gamedll ? gamedll->GetAllServerClasses() : nullptr; }

// The first class in list order whose network name is the component.
ServerClass* FindClassNamed(std::string_view name) {
  for (ServerClass* c = FirstServerClass(); c; c = c->m_pNext) {
    DbgMsg(3, "ServerClass: %s\n", c->GetName() ? c->GetName() : "");
    if (NameIs(c->GetName(), name)) return c;
  }
  return nullptr;
}

// True when `wanted` is `table` or stands behind it through "baseclass" datatables.
bool ReachesThroughBaseclass(SendTable* table, const SendTable* wanted) {
  for (int depth = 0; table && depth < kMaxBaseclassDepth; ++depth) {
    if (table == wanted) return true;
    SendTable* next = nullptr;
    for (int i = 0; i < table->GetNumProps(); ++i) {
      SendProp* p = table->GetProp(i);
      if (p->GetType() == DPT_DataTable && p->GetName() && strcasecmp(p->GetName(), "baseclass") == 0) {
        next = p->GetDataTable();
        break;
      }
    }
    table = next;
  }
  return false;
}

// The start of every search: split, offset 0, the level-3 trace, the class of the head.
ServerClass* StartSearch(const char* path, std::string_view& tail, int& offset) {
  std::string_view head;
  offset = 0;
  if (!SplitPath(path, head, tail)) return nullptr;
  DbgMsg(3, "Searching %s\n", path);
  return FindClassNamed(head);
}

// The entity object behind a usable edict, or null: the guard that every read and write passes first.
char* GuardedObject(int offset, edict_t* edict) {
  if (!IsUsableEdict(edict) || offset < 1 || !edict->GetUnknown()) return nullptr;
  return reinterpret_cast<char*>(edict->GetUnknown());
}

template <class T>
bool Read(int offset, edict_t* edict, T& value) {
  char* object = GuardedObject(offset, edict);
  if (!object) return false;
  memcpy(&value, object + offset, sizeof value);
  return true;
}

template <class T>
bool Write(int offset, edict_t* edict, const T& value) {
  char* object = GuardedObject(offset, edict);
  if (!object) return false;
  memcpy(object + offset, &value, sizeof value);
  edict->StateChanged();
  return true;
}

}  // namespace

const char* PropertyTypeWord(int type) {
  return type >= 0 && type < int(sizeof kTypeWords / sizeof kTypeWords[0]) ? kTypeWords[type] : "Unknown";
}

bool SplitPath(const char* path, std::string_view& head, std::string_view& tail) {
  if (!path) {
    ReportScriptError(0, "ERROR: invalid SplitPath parameters.\n");
    SetLastErrorText("Invalid parameters");
    return false;
  }
  std::string_view whole(path);
  size_t dot = whole.find('.');
  head = whole.substr(0, dot);
  tail = dot == std::string_view::npos ? std::string_view() : whole.substr(dot + 1);
  return head.size() <= kMaxPathHead && tail.size() <= kMaxPathTail;
}

bool FindPropertyInTable(SendTable* table, std::string_view path, int& offset, int& type) {
  if (!table) return false;
  DbgMsg(3, "Searching %.*s...\n", int(path.size()), path.data());
  size_t dot = path.find('.');
  std::string_view head = path.substr(0, dot);
  std::string_view tail = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
  if (head.size() > kMaxPathHead || tail.size() > kMaxPathTail) return false;
  SendProp* found = nullptr;
  for (int i = 0; i < table->GetNumProps() && !found; ++i)
    if (NameIs(table->GetProp(i)->GetName(), head)) found = table->GetProp(i);
  if (!found) return false;
  offset += found->GetOffset();
  type = found->GetType();
  if (type >= DPT_Int && type <= DPT_Array) {
    DbgMsg(3, "Found %s\n", found->GetName());
    return true;
  }
  TW_ASSERT(tail.size() < path.size(), "each datatable step takes a component off the path");
  if (type == DPT_DataTable) return FindPropertyInTable(found->GetDataTable(), tail, offset, type);
  offset = 0;
  return false;
}

bool FindProperty(const char* path, int& offset, int& type) {
  std::string_view tail;
  ServerClass* serverClass = StartSearch(path, tail, offset);
  return serverClass && FindPropertyInTable(serverClass->m_pTable, tail, offset, type);
}

bool FindEntityProperty(edict_t* edict, const char* path, int& offset, int& type) {
  std::string_view tail;
  ServerClass* serverClass = StartSearch(path, tail, offset);
  ServerClass* own = EntityServerClass(edict);
  if (!serverClass || !own || !ReachesThroughBaseclass(own->m_pTable, serverClass->m_pTable)) {
    if (serverClass) DbgMsg(3, "%s is no class of this entity\n", serverClass->GetName());
    return false;
  }
  return FindPropertyInTable(serverClass->m_pTable, tail, offset, type);
}

int GetOffsetOfProperty(const char* className, const char* propertyName) {
  for (ServerClass* c = FirstServerClass(); className && propertyName && c; c = c->m_pNext) {
    DbgMsg(3, "ServerClass: %s\n", c->GetName() ? c->GetName() : "");
    if (!c->GetName() || strcasecmp(c->GetName(), className) != 0 || !c->m_pTable) continue;
    SendTable* table = c->m_pTable;
    for (int i = 0; i < table->GetNumProps(); ++i) {
      SendProp* p = table->GetProp(i);
      DbgMsg(3, "%s found %s\n", className, p->GetName() ? p->GetName() : "");
      if (!p->GetName() || strcasecmp(p->GetName(), propertyName) != 0) continue;
      DbgMsg(3, "%s::%s - offset: %d\n", className, propertyName, p->GetOffset());
      return p->GetOffset();
    }
    break;
  }
  DbgMsg(1, "ERROR: No Offset for %s::%s\n", className ? className : "", propertyName ? propertyName : "");
  SetLastErrorText("Invalid offset");
  return 0;
}

ServerClass* EntityServerClass(edict_t* edict) {
  if (!IsUsableEdict(edict) || !edict->GetUnknown() || !edict->GetNetworkable()) return nullptr;
  return edict->GetNetworkable()->GetServerClass();
}

bool ReadPropertyInt(int offset, edict_t* edict, int& value) { return Read(offset, edict, value); }
bool ReadPropertyFloat(int offset, edict_t* edict, float& value) { return Read(offset, edict, value); }

bool ReadPropertyVector(int offset, edict_t* edict, Vector& value) {
  float xyz[3];
  if (!Read(offset, edict, xyz)) return false;
  value = Vector(xyz[0], xyz[1], xyz[2]);
  return true;
}

bool WritePropertyInt(int offset, edict_t* edict, int value) { return Write(offset, edict, value); }
bool WritePropertyFloat(int offset, edict_t* edict, float value) { return Write(offset, edict, value); }

bool WritePropertyVector(int offset, edict_t* edict, const Vector& value) {
  const float xyz[3] = {value.x, value.y, value.z};
  return Write(offset, edict, xyz);
}
