// The commands on keys and their values: create, delete, rename, set and get (by name or by position),
// the filter that keeps or drops keys by a value, and the listings. Which parent a key has, a group or
// "Ungrouped", is told by the optional-group rule of keygroups.h.
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "KeyValues.h"
#include "host/diagnostics.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "vstdlib.h"

namespace {

// The `position`th key (node of type none) of `parent`, counted from 1; null when there is none.
KeyValues* KeyAtPosition(KeyValues* parent, int position) {
  if (position <= 0) return nullptr;
  KeyValues* key = parent->GetFirstTrueSubKey();
  while (key && --position > 0) key = key->GetNextTrueSubKey();
  return key;
}

void ReportMissingKey(const char* name) {
  DbgMsg(0, "ERROR: Tidewright cannot find the %s key.\n", name);
  SetLastErrorText("Key not found");
}

void ReportUncreatableKey(const char* name) {
  DbgMsg(0, "ERROR: Tidewright cannot find/create the %s key!\n", name);
  SetLastErrorText("Key could not be found or created");
}

// ---- keys ----

void KeyCreate_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  bool grouped = args.Argc() == 3;
  KeyValues* parent = KeyParent(grouped, args.Argv(1), "Keygroup not found");
  const char* name = args.Argv(grouped ? 2 : 1);
  if (!parent || !KeyTextFits(name)) return;
  if (!FindChildKey(parent, name, true)) ReportUncreatableKey(name);
}

void KeyDelete_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  bool grouped = args.Argc() == 3;
  KeyValues* parent = KeyParent(grouped, args.Argv(1), "Keygroup not found");
  if (!parent) return;
  const char* name = args.Argv(grouped ? 2 : 1);
  KeyValues* holder = nullptr;
  KeyValues* key = FindKeyAndHolder(parent, name, holder);
  if (!key) {
    ReportMissingKey(name);
    return;
  }
  DestroyChild(holder, key);
}

void KeyRename_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  bool grouped = args.Argc() == 4;
  KeyValues* parent = KeyParent(grouped, args.Argv(1), "Keygroup not found");
  const char* name = args.Argv(grouped ? 2 : 1);
  const char* newName = args.Argv(grouped ? 3 : 2);
  if (!parent || !KeyTextFits(newName)) return;
  KeyValues* key = FindChildKey(parent, name);
  if (!key) {
    ReportMissingKey(name);
    return;
  }
  key->SetName(newName);
}

// ---- values ----

void KeySetValue_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  bool grouped = args.Argc() == 5;
  KeyValues* parent = KeyParent(grouped, args.Argv(1), "Keygroup not found");
  const char* name = args.Argv(grouped ? 2 : 1);
  const char* valueName = args.Argv(grouped ? 3 : 2);
  const char* text = args.Argv(grouped ? 4 : 3);
  if (!parent || !KeyTextFits(valueName) || !KeyTextFits(text)) return;
  KeyValues* key = FindChildKey(parent, name);
  KeyValues* value = key ? key->FindKey(valueName, true) : nullptr;
  if (!value) {
    ReportUncreatableKey(key ? valueName : name);
    return;
  }
  value->SetString(nullptr, text);
  DbgMsg(1, "%s key's %s value was set to %s.\n", name, valueName, text);
}

// At the console doors the first argument is the variable that receives the value; from Python there is
// none and every other argument stands one lower.
void KeyGetValue_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  int first = fromConsole ? 2 : 1;
  bool grouped = args.Argc() == first + 3;
  KeyValues* parent = KeyParent(grouped, args.Argv(first), "Keygroup not found");
  if (!parent) return;
  const char* name = args.Argv(grouped ? first + 1 : first);
  const char* valueName = args.Argv(grouped ? first + 2 : first + 1);
  KeyValues* key = FindChildKey(parent, name);
  if (!key) key = KeyAtPosition(parent, atoi(name));
  if (!key) {
    DbgMsg(0, "ERROR: Tidewright cannot find the %s key!\n", name);
    SetLastErrorText("Key not found");
    return;
  }
  ReturnText(fromConsole, args.Argv(1), key->GetString(valueName, ""));
}

// ---- filtering ----

