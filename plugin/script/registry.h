// The registry of loaded scripts: the list in load order, the table of blocks by full name, and the table
// of event chains by event name. Removal keeps both tables and every chain through the script whole.
#pragma once

#include "host/nametable.h"
#include "script/scriptfile.h"

class CScriptRegistry {
public:
  CScriptRegistry();
  ~CScriptRegistry();
  CScriptRegistry(const CScriptRegistry&) = delete;
  CScriptRegistry& operator=(const CScriptRegistry&) = delete;

  // Script names compare ignoring case.
  CScript* FindScript(const char* name) const;
  void SetScriptEnabled(const char* name, bool enabled);
  // Takes ownership when it answers true; false for null or a name already loaded.
  bool AddScript(CScript* script);
  bool RemoveScript(const char* name);

  // Block names compare exactly; with two blocks of one name the first loaded keeps it.
  CBlock* GetBlock(const char* fullName);
  // The handle of the block of that full name (what tw__de carries), or 0.
  BlockHandle GetEventHash(const char* fullName);
  CBlock* GetEvent(BlockHandle handle);
  CBlock* GetEventHead(const char* eventName);

  bool HasEvent(const char* eventName);
  // "tw__de <hex handle>;" for each block of the chain whose script is enabled, in chain order, ending in
  // a line feed; a new line starts before one would pass 2047 characters. Allocated; the caller frees it.
  char* BuildEventCommands(const char* eventName);

  CScript* FirstScript() const { return m_scripts; }

private:
  void AddBlocks(CScript* script);
  void LinkEvent(CBlock* block);
  void UnlinkEvent(CBlock* block);
  void RemoveBlock(CBlock* block);

  CScript* m_scripts = nullptr;
  // Keyed by the blocks' own names, which live as long as their entries.
  using BlockTable = NameTable<CBlock*, const char*>;
  BlockTable m_blocks{false};
  BlockTable m_events{false};
};
