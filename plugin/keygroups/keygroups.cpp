// The keygroup store: the user tree, finding groups in it, the optional-group rule, keygroup files, and the
// commands on whole groups (create, delete, rename, copy, load, save). The tree is made by the first Load
// and lives for the process; keys and loops are in keycommands.cpp and keyloops.cpp.
#include "keygroups/keygroups.h"

#include <cstdio>
#include <cstring>

#include "KeyValues.h"
#include "filesystem.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "vstdlib.h"

namespace {

// The longest path part before a '/' that a lookup takes, as KeyValues::FindKey does.
constexpr size_t kMaxPathPart = 255;
constexpr const char kAddonFolder[] = "addons/tidewright";

void ReportKeysNotReady(const char* lastError) {
  ReportScriptError(0, "ERROR: Tidewright key access attempted before keys have been initialized.\n");
  SetLastErrorText("%s", lastError);
}

// The child of `node` named by the first `length` bytes of `part`.
KeyValues* ChildByPart(KeyValues* node, const char* part, size_t length) {
  char name[kMaxPathPart + 1];
  memcpy(name, part, length);
  name[length] = '\0';
  return node->FindKey(KeyValuesSystem()->GetSymbolForString(name));
}

}  // namespace

KeyValues* g_userTree = nullptr;

void KeyGroups_OnLoad() {
  if (g_userTree) return;
  g_userTree = new KeyValues("UserKeys");
  g_userTree->FindKey("UserGroups", true);
  g_userTree->FindKey("Ungrouped", true);
}

// ---- finding groups ----

KeyValues* FindUserGroups() {
  if (!g_userTree) {
    ReportKeysNotReady("Keys not ready yet");
    return nullptr;
  }
  KeyValues* groups = g_userTree->FindKey("UserGroups", false);
  if (!groups) DbgMsg(0, "ERROR: Tidewright cannot find any UserGroups!\n");
  return groups;
}

KeyValues* FindGroup(const char* name, bool create) {
  KeyValues* groups = FindUserGroups();
  return groups ? FindChildKey(groups, name, create) : nullptr;
}

KeyArgs::KeyArgs(bool expand, const char* lastError) : ArgView(expand), m_ready(g_userTree != nullptr) {
  if (!m_ready) ReportKeysNotReady(lastError);
}

KeyValues* KeyParent(bool grouped, const char* groupName, const char* missingError) {
  KeyValues* parent = grouped ? FindGroup(groupName, false) : g_userTree->FindKey("Ungrouped", false);
  if (!parent) {
    ReportScriptError(0, "ERROR: Tidewright cannot find the %s group!\n", grouped ? groupName : "Ungrouped");
    SetLastErrorText("%s", missingError);
  }
  return parent;
}

KeyValues* FindChildKey(KeyValues* container, const char* name, bool create) {
  KeyValues* found = container->FindKey(name, create);
  return found == container ? nullptr : found;
}

KeyValues* FindKeyAndHolder(KeyValues* container, const char* path, KeyValues*& holder) {
  holder = nullptr;
  KeyValues* node = container;
  const char* rest = path ? path : "";
  while (node && *rest) {
    const char* slash = strchr(rest, '/');
    holder = node;
    if (!slash) {
      node = node->FindKey(KeyValuesSystem()->GetSymbolForString(rest));
      break;
    }
    size_t length = size_t(slash - rest);
    if (length > kMaxPathPart) return nullptr;
    node = ChildByPart(node, rest, length);
    rest = slash + 1;
  }
  return node == container ? nullptr : node;
}

void DestroyChild(KeyValues* holder, KeyValues* node) {
  holder->RemoveSubKey(node);
  node->deleteThis();
}

bool KeyTextFits(const char* text) {
  if (strlen(text) <= size_t(kMaxKeyText)) return true;
  DbgMsg(0, "ERROR: Tidewright key names and values are limited to %d characters.\n", kMaxKeyText);
  SetLastErrorText("Invalid parameter");
  return false;
}

// ---- keygroup files ----

bool KeyGroupFilePath(char* path, size_t size, int argc, const char* group, const char* where) {
  const char* first = tidewright_datadirectory.GetString();
  const char* second = tidewright_subdirectory.GetString();
  if (argc == 3 && where[0] == '|') {
    first = kAddonFolder;
    second = where + 1;
  } else if (argc == 3) {
    second = where;
  }
  int length = snprintf(path, size, "%s/%s/tw_%s_db.txt", first, second, group);
  return length >= 0 && size_t(length) < size && length <= kMaxKeyGroupPath;
}

bool LoadKeyGroup(KeyValues* group, const char* path) {
  // The reader links further sections and included trees as peers of the node it loads into; the groups
  // that followed this one are held aside meanwhile and linked in again behind whatever the file added.
  KeyValues* following = group->GetNextKey();
  group->SetNextKey(nullptr);
  bool loaded = group->LoadFromFile(filesystem, path, nullptr);
  KeyValues* last = group;
  while (last->GetNextKey()) last = last->GetNextKey();
  last->SetNextKey(following);
  return loaded;
}

