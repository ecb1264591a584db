// Script files and their compiled form: CScriptLine, CBlock, CScript in the script's arena, the reader of
// script text and LoadAddonFile. Finding scripts and blocks by name is the registry's (registry.cpp).
#include "script/scriptfile.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string_view>
#include <vector>

#include "filesystem.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "python/hooks.h"
#include "script/machine.h"
#include "tier1/strtools.h"

namespace {

// Copies at most size - 1 characters; true when the whole text fitted.
bool CopyBounded(char* out, size_t size, const char* text) {
  size_t n = strlen(text);
  bool fits = n < size;
  if (!fits) n = size - 1;
  memcpy(out, text, n);
  out[n] = '\0';
  return fits;
}

// Writes the pieces one after another into `out` of `size` bytes, cut to fit.
void Join(char* out, size_t size, std::initializer_list<std::string_view> pieces) {
  size_t length = 0;
  for (std::string_view piece : pieces) {
    if (length < size) memcpy(out + length, piece.data(), std::min(piece.size(), size - 1 - length));
    length += piece.size();
  }
  out[std::min(length, size - 1)] = '\0';
}

void TrimBothEnds(char* text) {
  size_t n = strlen(text);
  while (n > 0 && isspace(static_cast<unsigned char>(text[n - 1]))) text[--n] = '\0';
  size_t start = 0;
  while (isspace(static_cast<unsigned char>(text[start]))) ++start;
  memmove(text, text + start, n - start + 1);
}

}  // namespace

// ---- memory ----

ScriptArena::~ScriptArena() {
  while (m_chunk) {
    Chunk* previous = m_chunk->previous;
    free(m_chunk);
    m_chunk = previous;
  }
}

// Chunks grow with the script, from 4 KB to 1 MB, so that a small script stays small and a large one
// costs few allocations.
void* ScriptArena::Allocate(size_t bytes, size_t alignment) {
  constexpr size_t kLargestChunk = size_t(1) << 20;
  uintptr_t at = (reinterpret_cast<uintptr_t>(m_next) + alignment - 1) & ~uintptr_t(alignment - 1);
  if (!m_next || at + bytes > reinterpret_cast<uintptr_t>(m_end)) {
    const size_t room = std::max(m_nextChunkBytes, bytes + alignment);
    m_nextChunkBytes = std::min(m_nextChunkBytes * 2, kLargestChunk);
    auto* chunk = static_cast<Chunk*>(malloc(sizeof(Chunk) + room));
    if (!chunk) abort();
    chunk->previous = m_chunk;
    m_chunk = chunk;
    m_next = reinterpret_cast<char*>(chunk + 1);
    m_end = m_next + room;
    at = (reinterpret_cast<uintptr_t>(m_next) + alignment - 1) & ~uintptr_t(alignment - 1);
  }
  m_next = reinterpret_cast<char*>(at + bytes);
  return reinterpret_cast<void*>(at);
}

const char* ScriptArena::Copy(const char* text) {
  const size_t n = strlen(text) + 1;
  char* copy = static_cast<char*>(Allocate(n, 1));
  memcpy(copy, text, n);
  return copy;
}

// ---- lines and blocks ----

namespace {

// The two lines every block ends in. Their handles are taken once, by the first block that closes.
CScriptLine s_endLines[2] = {{"tw__eb\n\n", HandleTable<CScriptLine>::kNone, CScriptLine::kShared, 0},
                             {"\n", HandleTable<CScriptLine>::kNone, CScriptLine::kShared, 0}};

bool TakeEndLineHandles() {
  for (CScriptLine& line : s_endLines)
    if (!line.handle) line.handle = g_lineHandles.Add(&line);
  return s_endLines[0].handle && s_endLines[1].handle;
}

}  // namespace

CBlock* CScriptLine::Block() const {
  if (index == kShared) return nullptr;
  return reinterpret_cast<CBlock*>(const_cast<CScriptLine*>(this - index)) - 1;
}

CScriptLine* CScriptLine::Next() const {
  if (index == kShared) return this == &s_endLines[0] ? &s_endLines[1] : nullptr;
  return index < Block()->lineCount ? const_cast<CScriptLine*>(this + 1) : &s_endLines[0];
}

