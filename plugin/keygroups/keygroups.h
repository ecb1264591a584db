// The keygroup store: the groups of the user tree as every part reaches them, the keygroup form of a list
// result, and the helpers that the keygroup commands share (the tree test, the optional-group rule, removal,
// keygroup files). The commands themselves live in keygroups.cpp, keycommands.cpp and keyloops.cpp.
#pragma once

#include <cstddef>

#include "language/doors.h"

class KeyValues;
class ListResult;

// Longest keygroup file path, and the longest key name, value name or value text a command stores.
inline constexpr int kMaxKeyGroupPath = 259;
inline constexpr int kMaxKeyText = 1023;

// The user tree of keygroups: "UserKeys" with "UserGroups" and "Ungrouped". Null until Load.
extern KeyValues* g_userTree;
// Load: makes the user tree unless a Load before made it.
void KeyGroups_OnLoad();

// "UserGroups" of the user tree. Null, after the report, when the tree isn't made yet (last error
// "Keys not ready yet") or holds no "UserGroups".
KeyValues* FindUserGroups();

// The group `name` under "UserGroups", made when `create` is true. A name with '/' is a path and makes
// nested nodes. Null when the tree or "UserGroups" is missing (reported as FindUserGroups does), when no
// such group exists, or when the name names "UserGroups" itself (an empty name).
KeyValues* FindGroup(const char* name, bool create);

// ---- list results ----

// The keygroup that a list command fills at the console doors, found or made before the list is gathered.
// Null, after "ERROR: Tidewright couldn't create the user group.", when it can't be made.
KeyValues* OpenListGroup(const char* name);
// How a list's rows become keys of its keygroup: found or made by name, or appended as new keys even where
// a key of that name stands (a second run of a snapshot then shows twice).
enum class ListRows { FindOrMake, Append };
// A filled list: at the console doors into `group` (from OpenListGroup), each row a key with its fields set
// on it; from Python into the result slot, where it becomes a dictionary.
void ReturnList(bool fromConsole, KeyValues* group, ListResult list, ListRows rows = ListRows::FindOrMake);

// ---- shared by the keygroup commands ----

// The opening of every keygroup command, as a player argument will open the world's commands: the
// command's arguments and the test that the user tree exists. A missing tree is reported here ("ERROR:
// Tidewright key access attempted before keys have been initialized." at level 0, `lastError` as the last
// error), so the command only asks Ready() and ends.
class KeyArgs : public ArgView {
public:
  explicit KeyArgs(bool expand, const char* lastError = "Keys not ready, yet");
  bool Ready() const { return m_ready; }

private:
  bool m_ready;
};

// The parent of a key command by the optional-group rule: the group `groupName` when `grouped`, else
// "Ungrouped". Null, after "ERROR: Tidewright cannot find the %s group!\n" and `missingError`, when the group
// is missing.
KeyValues* KeyParent(bool grouped, const char* groupName, const char* missingError);

// container->FindKey(name, create), except that a name naming the container itself (an empty one) names
// nothing.
KeyValues* FindChildKey(KeyValues* container, const char* name, bool create = false);

// The node that `path` names below `container`, and in `holder` the node in whose child list it stands, so
// that a path like "a/b" can be unlinked where it really is. Null when nothing (or the container) is named.
KeyValues* FindKeyAndHolder(KeyValues* container, const char* path, KeyValues*& holder);

// Unlinks `node` from the list of `holder` and destroys it with everything below it.
void DestroyChild(KeyValues* holder, KeyValues* node);

// False, after a report and the last error "Invalid parameter", when a name or value a command is about to
// store is longer than kMaxKeyText.
bool KeyTextFits(const char* text);

// The file of a keygroup, "%s/%s/tw_%s_db.txt", by the form of the command's arguments: with `argc` 3 a
// `where` beginning with '|' names a folder under "addons/tidewright", any other `where` one under
// tidewright_datadirectory; with any other count the file is in tidewright_datadirectory/
// tidewright_subdirectory. False when the path would pass kMaxKeyGroupPath (the path is then cut).
bool KeyGroupFilePath(char* path, size_t size, int argc, const char* group, const char* where);

// Loads a keygroup file into `group`. The first section renames the group and adds its keys behind those
// that exist; every further section or #include'd tree becomes a group of its own, standing directly after
// `group` and before the groups that followed it. False when the file can't be opened.
bool LoadKeyGroup(KeyValues* group, const char* path);
