// The existence test: `exists` answers 1 or 0 for a name of one of eleven kinds (variable, map, say command,
// client command, console command, keygroup, userid, key, key value, script, block). Each kind is asked
// of the part that owns it; this file only picks the question by the type word.
#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "KeyValues.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "icvar.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/regcmds.h"
#include "script/machine.h"
#include "world/players.h"

namespace {

// Longest map name handed to the engine.
constexpr size_t kMaxMapName = 1022;

// The names behind the type word: a is always there, b and c only when the call gave them.
struct ExistsNames {
  const char* a;
  const char* b;  // null when not given
  const char* c;  // null when not given
};

// ---- the kinds owned elsewhere ----

bool MapExists(const ExistsNames& names) {
  char map[kMaxMapName + 1];
  snprintf(map, sizeof map, "%s", names.a);
  return engine->IsMapValid(map);
}

// The engine's chain holds a command, not a variable, of that name (case ignored). The number of entries
// passed over shows at level 1, found or not.
bool CommandExists(const ExistsNames& names) {
  int passed = 0;
  bool found = false;
  for (const ConCommandBase* base = cvar ? cvar->GetCommands() : nullptr; base; base = base->GetNext()) {
    if (base->IsCommand() && base->GetName() && strcasecmp(base->GetName(), names.a) == 0) {
      found = true;
      break;
    }
    ++passed;
  }
  DbgMsg(1, "Found command %s at: %d\n", names.a, passed);
  return found;
}

// The player lookup decides, traces included: a usable edict of class "player" with that userid.
bool UseridExists(const ExistsNames& names) { return LookupEdictByUserid(atoi(names.a)) != nullptr; }

bool ScriptExists(const ExistsNames& names) { return g_scriptMachine.registry.FindScript(names.a) != nullptr; }
bool BlockExists(const ExistsNames& names) { return g_scriptMachine.registry.GetBlock(names.a) != nullptr; }
bool VariableExists(const ExistsNames& names) { return FindServerVar(names.a) != nullptr; }
bool SayCommandExists(const ExistsNames& names) { return FindSayCommand(names.a) != nullptr; }
bool ClientCommandExists(const ExistsNames& names) { return FindClientCommand(names.a) != nullptr; }

// ---- keys ----
// These need the user tree; without it the command reports and stores nothing (KeyKindsReady).

bool KeygroupExists(const ExistsNames& names) { return FindGroup(names.a, false) != nullptr; }

// The key `key` of group `group`, or of "Ungrouped" when `group` is null.
KeyValues* FindUserKey(const char* group, const char* key) {
  KeyValues* parent = group ? FindGroup(group, false) : KeyParent(false, nullptr, "Key not found");
  return parent ? FindChildKey(parent, key) : nullptr;
}

bool KeyExists(const ExistsNames& names) {
  return (names.b ? FindUserKey(names.a, names.b) : FindUserKey(nullptr, names.a)) != nullptr;
}

// Names only: a value named so, whatever its text.
bool KeyValueExists(const ExistsNames& names) {
  if (!names.b) return KeyExists(names);
  KeyValues* key = names.c ? FindUserKey(names.a, names.b) : FindUserKey(nullptr, names.a);
  return key && FindChildKey(key, names.c ? names.c : names.b) != nullptr;
}

// ---- the type words ----

struct ExistsKind {
  const char* word;
  bool (*test)(const ExistsNames&);
  bool needsKeys;
};
const ExistsKind kKinds[] = {
    {"variable", VariableExists, false},
    {"map", MapExists, false},
    {"saycommand", SayCommandExists, false},
    {"clientcommand", ClientCommandExists, false},
    {"command", CommandExists, false},
    {"keygroup", KeygroupExists, true},
    {"userid", UseridExists, false},
    {"key", KeyExists, true},
    {"keyvalue", KeyValueExists, true},
    {"script", ScriptExists, false},
    {"block", BlockExists, false},
};

const ExistsKind* KindOf(const char* word) {
  for (const ExistsKind& kind : kKinds)
    if (strcasecmp(kind.word, word) == 0) return &kind;
  return nullptr;
}

// False, after the report, when the user tree or its "UserGroups" is missing: no value is stored then.
bool KeyKindsReady(bool expand, const ExistsKind& kind) {
  if (!KeyArgs(expand).Ready()) return false;
  return kind.test != KeygroupExists || FindUserGroups() != nullptr;
}

// From Python the variable is left out, so every input stands one index lower.
void Exists_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int shift = fromConsole ? 0 : -1;
  const int count = fromConsole ? args.Argc() : args.Argc() + 1;
  const ExistsNames names{args.Argv(3 + shift), count >= 5 ? args.Argv(4 + shift) : nullptr,
                          count >= 6 ? args.Argv(5 + shift) : nullptr};
  const ExistsKind* kind = KindOf(args.Argv(2 + shift));
  if (kind && kind->needsKeys && !KeyKindsReady(expand, *kind)) return;
  ReturnInt(fromConsole, args.Argv(1), kind && kind->test(names) ? 1 : 0);
}

const CommandRow kExistsCommands[] = {
    {"exists", Exists_h, 3, "Syntax: %s <var> <type> [optional] [optional] <name-to-check>\n",
     "Stores 1 when a name exists, else 0. Types: variable, map, saycommand, clientcommand, command, keygroup, "
     "userid, key, keyvalue, script, block.",
     DOORS_ALL},
};
const CommandTable s_existsCommands(kExistsCommands);

}  // namespace