CBlock::CBlock(CScript* owner, const char* fullName, uint32_t lines, bool event)
    : script(owner), name(fullName), lineCount(lines), isEvent(event) {
  const char* slash = strrchr(name, '/');
  baseName = slash ? slash + 1 : name;
}

// Handles go back in the order they were taken, the block's first, then its lines'.
CBlock::~CBlock() {
  g_blockHandles.Remove(handle);
  CScriptLine* lines = FirstLine();
  for (uint32_t i = 0; i <= lineCount; ++i) g_lineHandles.Remove(lines[i].handle);
}

const char* CBlock::FileName() const { return script->fileName; }

bool DescribeLine(const CScriptLine* line, char* out, size_t size) {
  const CBlock* block = line ? line->Block() : nullptr;
  if (!block) return false;
  // A nested block stands before the section it is written in, with no other section between them.
  const CScript* script = block->script;
  const size_t prefix = strlen(script->name);
  const CBlock* section = block;
  while (section->next && !(strncmp(section->name, script->name, prefix) == 0 && section->name[prefix] == '/'))
    section = section->next;
  snprintf(out, size, "%s:%u (block %s)", script->path, line->number, section->name);
  return true;
}

// ---- scripts ----

CScript::CScript(const char* scriptName, const char* filePath) : name(CopyText(scriptName)) {
  for (char* p = name; *p; ++p)
    if (*p == '\\') *p = '/';
  size_t n = strlen(name) + 8;
  fileName = static_cast<char*>(malloc(n));
  snprintf(fileName, n, "tw_%s.txt", name);
  if (filePath) {
    path = CopyText(filePath);
  } else {
    const char* slash = strrchr(name, '/');
    const size_t size = strlen(name) * 2 + 32;
    path = static_cast<char*>(malloc(size));
    snprintf(path, size, "addons/tidewright/%s/tw_%s.txt", name, slash ? slash + 1 : name);
  }
}

CScript::~CScript() {
  for (CBlock* block = firstBlock; block;) {
    CBlock* following = block->next;
    block->~CBlock();
    block = following;
  }
  // A script can be removed while its line is the current instruction (a block that unloads its own
  // script): reports must not read the released texts.
  if (ip.line == fileName) ClearInstruction();
  free(path);
  free(fileName);
  free(name);
}

// The reader of script text: one line per call, leading white space skipped, a line cut to the buffer
// with the rest of it passed over. An empty line means the end of the text (or a NUL byte). It counts the
// line ends it passes, as an editor numbers lines (CR LF, LF and a lone CR each end one).
struct CScript::Reader {
  const char* data;
  size_t size;
  size_t pos = 0;
  uint32_t lineEnds = 0;

  // The editor's number of the line GetLine read last.
  uint32_t Number() const { return lineEnds + 1; }

  void GetLine(char* out, size_t outSize) {
    while (pos < size && data[pos] && isspace(static_cast<unsigned char>(data[pos]))) {
      if (data[pos] == '\n' || (data[pos] == '\r' && (pos + 1 >= size || data[pos + 1] != '\n'))) ++lineEnds;
      ++pos;
    }
    size_t n = 0;
    while (pos < size && data[pos] != '\r' && data[pos] != '\n' && data[pos] != '\0') {
      if (n + 1 < outSize) out[n++] = data[pos];
      ++pos;
    }
    out[n] = '\0';
  }
};

// The blocks being read: the open ones, innermost last, and the lines read for them, an inner block's
// after its parent's. A block's record is carved when it closes, its size known.
struct CScript::Pending {
  struct Line {
    const char* text;
    uint32_t number;
  };
  struct Open {
    const char* name;
    const char* firstLine;
    uint32_t number;
    size_t linesAt;
    bool isEvent;
  };
  std::vector<Open> open;
  std::vector<Line> lines;

  void AddLine(const char* text, uint32_t number, int counted) {
    lines.push_back({text, number});
    DbgMsg(7, "Added block line #%d to block %s:\n  %s", counted, open.back().name, text);
  }
};