// The first value of `key` whose name contains `name` and whose text is `text`, both ignoring case.
KeyValues* FirstMatchingValue(KeyValues* key, const char* name, const char* text) {
  for (KeyValues* value = key->GetFirstValue(); value; value = value->GetNextValue()) {
    const char* valueText = value->GetString(nullptr, "");
    bool sameText = strcasecmp(valueText, text) == 0;
    const char* inName = Q_stristr(value->GetName(), name);
    DbgMsg(4, "--%s/%s: %s/%s\n---%d: %s", value->GetName(), name, valueText, text, int(sameText),
           inName ? inName : "");
    if (sameText && inName) return value;
  }
  return nullptr;
}

// Mode "only" keeps the keys that have a matching value, any other mode ("not") drops them.
void FilterKeys(KeyValues* parent, bool only, const char* name, const char* text) {
  for (KeyValues* key = parent->GetFirstTrueSubKey(); key;) {
    KeyValues* next = key->GetNextTrueSubKey();
    KeyValues* match = FirstMatchingValue(key, name, text);
    if (match)
      DbgMsg(2, "KeyGroupFilter: Found a match for key %s on %s: %s\n", key->GetName(), match->GetName(),
             match->GetString(nullptr, ""));
    if ((match != nullptr) != only) DestroyChild(parent, key);
    key = next;
  }
}

void KeyGroupFilter_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  bool grouped = args.Argc() > 4;
  KeyValues* parent = KeyParent(grouped, args.Argv(1), "Keygroup not found");
  if (!parent) {
    DbgMsg(0, "ERROR: Tidewright cannot find the keygroup.\n");
    SetLastErrorText("Key not found");
    return;
  }
  int first = grouped ? 2 : 1;
  bool only = strcasecmp(args.Argv(first), "only") == 0;
  FilterKeys(parent, only, args.Argv(first + 1), args.Argv(first + 2));
}

// ---- listings ----

// Each key of `parent` with the values that stand directly in it. Numbers are read as text, and so
// become text keys.
void PrintKeys(KeyValues* parent) {
  DbgMsg(0, "----------------------\n");
  for (KeyValues* key = parent->GetFirstTrueSubKey(); key; key = key->GetNextTrueSubKey()) {
    DbgMsg(0, "Key: %s\n", key->GetName());
    for (KeyValues* value = key->GetFirstValue(); value; value = value->GetNextValue())
      DbgMsg(0, "   Name: %s\n  Value: %s\n", value->GetName(), value->GetString(nullptr, ""));
  }
  DbgMsg(0, "----------------------\n");
}

void KeyList_h(bool expand, bool fromConsole) {
  KeyArgs args(expand, "Keys not ready, yet.");
  if (!args.Ready()) return;
  if (KeyValues* parent = KeyParent(args.Argc() == 2, args.Argv(1), "Key not found")) PrintKeys(parent);
}

void KeyGroupList_f() {
  if (KeyValues* groups = FindUserGroups()) PrintKeys(groups);
}

const CommandRow kKeyCommands[] = {
    {"keycreate", KeyCreate_h, 2, "Syntax: %s [group] <key>\n", "Creates a key in a keygroup or among the free keys.",
     DOORS_ALL},
    {"keydelete", KeyDelete_h, 2, "Syntax: %s [group] <key>\n", "Deletes a key with its values.", DOORS_ALL},
    {"keyrename", KeyRename_h, 3, "Syntax: %s [group] <key> <newkeyname>\n", "Renames a key.", DOORS_ALL},
    {"keysetvalue", KeySetValue_h, 4, "Syntax: %s [group] <key> <valuename> <value>\n",
     "Sets a value of an existing key.", DOORS_ALL},
    {"keygetvalue", KeyGetValue_h, 4, "Syntax: %s <var> [group] <key> <valuename>\n",
     "Stores a value of a key, found by name or by position, in a variable.", DOORS_ALL},
    {"keygroupfilter", KeyGroupFilter_h, 2, "Syntax: %s [group] <not/only> <value-name> <value>\n",
     "Drops the keys that have (not) or lack (only) a matching value.", DOORS_ALL},
    {"keylist", KeyList_h, 0, "", "Lists the keys of a keygroup, or the free keys, with their values.",
     DOORS_ALL},
};
const CommandTable s_keyCommands(kKeyCommands);

const PlainCommandRow kKeyPlainCommands[] = {
    {"tw_keygrouplist", KeyGroupList_f, "Lists the keygroups with the values that stand directly in them."},
};
const CommandTable s_keyPlainCommands(kKeyPlainCommands);

}  // namespace
