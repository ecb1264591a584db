// tw_C's direct methods on key pointers. A key pointer is a KeyValues handle in a Python int: 0 names no
// key, and a handle whose node is gone, or a number never handed out, acts as 0. Python reaches only the user
// tree and the keys it made or detached itself (its own roots, kept here until it deletes them), so deleting
// or detaching finds the node's place there and unlinks it first; the tree's own three nodes are never
// renamed, deleted, detached or overwritten. Groups by name are the keygroup store's.
#include <algorithm>
#include <cstring>
#include <vector>

#include "filesystem.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "keygroups/KeyValues.h"
#include "keygroups/keygroups.h"
#include "messaging/usermessages.h"
#include "python/methodtable.h"

namespace {

using Handle = unsigned long long;

// Keys that Python made or detached: the heads of chains that belong to no tree. Never destroyed, so that
// what Python still holds stays reachable at exit.
std::vector<KeyValues*>& OwnRoots() {
  static std::vector<KeyValues*>& roots = *new std::vector<KeyValues*>;
  return roots;
}

KeyValues* KeyOf(Handle handle) { return handle ? KeyValues::FromHandle(handle) : nullptr; }
PyObject* KeyObject(KeyValues* key) { return PyLong_FromUnsignedLongLong(key ? key->GetHandle() : 0); }
PyObject* KeyOrNone(KeyValues* key) {
  if (!key) Py_RETURN_NONE;
  return KeyObject(key);
}

// UserKeys, UserGroups and Ungrouped: the keygroup commands rely on them by name and place.
bool IsTreeNode(KeyValues* key) {
  return g_userTree && (key == g_userTree || key == g_userTree->FindKey("UserGroups", false) ||
                        key == g_userTree->FindKey("Ungrouped", false));
}

bool RefusedTreeNode(KeyValues* key, const char* method) {
  if (!IsTreeNode(key)) return false;
  DbgMsg(0, "%s: the key tree's own keys (UserKeys, UserGroups, Ungrouped) can't be changed that way.\n", method);
  return true;
}

// ---- where a node stands ----

// The node's place: in `parent`'s child list, or behind `before` in a root's chain, or at the head of a
// chain (both null).
struct Place {
  KeyValues* parent = nullptr;
  KeyValues* before = nullptr;
};

// Searches the chain starting at `head` and everything below it, without recursion (trees made by Python
// may nest deeper than a stack would like).
bool FindInChain(KeyValues* head, KeyValues* node, Place& place) {
  KeyValues* before = nullptr;
  std::vector<KeyValues*> parents;
  for (KeyValues* k = head; k; before = k, k = k->GetNextKey()) {
    if (k == node) {
      place = Place{nullptr, before};
      return true;
    }
    parents.push_back(k);
  }
  while (!parents.empty()) {
    KeyValues* parent = parents.back();
    parents.pop_back();
    for (KeyValues* child = parent->GetFirstSubKey(); child; child = child->GetNextKey()) {
      if (child == node) {
        place = Place{parent, nullptr};
        return true;
      }
      parents.push_back(child);
    }
  }
  return false;
}

bool FindPlace(KeyValues* node, Place& place) {
  if (g_userTree && FindInChain(g_userTree, node, place)) return true;
  for (KeyValues* root : OwnRoots())
    if (FindInChain(root, node, place)) return true;
  return false;
}

bool IsChildOf(KeyValues* parent, KeyValues* node) {
  for (KeyValues* child = parent->GetFirstSubKey(); child; child = child->GetNextKey())
    if (child == node) return true;
  return false;
}

void ForgetRoot(KeyValues* key) {
  std::vector<KeyValues*>& roots = OwnRoots();
  roots.erase(std::remove(roots.begin(), roots.end(), key), roots.end());
}

// ---- the methods ----

PyObject* KeyGroupGetPointer(PyObject*, PyObject* args) {
  const char* name;
  if (!PyArg_ParseTuple(args, "s", &name)) return nullptr;
  return KeyObject(FindGroup(name, false));
}

PyObject* KeypCreate(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "")) return nullptr;
  KeyValues* key = new KeyValues(nullptr);
  OwnRoots().push_back(key);
  return KeyObject(key);
}

// A node in a list is unlinked first, so its peers stay; one of Python's own roots goes with its chain.
PyObject* KeypDelete(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  Place place;
  if (!key || RefusedTreeNode(key, "keypdelete")) Py_RETURN_NONE;
  if (!FindPlace(key, place)) {
    DbgMsg(0, "keypdelete: key %llu is in no tree that Python reaches; nothing deleted.\n", handle);
  } else if (place.parent) {
    DestroyChild(place.parent, key);
  } else if (place.before) {
    place.before->SetNextKey(key->GetNextKey());
    key->SetNextKey(nullptr);
    key->deleteThis();
  } else {
    ForgetRoot(key);
    key->deleteThis();
  }
  Py_RETURN_NONE;
}

PyObject* KeypGetName(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  const char* name = key ? key->GetName() : "";
  return PyUnicode_DecodeUTF8(name, Py_ssize_t(strlen(name)), "replace");
}