namespace {

// The path of the command's keygroup file; false after the report when it is too long.
bool CommandFilePath(const ArgView& args, char (&path)[kMaxKeyGroupPath + 1]) {
  if (KeyGroupFilePath(path, sizeof path, args.Argc(), args.Argv(1), args.Argv(2))) return true;
  DbgMsg(0, "ERROR: The keygroup file path is longer than %d characters: %s\n", kMaxKeyGroupPath, path);
  SetLastErrorText("Resulting string too long.");
  return false;
}

// A group for the commands that work on one: null after "Tidewright couldn't find the user group %s\n".
KeyValues* ExistingGroup(const char* name, KeyValues** holder = nullptr) {
  KeyValues* groups = FindUserGroups();
  if (!groups) return nullptr;
  KeyValues* ignored;
  KeyValues* group = FindKeyAndHolder(groups, name, holder ? *holder : ignored);
  if (!group) {
    DbgMsg(0, "Tidewright couldn't find the user group %s\n", name);
    SetLastErrorText("Key not found");
  }
  return group;
}

// ---- the group commands ----

void KeyGroupCreate_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (!KeyTextFits(args.Argv(1))) return;
  if (!FindGroup(args.Argv(1), true)) DbgMsg(0, "ERROR: Tidewright couldn't create the user group.\n");
}

void KeyGroupDelete_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready()) return;
  KeyValues* holder = nullptr;
  if (KeyValues* group = ExistingGroup(args.Argv(1), &holder)) DestroyChild(holder, group);
}

void KeyGroupRename_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  if (!args.Ready() || !KeyTextFits(args.Argv(2))) return;
  if (KeyValues* group = ExistingGroup(args.Argv(1))) group->SetName(args.Argv(2));
}

void KeyGroupCopy_h(bool expand, bool fromConsole) {
  KeyArgs args(expand, "Keys not ready, yet.");
  if (!args.Ready() || !KeyTextFits(args.Argv(2))) return;
  KeyValues* source = ExistingGroup(args.Argv(1));
  if (!source) return;
  // The copy stands directly behind its source, before the groups that followed it.
  KeyValues* copy = source->MakeCopy();
  copy->SetName(args.Argv(2));
  copy->SetNextKey(source->GetNextKey());
  source->SetNextKey(copy);
}

void KeyGroupLoad_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  char path[kMaxKeyGroupPath + 1];
  if (!args.Ready() || !CommandFilePath(args, path)) return;
  KeyValues* group = FindGroup(args.Argv(1), true);
  if (!group || !LoadKeyGroup(group, path)) {
    DbgMsg(0, "ERROR: Could not load keygroup: %s!\n", path);
    SetLastErrorText("Keygroup not found");
    return;
  }
  DbgMsg(0, "Loaded: %s\n", path);
}

void KeyGroupSave_h(bool expand, bool fromConsole) {
  KeyArgs args(expand);
  char path[kMaxKeyGroupPath + 1];
  if (!args.Ready() || !CommandFilePath(args, path)) return;
  KeyValues* group = ExistingGroup(args.Argv(1));
  if (!group) return;
  if (!group->SaveToFile(filesystem, path, nullptr)) {
    DbgMsg(0, "ERROR: Could not save keygroup file: %s!\n", path);
    SetLastErrorText("Keygroup could not be saved");
    return;
  }
  DbgMsg(0, "Saved: %s\n", path);
}

const CommandRow kGroupCommands[] = {
    {"keygroupcreate", KeyGroupCreate_h, 2, "Syntax: %s <groupname>\n", "Creates a keygroup.", DOORS_ALL},
    {"keygroupdelete", KeyGroupDelete_h, 2, "Syntax: %s <groupname>\n",
     "Deletes a keygroup with all its keys.", DOORS_ALL},
    {"keygrouprename", KeyGroupRename_h, 3, "Syntax: %s <groupname> <newname>\n", "Renames a keygroup.",
     DOORS_ALL},
    {"keygroupcopy", KeyGroupCopy_h, 2, "Syntax: %s <FromKeygroup> <ToKeygroup>\n",
     "Copies a keygroup under a new name.", DOORS_ALL},
    {"keygroupload", KeyGroupLoad_h, 2, "Syntax: %s <groupname> [path]\n",
     "Loads a keygroup from its file; [path] is a folder under the data directory, or under the script "
     "folder when it begins with |.",
     DOORS_ALL},
    {"keygroupsave", KeyGroupSave_h, 2, "Syntax: %s <groupname> [path]\n",
     "Saves a keygroup to its file; [path] is a folder under the data directory, or under the script "
     "folder when it begins with |.",
     DOORS_ALL},
};
const CommandTable s_groupCommands(kGroupCommands);

}  // namespace