bool CScript::ParseBuffer(const char* data, size_t size) {
  Reader reader{data, size};
  std::vector<char> line(MAX_TOPLEVEL_LINE);
  reader.GetLine(line.data(), line.size());
  ++lineNumber;
  while (line[0]) {
    const bool isEvent = strncmp(line.data(), "event ", 6) == 0;
    if (isEvent || strncmp(line.data(), "block ", 6) == 0) {
      const uint32_t header = reader.Number();
      char sectionName[MAX_TOPLEVEL_LINE];
      const char* p = line.data() + 6;
      while (isspace(static_cast<unsigned char>(*p))) ++p;
      snprintf(sectionName, sizeof sectionName, "%s", p);
      reader.GetLine(line.data(), line.size());  // the line of the opening brace, never looked at
      ++lineNumber;
      TrimBothEnds(sectionName);
      if (strlen(sectionName) >= MAX_SECTION_NAME) {
        sectionName[MAX_SECTION_NAME - 1] = '\0';
        DbgMsg(0, "[Tidewright] Section name too long in %s, cut to %d characters: %s\n", fileName,
               MAX_SECTION_NAME - 1, sectionName);
      }
      CreateBlocks(reader, isEvent, sectionName, header);
    }
    reader.GetLine(line.data(), line.size());
    ++lineNumber;
  }
  return true;
}

void CScript::OpenBlock(Pending& pending, const char* sectionName, bool isEvent, uint32_t number) {
  ++blockCount;
  char fullName[MAX_SCRIPT_NAME + MAX_SECTION_NAME + 16];
  if (sectionName)
    Join(fullName, sizeof fullName, {name, "/", sectionName});
  else
    snprintf(fullName, sizeof fullName, "%s.b%d", name, blockCount);
  if (strlen(fullName) >= MAX_BLOCK_NAME)
    DbgMsg(0, "[Tidewright] Block name too long in %s, cut to %d characters: %.*s\n", fileName,
           MAX_BLOCK_NAME - 1, MAX_BLOCK_NAME - 1, fullName);
  DbgMsg(5, "Name: %s\n", fullName);
  char bounded[MAX_BLOCK_NAME];
  CopyBounded(bounded, sizeof bounded, fullName);
  const char* blockName = arena.Copy(bounded);
  const char* slash = strrchr(blockName, '/');
  DbgMsg(5, "CBlock: Basename: %s\n", slash ? slash + 1 : blockName);
  char first[MAX_BLOCK_NAME + 16];
  Join(first, sizeof first, {"tw__sb ", blockName, "\n"});
  pending.open.push_back({blockName, arena.Copy(first), number, pending.lines.size(), sectionName ? isEvent : false});
}

// Carves the innermost open block with its lines, takes their handles and joins it to the script's list.
CBlock* CScript::CloseBlock(Pending& pending) {
  const Pending::Open open = pending.open.back();
  pending.open.pop_back();
  const uint32_t count = uint32_t(pending.lines.size() - open.linesAt);
  void* memory = arena.Allocate(sizeof(CBlock) + (count + 1) * sizeof(CScriptLine), alignof(CBlock));
  auto* block = new (memory) CBlock(this, open.name, count, open.isEvent);
  CScriptLine* lines = block->FirstLine();
  lines[0] = {open.firstLine, HandleTable<CScriptLine>::kNone, 0, open.number};
  for (uint32_t i = 0; i < count; ++i) {
    const Pending::Line& read = pending.lines[open.linesAt + i];
    lines[i + 1] = {read.text, HandleTable<CScriptLine>::kNone, i + 1, read.number};
  }
  pending.lines.resize(open.linesAt);
  DbgMsg(7, "Added block line #%d to block %s:\n  %s", -1, block->name, s_endLines[0].text);
  DbgMsg(7, "Added block line #%d to block %s:\n  %s", -1, block->name, s_endLines[1].text);

  block->handle = g_blockHandles.Add(block);
  bool handles = block->handle && TakeEndLineHandles();
  for (uint32_t i = 0; i <= count; ++i) handles = (lines[i].handle = g_lineHandles.Add(&lines[i])) && handles;
  if (!handles) handlesRefused = true;
  AppendBlock(block);
  return block;
}

void CScript::AppendBlock(CBlock* block) {
  *blockTail = block;
  blockTail = &block->next;
}