PyObject* KeypSetName(PyObject*, PyObject* args) {
  Handle handle;
  const char* name;
  if (!PyArg_ParseTuple(args, "Ks", &handle, &name)) return nullptr;
  KeyValues* key = KeyOf(handle);
  if (key && !RefusedTreeNode(key, "keypsetname")) key->SetName(name);
  Py_RETURN_NONE;
}

PyObject* KeypCreateSubKey(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  return KeyOrNone(key ? key->CreateNewKey() : nullptr);
}

PyObject* KeypFindSubKey(PyObject*, PyObject* args) {
  Handle handle;
  const char* name;
  unsigned char create;
  if (!PyArg_ParseTuple(args, "Ksb", &handle, &name, &create)) return nullptr;
  KeyValues* key = KeyOf(handle);
  return KeyOrNone(key ? FindChildKey(key, name, create != 0) : nullptr);
}

// The detached key becomes one of Python's own roots; a key that isn't a child of the first stays put.
PyObject* KeypDetachSubKey(PyObject*, PyObject* args) {
  Handle parentHandle, subHandle;
  if (!PyArg_ParseTuple(args, "KK", &parentHandle, &subHandle)) return nullptr;
  KeyValues* parent = KeyOf(parentHandle);
  KeyValues* sub = KeyOf(subHandle);
  if (!parent || !sub || RefusedTreeNode(sub, "keypdetachsubkey")) Py_RETURN_NONE;
  if (!IsChildOf(parent, sub)) {
    DbgMsg(0, "keypdetachsubkey: key %llu isn't a subkey of key %llu.\n", subHandle, parentHandle);
    Py_RETURN_NONE;
  }
  parent->RemoveSubKey(sub);
  OwnRoots().push_back(sub);
  Py_RETURN_NONE;
}

// The six walks: a key pointer, 0 at the end; None for key 0.
template <KeyValues* (KeyValues::*Step)() const>
PyObject* KeypWalk(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  if (!key) Py_RETURN_NONE;
  return KeyObject((key->*Step)());
}

// Reads a named value (a name of "" reads the key's own): the format's key and name, None for key 0.
bool ParseKeyAndName(PyObject* args, KeyValues*& key, const char*& name) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "Ks", &handle, &name)) return false;
  key = KeyOf(handle);
  return true;
}

PyObject* KeypGetInt(PyObject*, PyObject* args) {
  KeyValues* key;
  const char* name;
  if (!ParseKeyAndName(args, key, name)) return nullptr;
  if (!key) Py_RETURN_NONE;
  return PyLong_FromLong(key->GetInt(name, 0));
}

PyObject* KeypGetFloat(PyObject*, PyObject* args) {
  KeyValues* key;
  const char* name;
  if (!ParseKeyAndName(args, key, name)) return nullptr;
  if (!key) Py_RETURN_NONE;
  return PyFloat_FromDouble(double(key->GetFloat(name, 0.0f)));
}

PyObject* KeypGetString(PyObject*, PyObject* args) {
  KeyValues* key;
  const char* name;
  if (!ParseKeyAndName(args, key, name)) return nullptr;
  if (!key) Py_RETURN_NONE;
  const char* value = key->GetString(name, "");
  return PyUnicode_DecodeUTF8(value, Py_ssize_t(strlen(value)), "replace");
}

PyObject* KeypGetDataType(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  if (!key) Py_RETURN_NONE;
  return PyLong_FromLong(key->GetDataTypeRaw());
}

PyObject* KeypSetString(PyObject*, PyObject* args) {
  Handle handle;
  const char *name, *value;
  if (!PyArg_ParseTuple(args, "Kss", &handle, &name, &value)) return nullptr;
  if (KeyValues* key = KeyOf(handle)) key->SetString(name, value);
  Py_RETURN_NONE;
}

PyObject* KeypSetInt(PyObject*, PyObject* args) {
  Handle handle;
  const char* name;
  int value;
  if (!PyArg_ParseTuple(args, "Ksi", &handle, &name, &value)) return nullptr;
  if (KeyValues* key = KeyOf(handle)) key->SetInt(name, value);
  Py_RETURN_NONE;
}

PyObject* KeypSetFloat(PyObject*, PyObject* args) {
  Handle handle;
  const char* name;
  double value;
  if (!PyArg_ParseTuple(args, "Ksd", &handle, &name, &value)) return nullptr;
  if (KeyValues* key = KeyOf(handle)) key->SetFloat(name, float(value));
  Py_RETURN_NONE;
}

PyObject* KeypIsEmpty(PyObject*, PyObject* args) {
  Handle handle;
  if (!PyArg_ParseTuple(args, "K", &handle)) return nullptr;
  KeyValues* key = KeyOf(handle);
  if (!key) Py_RETURN_NONE;
  return PyLong_FromLong(key->IsEmpty(nullptr) ? 1 : 0);
}

PyObject* KeypSaveToFile(PyObject*, PyObject* args) {
  Handle handle;
  const char* path;
  if (!PyArg_ParseTuple(args, "Ks", &handle, &path)) return nullptr;
  if (KeyValues* key = KeyOf(handle)) key->SaveToFile(filesystem, path, nullptr);
  Py_RETURN_NONE;
}

