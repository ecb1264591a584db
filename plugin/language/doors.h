// The three front doors of a command and the table rows they are generated from. A handler is one plain
// function behind an x twin (tw_x<base>: engine tokens), an expanded twin (tw_<base>: server_var() and
// event_var() expanded into a new current CommandArgs) and a Python binder (<base> of module tw_C).
#pragma once

#include <cstddef>
#include <vector>

#include "basetypes.h"
#include "convar.h"
#include "script/commandargs.h"

// `expand` picks the argument source (ArgView); `fromConsole` gates the syntax test and sends a value to
// a variable (true) or to the result slot (false, where value inputs stand one index lower).
using CommandHandler = void (*)(bool expand, bool fromConsole);

enum : unsigned {
  DOOR_X = 1,
  DOOR_EXPANDED = 2,
  DOOR_PYTHON = 4,
  DOORS_CONSOLE = DOOR_X | DOOR_EXPANDED,
  DOORS_ALL = DOOR_X | DOOR_EXPANDED | DOOR_PYTHON,
};

// A base with its doors. The door machinery runs the prologue from the row: the level 5 "Command: %s;\n"
// and, at the console doors, the minimum count with the usage line and "Syntax error".
struct CommandRow {
  const char* base;
  CommandHandler handler;
  int minArgc;
  const char* usage;  // printed with Argv(0), the name of the door used
  const char* help;   // the x twin's help text, and the binder's doc text
  unsigned doors;
  const char* expandedName = nullptr;  // the expanded twin's name where it isn't tw_<base> (`if`)
};

// A command of one form: a name, a callback reading the engine's tokens, a help text.
struct PlainCommandRow {
  const char* name;
  FnCommandCallback callback;
  const char* help;
};

// A prefix twin: checks the engine's count, then hands "<lineStart><Cmd_Args>\n" to the head of the buffer,
// where it passes through `tw` like any line.
struct PrefixTwinRow {
  const char* name;
  int minArgc;
  const char* lineStart;
  const char* usage;  // below the minimum, with the last error "Not enough arguments."
  const char* trace;  // printed with the line at traceLevel
  int traceLevel;
  const char* help;
};

// A registered table as tools that list the commands see it (the command reference): the source file that
// declared it and its rows, of exactly one of the three kinds.
struct CommandTableInfo {
  const char* file;  // as the compiler named the declaring file
  const CommandRow* rows;
  const PlainCommandRow* plainRows;
  const PrefixTwinRow* prefixRows;
  size_t count;
};

// Registers every door of a table at static initialisation: `static const CommandTable s_table(kRows);`.
class CommandTable {
public:
  template <size_t N>
  explicit CommandTable(const CommandRow (&rows)[N], const char* file = __builtin_FILE()) {
    for (const CommandRow& row : rows) AddDoors(row);
    Remember({file, rows, nullptr, nullptr, N});
  }
  template <size_t N>
  explicit CommandTable(const PlainCommandRow (&rows)[N], const char* file = __builtin_FILE()) {
    for (const PlainCommandRow& row : rows) AddPlain(row);
    Remember({file, nullptr, rows, nullptr, N});
  }
  template <size_t N>
  explicit CommandTable(const PrefixTwinRow (&rows)[N], const char* file = __builtin_FILE()) {
    for (const PrefixTwinRow& row : rows) AddPrefixTwin(row);
    Remember({file, nullptr, nullptr, rows, N});
  }

private:
  static void AddDoors(const CommandRow& row);
  static void AddPlain(const PlainCommandRow& row);
  static void AddPrefixTwin(const PrefixTwinRow& row);
  static void Remember(const CommandTableInfo& table);
};

// Every table registered so far, in the order of registration.
const std::vector<CommandTableInfo>& CommandTables();

// The rows with a Python door, in the order their tables registered them; the Python door makes a binder
// for each.
int PythonRowCount();
const CommandRow& PythonRow(int index);

// The doors' current record: replaced by every expanded twin and binder call, kept until the next one.
extern CommandArgs* g_currentArgs;

// Installs a new current record for one door call. The outermost call leaves its record in place; a call
// nested in another door restores the outer call's record when it ends, so the outer handler can go on
// reading its arguments.
class CurrentArgsScope {
public:
  explicit CurrentArgsScope(CommandArgs* fresh);
  ~CurrentArgsScope();
  CurrentArgsScope(const CurrentArgsScope&) = delete;
  CurrentArgsScope& operator=(const CurrentArgsScope&) = delete;

private:
  CommandArgs* m_outer;
  CommandArgs* m_record;
};

// The prologue and the handler of a row, for the doors and the binder.
void RunHandler(const CommandRow& row, bool expand, bool fromConsole);

// The arguments a handler reads: the engine's current command, or the current record when `expand`.
// Argv out of range is "", Args is never null.
class ArgView {
public:
  explicit ArgView(bool expand);
  int Argc() const;
  const char* Argv(int i) const;
  const char* Args() const;

private:
  const CommandArgs* m_record;  // null: the engine's tokens
};

// The value rule. At the console doors the value goes into the variable `varName` (force false), with
// "%s = %s\n" at level 1 or "The var \"%s\" could not be set\n" at level 0; from Python it fills the result
// slot. A null text stores the empty text at the console and leaves the slot empty (None) for Python.
void ReturnText(bool fromConsole, const char* varName, const char* value);
void ReturnInt(bool fromConsole, const char* varName, int value);
void ReturnFloat(bool fromConsole, const char* varName, float value);
// Three floats: into three variables at the console doors (the first refused store ends it), a tuple of
// three floats for Python.
void ReturnFloats(bool fromConsole, const char* const varNames[3], const Vector& values);
// Prints what the value rule prints after a store into `varName` gave `var` (null: the store was refused).
// False when it was refused.
bool ReportStored(ConVar* var, const char* varName);