// Reads one section behind its opening brace. Nested braces open anonymous blocks; each closed block
// joins the script's list at once (so a nested block stands before its parent) and leaves a tw__db line
// in its parent. The end of the text closes every open block. Kept iterative: nesting has no depth limit.
void CScript::CreateBlocks(Reader& reader, bool isEvent, const char* sectionName, uint32_t header) {
  Pending pending;
  OpenBlock(pending, sectionName, isEvent, header);
  std::vector<char> line(MAX_SCRIPT_LINE);
  char text[MAX_SCRIPT_LINE + 1];
  auto closeInnermost = [&] {
    CBlock* block = CloseBlock(pending);
    if (!pending.open.empty()) {
      char call[MAX_BLOCK_NAME + 16];
      snprintf(call, sizeof call, "tw__db %s\n", block->name);
      pending.AddLine(arena.Copy(call), reader.Number(), lineNumber);
    }
  };
  while (!pending.open.empty()) {
    reader.GetLine(line.data(), line.size());
    ++lineNumber;
    DbgMsg(6, "CreateBlocks# %s\n", line.data());
    if (!line[0]) {
      while (!pending.open.empty()) closeInnermost();
      break;
    }
    const char* p = line.data();
    while (*p == ' ' || *p == '\t') ++p;
    if (p[0] == '/' && p[1] == '/') continue;
    if (*p == '}') {
      closeInnermost();
    } else if (*p == '{') {
      OpenBlock(pending, nullptr, false, reader.Number());
    } else {
      Join(text, sizeof text, {p, "\n"});
      pending.AddLine(arena.Copy(text), reader.Number(), lineNumber);
    }
  }
}

// ---- loading ----

namespace {

// The last component of a name: behind the last backslash, else behind the last slash, else all of it.
const char* LastComponent(const char* name) {
  if (const char* b = strrchr(name, '\\')) return b + 1;
  if (const char* s = strrchr(name, '/')) return s + 1;
  return name;
}

// Reads the whole file; the byte behind the data is 0 whatever the read gave.
void CompileFile(CScript* script, FileHandle_t file, const char* path) {
  size_t size = filesystem->Size(file);
  DbgMsg(1, "Script %s created. Size: %d\n", script->name, int(size + 1));
  char* data = static_cast<char*>(calloc(size + 2, 1));
  int read = filesystem->Read(data, int(size + 1), file);
  DbgMsg(1, "Read from file: %s return %d.\n", path, read);
  script->ParseBuffer(data, size + 1);
  free(data);
}

}  // namespace

void LoadAddonFile(const char* name) {
  DbgMsg(2, "LoadAddonFile().\n");
  const char* given = name ? name : "";
  if (LoadModuleAddon(given)) return;  // Python has the first claim on every name
  char scriptName[MAX_SCRIPT_NAME];
  char path[MAX_SCRIPT_NAME];
  if (!CopyBounded(scriptName, sizeof scriptName, given)) {
    ReportScriptError(0, "[Tidewright] Script name too long (at most %d characters).\n", MAX_SCRIPT_NAME - 1);
    return;
  }
  const char* base = LastComponent(given);
  for (char* p = scriptName; *p; ++p)
    if (*p == '\\') *p = '/';
  if (snprintf(path, sizeof path, "addons/tidewright/%s/tw_%s.txt", scriptName, base) >= int(sizeof path)) {
    ReportScriptError(0, "[Tidewright] Script path too long (at most %d characters).\n", MAX_SCRIPT_NAME - 1);
    return;
  }
  DbgMsg(1, "%s\n", path);
  FileHandle_t file = filesystem->Open(path, "r", nullptr);
  if (!file) {
    ReportScriptError(0, "Could not open script for %s\n", path);
    return;
  }
  DbgMsg(1, "File opened: %s.\n", path);
  CScript* script = new CScript(scriptName, path);
  CompileFile(script, file, path);
  DbgMsg(1, "[Tidewright] Loading file... \n");
  if (script->handlesRefused) {
    DbgMsg(0, "[Tidewright] Load script failed: more lines or blocks are loaded than handles can name (%d of each). "
           "%s\n", int(HandleTable<CScriptLine>::kMaxSlots), scriptName);
    delete script;
  } else if (g_scriptMachine.registry.AddScript(script)) {
    DbgMsg(0, "[Tidewright] Loaded %s\n", script->name);
    char load[MAX_SCRIPT_NAME + 32];
    snprintf(load, sizeof load, "tw__db %s/load\n", script->name);
    ImmediateExecuteCommand(load);
  } else {
    DbgMsg(0, "[Tidewright] Load script failed. It might already be loaded, try to tw_unload it first. %s\n",
           scriptName);
    delete script;
  }
  filesystem->Close(file);
}