PyObject* KeypLoadFromFile(PyObject*, PyObject* args) {
  Handle handle;
  const char* path;
  if (!PyArg_ParseTuple(args, "Ks", &handle, &path)) return nullptr;
  KeyValues* key = KeyOf(handle);
  if (key && !RefusedTreeNode(key, "keyploadfromfile")) key->LoadFromFile(filesystem, path, nullptr);
  Py_RETURN_NONE;
}

// The source chain is copied whole before the destination changes, so a source inside the destination (or
// the destination inside the source) copies what it was.
KeyValues* CopyChain(KeyValues* head) {
  KeyValues* first = head->MakeCopy();
  KeyValues* last = first;
  for (KeyValues* peer = head->GetNextKey(); peer; peer = peer->GetNextKey()) {
    last->SetNextKey(peer->MakeCopy());
    last = last->GetNextKey();
  }
  return first;
}

PyObject* KeypRecursiveKeyCopy(PyObject*, PyObject* args) {
  Handle destinationHandle, sourceHandle;
  if (!PyArg_ParseTuple(args, "KK", &destinationHandle, &sourceHandle)) return nullptr;
  KeyValues* destination = KeyOf(destinationHandle);
  KeyValues* source = KeyOf(sourceHandle);
  if (!destination || !source || RefusedTreeNode(destination, "keyprecursivekeycopy")) Py_RETURN_NONE;
  KeyValues* snapshot = CopyChain(source);
  destination->RecursiveCopyKeyValues(*snapshot);
  snapshot->deleteThis();
  Py_RETURN_NONE;
}

PyObject* SendKeypMsg(PyObject*, PyObject* args) {
  int userid, type;
  Handle handle;
  if (!PyArg_ParseTuple(args, "iiK", &userid, &type, &handle)) return nullptr;
  SendKeyValuesMessage(userid, type, KeyOf(handle));
  Py_RETURN_NONE;
}

const DirectMethodRow kKeyMethods[] = {
    {"keygroupgetpointer", KeyGroupGetPointer, "Returns the native pointer to a keygroup."},
    {"keypcreate", KeypCreate, "Returns the native pointer to a new keyvalues object."},
    {"keypdelete", KeypDelete, "Deletes a key by pointer (not recommended)"},
    {"keypgetname", KeypGetName, "Gets a key name by pointer"},
    {"keypsetname", KeypSetName, "Sets a key name by pointer"},
    {"keypcreatesubkey", KeypCreateSubKey, "Creates a subkey as an integer."},
    {"keypfindsubkey", KeypFindSubKey, "Finds or creates a subkey by a particular name."},
    {"keypdetachsubkey", KeypDetachSubKey, "Detaches a subkey by pointer."},
    {"keypgetfirstsubkey", KeypWalk<&KeyValues::GetFirstSubKey>, "Retrieves the first subkey underneath this pointer"},
    {"keypgetnextkey", KeypWalk<&KeyValues::GetNextKey>, "Retrieves the next key (peer) to this pointer."},
    {"keypgetfirsttruesubkey", KeypWalk<&KeyValues::GetFirstTrueSubKey>,
     "Retrieves the first true subkey for this pointer."},
    {"keypgetnexttruesubkey", KeypWalk<&KeyValues::GetNextTrueSubKey>,
     "Retrieves the next true subkey to this pointer (ignores 'values')"},
    {"keypgetfirstvaluekey", KeypWalk<&KeyValues::GetFirstValue>, "Retrieves the first value in this pointer."},
    {"keypgetnextvaluekey", KeypWalk<&KeyValues::GetNextValue>, "Retrieves the next value in this pointer."},
    {"keypgetint", KeypGetInt, "Retrieves the int value in this pointer by name."},
    {"keypgetfloat", KeypGetFloat, "Retrieves the float value in this pointer by name."},
    {"keypgetstring", KeypGetString, "Retrieves the string value in this pointer by name."},
    {"keypgetdatatype", KeypGetDataType, "Returns the data type id of the value in the key."},
    {"keypsetstring", KeypSetString, "Sets the string value in this pointer by name."},
    {"keypsetint", KeypSetInt, "Sets the int value in this pointer by name."},
    {"keypsetfloat", KeypSetFloat, "Sets the float value in this pointer by name."},
    {"keypisempty", KeypIsEmpty, "Check if the keyvalue pointer is empty."},
    {"keypsavetofile", KeypSaveToFile, "Saves the keyvalue pointer to filepath with all subkeys and values"},
    {"keyploadfromfile", KeypLoadFromFile, "Saves the keyvalue pointer to filepath with all subkeys and values"},
    {"keyprecursivekeycopy", KeypRecursiveKeyCopy, "Recursively copies a key into another key"},
    {"sendkeypmsg", SendKeypMsg,
     "Sends a client message based on a KeyValues pointer. sendkeypmsg(userid,type,keyid)"},
};
const DirectMethods s_keyMethods(kKeyMethods);

}  // namespace
