// The memory exec cache and its commands: tw_mexec finds (or reads) a file's key and starts its first line,
// _mexecl runs the line after the one just run. Like tw__ip, each step inserts the pending _mexecl first and
// the line in front of it, so a line (a nested tw_mexec, a block call) completes before the next one runs.
// A position is the handle of a cached line's node, and counts only while that node is a cached line: a
// typed number, a stale position, or one into a key replaced since, runs nothing.
#include "library/mexec.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unordered_set>

#include "KeyValues.h"
#include "eiface.h"
#include "filesystem.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "vstdlib.h"

namespace {

KeyValues* s_tree = nullptr;

// Keys by file name. Tree names are symbols that ignore case; file names don't, so the lookup is here.
NameTable<KeyValues*>& Files() {
  static auto* files = new NameTable<KeyValues*>(false);
  return *files;
}

// Spreads handles over the buckets. The serial and the slot of consecutive new handles rise together, so
// with the identity hash a file's lines would share one bucket of a prime-sized table such as 257.
struct PositionHash {
  size_t operator()(uint64_t handle) const {
    handle ^= handle >> 33;
    handle *= 0xff51afd7ed558ccdull;
    return size_t(handle ^ (handle >> 33));
  }
};
using PositionSet = std::unordered_set<uint64_t, PositionHash>;

// The handles of every cached line node: what _mexecl accepts.
PositionSet& Positions() {
  static auto* positions = new PositionSet;
  return *positions;
}

int Symbol(const char* name) { return KeyValuesSystem()->GetSymbolForString(name); }
int FileTimeSymbol() {
  static const int symbol = Symbol("filetime");
  return symbol;
}
int EofSymbol() {
  static const int symbol = Symbol("eof");
  return symbol;
}

bool IsLine(const KeyValues* node) {
  return node->GetNameSymbol() != FileTimeSymbol() && node->GetNameSymbol() != EofSymbol();
}

// ---- the cache ----

// The time the key's lines were read at; 0 for a key whose file could not be opened.
long StoredTime(KeyValues* key) {
  KeyValues* first = key->GetFirstSubKey();
  if (!first || first->GetNameSymbol() != FileTimeSymbol()) return 0;
  return strtol(first->GetString(), nullptr, 10);
}

// Empties a key. Its line nodes go, and with them every position into them.
void ClearKey(KeyValues* key) {
  while (KeyValues* child = key->GetFirstSubKey()) {
    key->RemoveSubKey(child);
    if (IsLine(child)) Positions().erase(child->GetHandle());
    child->deleteThis();
  }
}

// A value behind `last` in its key, built as a chain so that a long file loads in linear time.
KeyValues* AppendValue(KeyValues* last, const char* name, const char* text) {
  KeyValues* node = new KeyValues(name);
  node->SetString(nullptr, text);
  last->SetNextKey(node);
  return node;
}

// Strips LF or CR LF; gives whether the piece had a line end.
bool StripLineEnd(char* piece, size_t& length) {
  if (length == 0 || piece[length - 1] != '\n') return false;
  piece[--length] = '\0';
  if (length > 0 && piece[length - 1] == '\r') piece[--length] = '\0';
  return true;
}

// Reads the lines behind `last`, numbered from 1. Gives the last node, and in `cut` whether a line was cut
// to what the engine's line buffer holds.
KeyValues* ReadLines(FileHandle_t file, KeyValues* last, bool& cut) {
  char piece[MEXEC_READ_SIZE];
  char name[16];
  int number = 0;
  bool continued = false;  // the previous piece was a long line's first part
  while (filesystem->ReadLine(piece, sizeof piece, file)) {
    size_t length = strlen(piece);
    const bool ended = StripLineEnd(piece, length);
    // The line end of a line that filled the read exactly is no line of its own.
    if (continued && ended && length == 0) {
      continued = false;
      continue;
    }
    continued = !ended;
    if (length > MEXEC_MAX_LINE) {
      piece[MEXEC_MAX_LINE] = '\0';
      cut = true;
    }
    snprintf(name, sizeof name, "%d", ++number);
    last = AppendValue(last, name, piece);
    Positions().insert(last->GetHandle());
  }
  return last;
}

// Fills an empty key from its file: "filetime", the lines, "eof". A file that can't be opened leaves the
// key empty.
void LoadKey(KeyValues* key, const char* path, long fileTime) {
  FileHandle_t file = filesystem->Open(path, "r");
  if (!file) return;
  char timeText[24];
  snprintf(timeText, sizeof timeText, "%ld", fileTime);
  KeyValues* first = key->CreateKey("filetime");
  first->SetString(nullptr, timeText);
  bool cut = false;
  AppendValue(ReadLines(file, first, cut), "eof", "eof");
  filesystem->Close(file);
  if (cut) DbgMsg(1, "mexec: %s has lines longer than %d characters; they run cut to that length.\n", path,
                  MEXEC_MAX_LINE);
}

KeyValues* NewKey(const char* path) {
  if (!s_tree) s_tree = new KeyValues("Mexec");
  KeyValues* key = s_tree->CreateKey(path);
  Files().Insert(path, key);
  return key;
}

// The key of a file, read again when the file's time has risen above the time of its lines. A cache hit
// costs this lookup and one query of the file's time.
KeyValues* CurrentKey(const char* path) {
  const long fileTime = filesystem->GetFileTime(path);
  KeyValues** found = Files().FindValue(path);
  if (found && StoredTime(*found) >= fileTime) return *found;
  KeyValues* key = found ? *found : NewKey(path);
  ClearKey(key);
  LoadKey(key, path, fileTime);
  return key;
}

// ---- running ----

// Runs `node`'s line with the step to the line after it waiting behind; the end of the file runs nothing.
void RunFrom(KeyValues* node) {
  if (!node || node->GetNameSymbol() == EofSymbol()) return;
  char step[48];
  snprintf(step, sizeof step, "_mexecl %llu\n", static_cast<unsigned long long>(node->GetHandle()));
  ImmediateExecuteCommand(step);
  TextBuf line(node->GetString());
  line.Append('\n');
  ImmediateExecuteCommand(line.c_str());
}

KeyValues* FirstLine(KeyValues* key) {
  KeyValues* node = key->GetFirstSubKey();
  return node && node->GetNameSymbol() == FileTimeSymbol() ? node->GetNextKey() : node;
}

// The whole argument text is the name, blanks included. From Python too the call returns nothing.
void Mexec_h(bool expand, bool) {
  ArgView args(expand);
  TextBuf path("cfg/");
  if (!filesystem || !*args.Args() || !path.Append(args.Args())) return;
  RunFrom(FirstLine(CurrentKey(path.c_str())));
}

void MexecLine_f() {
  const char* position = engine->Cmd_Argv(1);
  const uint64_t handle = strtoull(position, nullptr, 10);
  KeyValues* at = Positions().count(handle) ? KeyValues::FromHandle(handle) : nullptr;
  if (!at) {
    DbgMsg(1, "_mexecl: the position %s names no cached line; nothing runs.\n", position);
    return;
  }
  RunFrom(at->GetNextKey());
}

const CommandRow kMexecCommands[] = {
    {"mexec", Mexec_h, 2, "Syntax: %s <file>\n",
     "Runs a configuration file from memory, reading it again only when its time has risen.", DOORS_ALL},
};
const CommandTable s_mexecCommands(kMexecCommands);

const PlainCommandRow kMexecPlainCommands[] = {
    {"_mexecl", MexecLine_f, "Internal Tidewright Command for memory exec'ing.\n"},
};
const CommandTable s_mexecPlainCommands(kMexecPlainCommands);

}  // namespace

KeyValues* Mexec_Tree() { return s_tree; }

KeyValues* Mexec_FindKey(const char* keyName) {
  KeyValues** found = Files().FindValue(keyName);
  return found ? *found : nullptr;
}
