// The door machinery: door objects generated from table rows at static initialisation, the list of rows
// with a Python door, the prologue, the argument view and the value rule. The Python door's own steps live
// in python/binder.cpp, which binds the rows of that list.
#include "language/doors.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/expansion.h"
#include "language/results.h"

CommandArgs* g_currentArgs = nullptr;

namespace {

// Longest command name a door may have.
constexpr size_t kMaxDoorName = 64;
const char kExpandsSuffix[] = " Expands event and server variables.";

int s_doorDepth = 0;
const CommandArgs s_noArgs;

// One console door of a row: the x twin or the expanded twin. It knows its row; nothing is looked up.
class CommandDoor : public ConCommand {
public:
  CommandDoor(const CommandRow& row, bool expanded) : m_row(row), m_expanded(expanded) {
    if (expanded && row.expandedName)
      snprintf(m_name, sizeof m_name, "%s", row.expandedName);
    else
      snprintf(m_name, sizeof m_name, expanded ? "tw_%s" : "tw_x%s", row.base);
    m_help = row.help;
    if (expanded) m_help += kExpandsSuffix;
    Create(m_name, nullptr, m_help.c_str(), 0);
    // The usage as this door prints it below the minimum, for the engine's `help`.
    if (row.usage) {
      m_usage.resize(size_t(std::max(0, snprintf(nullptr, 0, row.usage, m_name))));
      snprintf(m_usage.data(), m_usage.size() + 1, row.usage, m_name);
      SetUsage(m_usage.c_str());
    }
  }

  void Dispatch() override {
    if (!m_expanded) {
      RunHandler(m_row, false, true);
      return;
    }
    TextBuf line;
    if (!ParseCommand(line, 0, engine->Cmd_Argc(), '\0')) {
      ReportScriptError(0, "tw: Error parsing command string: %s\n", engine->Cmd_Args());
      SetLastErrorText("Error while parsing command string.");
      return;
    }
    CurrentArgsScope scope(Cmd_Tokenize(line.c_str()));
    RunHandler(m_row, true, true);
  }

private:
  const CommandRow& m_row;
  bool m_expanded;
  char m_name[kMaxDoorName];
  std::string m_help;
  std::string m_usage;
};

// The expanded command of a prefix twin: a fixed start, the engine's argument text, through `tw`.
class PrefixTwinDoor : public ConCommand {
public:
  explicit PrefixTwinDoor(const PrefixTwinRow& row) : m_row(row) {
    Create(row.name, nullptr, row.help, 0);
    SetUsage(row.usage);
  }

  void Dispatch() override {
    if (engine->Cmd_Argc() < m_row.minArgc) {
      DbgMsg(0, "%s", m_row.usage);
      ReportErrorLocation();
      SetLastErrorText("Not enough arguments.");
      return;
    }
    TextBuf line(m_row.lineStart);
    if (!line.Append(engine->Cmd_Args()) || !line.Append('\n')) {
      DbgMsg(0, "%s: The command string is too long.\n", m_row.name);
      SetLastErrorText("Resulting string too long.");
      return;
    }
    DbgMsg(m_row.traceLevel, m_row.trace, line.c_str());
    ImmediateExecuteCommand(line.c_str());
  }

private:
  const PrefixTwinRow& m_row;
};

}  // namespace

namespace {

// Door objects live as long as the process.
template <class Door, class... Args>
void KeepDoor(Args&&... args) {
  KeepCommand(new Door(std::forward<Args>(args)...));
}

// Filled at static initialisation, in whatever order the tables' files come; never destroyed.
std::vector<const CommandRow*>& PythonRows() {
  static std::vector<const CommandRow*>& rows = *new std::vector<const CommandRow*>;
  return rows;
}

}  // namespace

void CommandTable::AddDoors(const CommandRow& row) {
  if (row.doors & DOOR_X) KeepDoor<CommandDoor>(row, false);
  if (row.doors & DOOR_EXPANDED) KeepDoor<CommandDoor>(row, true);
  if (row.doors & DOOR_PYTHON) PythonRows().push_back(&row);
}

void CommandTable::AddPlain(const PlainCommandRow& row) {
  KeepDoor<ConCommand>(row.name, row.callback, row.help, 0);
}

void CommandTable::AddPrefixTwin(const PrefixTwinRow& row) { KeepDoor<PrefixTwinDoor>(row); }

int PythonRowCount() { return int(PythonRows().size()); }

const CommandRow& PythonRow(int index) {
  TW_ASSERT(index >= 0 && index < PythonRowCount(), "a Python row within the list");
  return *PythonRows()[size_t(index)];
}

// ---- the current record ----

CurrentArgsScope::CurrentArgsScope(CommandArgs* fresh) : m_outer(g_currentArgs), m_record(fresh) {
  g_currentArgs = fresh;
  ++s_doorDepth;
}

CurrentArgsScope::~CurrentArgsScope() {
  TW_ASSERT(s_doorDepth > 0 && g_currentArgs == m_record, "door calls end in the reverse order of their start");
  if (--s_doorDepth > 0) {
    delete g_currentArgs;
    g_currentArgs = m_outer;
  } else {
    delete m_outer;
  }
}

// ---- prologue and arguments ----

void RunHandler(const CommandRow& row, bool expand, bool fromConsole) {
  ArgView args(expand);
  DbgMsg(5, "Command: %s;\n", args.Args());
  if (fromConsole && args.Argc() < row.minArgc) {
    DbgMsg(0, row.usage, args.Argv(0));
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
    return;
  }
  row.handler(expand, fromConsole);
}

ArgView::ArgView(bool expand) : m_record(expand ? (g_currentArgs ? g_currentArgs : &s_noArgs) : nullptr) {}

int ArgView::Argc() const { return m_record ? m_record->Argc() : engine->Cmd_Argc(); }

const char* ArgView::Argv(int i) const {
  if (m_record) return m_record->Argv(i);
  const char* text = engine->Cmd_Argv(i);
  return text ? text : "";
}

const char* ArgView::Args() const {
  const char* text = m_record ? m_record->Args() : engine->Cmd_Args();
  return text ? text : "";
}

// ---- the value rule ----

bool ReportStored(ConVar* var, const char* varName) {
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be set\n", varName);
    return false;
  }
  DbgMsg(1, "%s = %s\n", var->GetName(), var->GetString());
  return true;
}

void ReturnText(bool fromConsole, const char* varName, const char* value) {
  if (fromConsole)
    ReportStored(SetVarText(varName, value ? value : "", false), varName);
  else if (value)
    SetResultText(value);
}

void ReturnInt(bool fromConsole, const char* varName, int value) {
  if (fromConsole)
    ReportStored(SetVarInt(varName, value, false), varName);
  else
    SetResultInt(value);
}

void ReturnFloat(bool fromConsole, const char* varName, float value) {
  if (fromConsole)
    ReportStored(SetVarFloat(varName, value, false), varName);
  else
    SetResultFloat(value);
}

void ReturnFloats(bool fromConsole, const char* const varNames[3], const Vector& values) {
  if (!fromConsole) {
    SetResultFloats(values.x, values.y, values.z);
    return;
  }
  const float components[3] = {values.x, values.y, values.z};
  for (int i = 0; i < 3; ++i)
    if (!ReportStored(SetVarFloat(varNames[i], components[i], false), varNames[i])) return;
}
