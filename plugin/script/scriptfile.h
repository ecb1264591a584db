// Compiled scripts: a script owns its blocks, a block owns its lines. The reader turns a script file into
// blocks with their generated lines (tw__sb first, tw__eb and an end line last, tw__db for nested braces).
#pragma once

#include <cstddef>
#include <cstdint>

#include "tier1/handletable.h"

class CBlock;
class CScript;
class CScriptLine;

// Limits of script text, in bytes with the terminator.
enum {
  MAX_SCRIPT_LINE = 3000,     // a line inside a section
  MAX_TOPLEVEL_LINE = 8500,   // a line outside sections
  MAX_SECTION_NAME = 100,     // the name written behind "block " or "event "
  MAX_BLOCK_NAME = 512,       // a block's full name
  MAX_SCRIPT_NAME = 1024,     // a script's name, and the path made from it
};

using LineHandle = HandleTable<CScriptLine>::Handle;
using BlockHandle = HandleTable<CBlock>::Handle;

// Lines and blocks are named by handles wherever a number travels through the command buffer
// (tw__ip, tw__de): a handle of a line or block that is gone resolves to null.
extern HandleTable<CScriptLine> g_lineHandles;
extern HandleTable<CBlock> g_blockHandles;

// Memory of one script: its blocks, their lines and texts, carved one after another and given back all
// together when the script goes.
class ScriptArena {
public:
  ScriptArena() = default;
  ~ScriptArena();
  ScriptArena(const ScriptArena&) = delete;
  ScriptArena& operator=(const ScriptArena&) = delete;

  void* Allocate(size_t bytes, size_t alignment);
  const char* Copy(const char* text);

private:
  struct Chunk {
    Chunk* previous;
  };
  Chunk* m_chunk = nullptr;
  char* m_next = nullptr;
  char* m_end = nullptr;
  size_t m_nextChunkBytes = 4096;
};

// One line of a block. A block's lines stand in one array right behind it, in its script's arena: the
// generated first line (tw__sb), then the lines of the source, tw__db in place of each nested block. Every
// block goes on to the same two end lines, shared by all blocks: "tw__eb" and the end line, which has no
// successor.
class CScriptLine {
public:
  static constexpr uint32_t kShared = UINT32_MAX;  // the index of the two shared end lines

  const char* text;   // the command with its line feed
  LineHandle handle;  // kNone when the table had none left
  uint32_t index;     // the place in its block's array, 0 for the first line
  uint32_t number;    // the line in the file as an editor counts it, from 1; 0 for the shared end lines

  CBlock* Block() const;     // null for the shared end lines
  CScriptLine* Next() const;  // null for the end line
};

// A compiled block, in its script's arena, its lines behind it.
class CBlock {
public:
  ~CBlock();
  CBlock(const CBlock&) = delete;
  CBlock& operator=(const CBlock&) = delete;

  CScriptLine* FirstLine() { return reinterpret_cast<CScriptLine*>(this + 1); }
  const char* FileName() const;

  CScript* script;
  CBlock* next = nullptr;
  CBlock* nextEvent = nullptr;
  CBlock* prevEvent = nullptr;
  const char* name;        // the full name, cut to MAX_BLOCK_NAME - 1 characters
  const char* baseName;    // behind the last '/' of the name
  BlockHandle handle = HandleTable<CBlock>::kNone;
  uint32_t lineCount;      // the lines behind the first, without the shared end lines
  bool isEvent;

private:
  friend class CScript;
  CBlock(CScript* owner, const char* fullName, uint32_t lines, bool event);
};

class CScript {
public:
  // `filePath` is where the text was read; without it, where tw_load would read it.
  explicit CScript(const char* scriptName, const char* filePath = nullptr);
  ~CScript();
  CScript(const CScript&) = delete;
  CScript& operator=(const CScript&) = delete;

  // Reads every section of a script text of `size` bytes (a NUL ends it earlier). Always true.
  bool ParseBuffer(const char* data, size_t size);

  CBlock* firstBlock = nullptr;
  CScript* prev = nullptr;
  CScript* next = nullptr;
  char* name;              // as given to tw_load, backslashes turned into slashes
  char* fileName;          // "tw_<name>.txt": what reports and traces show as a line's place
  char* path;              // "addons/tidewright/<name>/tw_<base>.txt", where the file was read
  int blockCount = 0;
  bool enabled = true;
  int lineNumber = 0;      // the reader's count of lines read, blank lines skipped
  bool handlesRefused = false;  // a block or line found no handle left: such a script is refused
  ScriptArena arena;

private:
  struct Reader;
  struct Pending;
  CBlock** blockTail = &firstBlock;  // where the next closed block joins the list: loading stays linear
  void CreateBlocks(Reader& reader, bool isEvent, const char* sectionName, uint32_t header);
  void OpenBlock(Pending& pending, const char* sectionName, bool isEvent, uint32_t number);
  CBlock* CloseBlock(Pending& pending);
  void AppendBlock(CBlock* block);
};

// Writes where a line stands, "<path>:<number> (block <section>)", a line of a nested block named by the
// section it is written in. False for a line with no place (the shared end lines).
bool DescribeLine(const CScriptLine* line, char* out, size_t size);

// Loads the script `name` from "addons/tidewright/<name>/tw_<base>.txt" through the engine's file system.
// Every outcome is printed; a loaded script's `load` block is queued.
void LoadAddonFile(const char* name);
