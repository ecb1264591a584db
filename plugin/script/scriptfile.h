// Compiled scripts: a script owns its blocks, a block owns its lines. The reader turns a script file into
// blocks with their generated lines (tw__sb first, tw__eb and an end line last, tw__db for nested braces).
#pragma once

#include <cstddef>

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

// One line of a block, in its script's arena. Its file is its block's script's.
class CScriptLine {
public:
  const char* text;        // the command with its line feed
  CBlock* block;
  CScriptLine* next;       // null on the block's last line
  LineHandle handle;       // kNone when the table had none left
};

// A compiled block, in its script's arena: the generated first line, the lines of the source, then
// "tw__eb" and the end line, which has no successor.
class CBlock {
public:
  CBlock(const char* fullName, CScript* owner, bool event);
  ~CBlock();
  CBlock(const CBlock&) = delete;
  CBlock& operator=(const CBlock&) = delete;

  // Appends a line; the new line count, or -1 when the block is closed or text is null. A text that
  // `shared` marks lives as long as the program and isn't copied.
  int AddLine(const char* lineText, int number, bool shared = false);
  // Adds "tw__eb" and the end line, which has no successor, and closes the block.
  int CloseBlock();
  const char* FileName() const;

  CScript* script;
  CBlock* next = nullptr;
  CBlock* nextEvent = nullptr;
  CBlock* prevEvent = nullptr;
  const char* name;        // the full name, cut to MAX_BLOCK_NAME - 1 characters
  const char* baseName;    // behind the last '/' of the name
  CScriptLine* firstLine;
  CScriptLine* lastLine;
  int lineCount = 0;
  bool closed = false;
  bool isEvent;
  BlockHandle handle;

private:
  CScriptLine* NewLine(const char* text);
};

class CScript {
public:
  explicit CScript(const char* scriptName);
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
  int blockCount = 0;
  bool enabled = true;
  int lineNumber = 0;
  bool handlesRefused = false;  // a block or line found no handle left: such a script is refused
  ScriptArena arena;

private:
  struct Reader;
  CBlock** blockTail = &firstBlock;  // where the next closed block joins the list: loading stays linear
  void CreateBlocks(Reader& reader, bool isEvent, const char* sectionName);
  CBlock* OpenBlock(const char* sectionName, bool isEvent);
  void AppendBlock(CBlock* block);
};

// Loads the script `name` from "addons/tidewright/<name>/tw_<base>.txt" through the engine's file system.
// Every outcome is printed; a loaded script's `load` block is queued.
void LoadAddonFile(const char* name);
