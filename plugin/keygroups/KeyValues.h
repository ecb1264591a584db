// KeyValues: the one tree type of the system (keygroups, player and entity lists, menus, event resource
// files, script packs) and its text format. A node has a name, and either one typed value or a list of
// child nodes. Names are symbols of the engine's KeyValuesSystem; node memory comes from it too.
// Shared by the plugin and the stand-in server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "basetypes.h"

class IBaseFileSystem;
class KeyValuesLexer;

class KeyValues {
public:
  enum types_t {
    TYPE_NONE = 0,     // a node with children, or with no value yet
    TYPE_STRING = 1,
    TYPE_INT = 2,
    TYPE_FLOAT = 3,
    TYPE_PTR = 4,
    TYPE_WSTRING = 5,  // never stored by this system
    TYPE_COLOR = 6,
  };

  explicit KeyValues(const char* name);
  // Destroys this node, its children and its following peers. A node that stands in a list must be
  // removed with RemoveSubKey first, or the rest of the list goes with it.
  void deleteThis();

  const char* GetName() const;
  int GetNameSymbol() const { return m_iKeyName; }
  void SetName(const char* name);

  // Child lookup. A name holding '/' is a path: the part before the first '/' (at most 255 characters) is
  // looked up here and the rest in the child found. Null or empty gives this node. With `create`, missing
  // nodes are made (and a node that gets a child loses its value). Null when not found.
  KeyValues* FindKey(const char* name, bool create = false);
  KeyValues* FindKey(int symbol) const;
  // A new child at the end of the list, even if the name is in use.
  KeyValues* CreateKey(const char* name);
  // A new child named by the next free number: one more than the largest numeric child name, from 1.
  KeyValues* CreateNewKey();
  void AddSubKey(KeyValues* sub);     // appends at the end of the child list
  void RemoveSubKey(KeyValues* sub);  // unlinks a child without destroying it; its peer becomes null

  KeyValues* GetFirstSubKey() const { return m_pSub; }
  KeyValues* GetNextKey() const { return m_pPeer; }
  void SetNextKey(KeyValues* peer) { m_pPeer = peer; }
  KeyValues* GetFirstTrueSubKey() const;  // children of type none only
  KeyValues* GetNextTrueSubKey() const;
  KeyValues* GetFirstValue() const;       // children of any other type
  KeyValues* GetNextValue() const;

  // Getters find the key by FindKey(name, false); a null or empty name reads this node. GetString of an
  // int or float key turns that key into a string key.
  const char* GetString(const char* name = nullptr, const char* defaultValue = "");
  int GetInt(const char* name = nullptr, int defaultValue = 0);
  float GetFloat(const char* name = nullptr, float defaultValue = 0.0f);
  Color GetColor(const char* name = nullptr);
  types_t GetDataType(const char* name = nullptr);
  types_t GetDataTypeRaw() const { return types_t(m_iDataType); }
  bool IsEmpty(const char* name = nullptr);

  // Setters make the key when needed.
  void SetString(const char* name, const char* value);
  void SetInt(const char* name, int value);
  void SetFloat(const char* name, float value);
  void SetColor(const char* name, Color value);

  // A deep copy of this node and its children, without its peers.
  KeyValues* MakeCopy() const;
  // Copies `source` with its children and its peers into this node: this node takes source's name and
  // value, its children are replaced by copies of source's, and copies of source's peers are linked in
  // directly behind this node, ahead of the peers it had.
  void RecursiveCopyKeyValues(KeyValues& source);

  // The text format. Loading always gives true unless the file can't be opened: a malformed text keeps
  // what was read before the fault. Several sections load as a chain of peers starting at this node, and
  // #include'd files are appended at that chain's end.
  bool LoadFromFile(IBaseFileSystem* filesystem, const char* resourceName, const char* pathID = nullptr);
  bool LoadFromBuffer(const char* resourceName, const char* buffer, IBaseFileSystem* filesystem = nullptr,
                      const char* pathID = nullptr);
  bool SaveToFile(IBaseFileSystem* filesystem, const char* resourceName, const char* pathID = nullptr);

  // A handle names this node for as long as it lives (loop positions, Python key pointers); FromHandle of
  // a handle whose node is gone, or of a number never handed out, is null.
  uint64_t GetHandle();
  static KeyValues* FromHandle(uint64_t handle);

  void* operator new(size_t size);
  void operator delete(void* memory);

private:
  ~KeyValues();
  static void DestroyChain(KeyValues* node);
  KeyValues* ParseIncludedKeys(const char* resourceName, const char* includeName, IBaseFileSystem* filesystem,
                               const char* pathID, int listCount);
  void RecursiveLoadFromBuffer(KeyValuesLexer& lexer, int depth);
  void SetValueFromToken(const char* token, size_t length);
  void RecursiveSaveToFile(std::string& out, int indent);
  void ClearValue();

  // 48 bytes: a file of many keys is many nodes.
  int m_iKeyName = -1;
  unsigned char m_iDataType = TYPE_NONE;
  bool m_bHasEscapeSequences = false;
  char* m_sValue = nullptr;
  union {
    int m_iValue;
    float m_flValue;
    void* m_pValue;
    unsigned char m_Color[4];
  };
  KeyValues* m_pPeer = nullptr;
  KeyValues* m_pSub = nullptr;
  uint64_t m_handle = 0;
};
