// Expansion of server_var() and event_var() over the engine's tokens, and the commands tw, twnq and tw_xnq.
// All buffers are local to a call, so nested forms and nested commands are safe; nothing is allocated.
#include "language/expansion.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "eiface.h"
#include "events/current_event.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "igameevents.h"
#include "language/doors.h"

namespace {

enum class VarKind { None, Event, Server };

VarKind KeywordOf(const char* token) {
  if (strcasecmp(token, "server_var") == 0) return VarKind::Server;
  if (strcasecmp(token, "event_var") == 0) return VarKind::Event;
  return VarKind::None;
}

// A value or a token needs double quotes to stay one argument when it holds an escape character; a value
// also when it holds "//", which would start a comment.
bool HasEscapeChar(const char* text, const char* escapes) { return strpbrk(text, escapes) != nullptr; }

// Whether the whole text reads as a base-10 floating-point number (no hexadecimal, infinity or NaN forms).
bool ReadsWholeAsDecimal(const char* text) {
  if (strpbrk(text, "xXiInN")) return false;
  char* end;
  strtod(text, &end);
  return *end == '\0';
}

// A server variable's value for expansion: whole numbers in their integer form (5.000 gives 5, 007 gives
// 7, 1e3 gives 1), every other text as it stands.
bool ServerValue(const char* name, ConVar* var, TextBuf& value) {
  const char* text = var->GetString();
  DbgMsg(5, "ParseVar: Name: %s, Value: s%s i%d\n", name, text, var->GetInt());
  if (float(var->GetInt()) != var->GetFloat()) {
    DbgMsg(5, "ParseVar: Looks like a float, use the string version, %s\n", text);
    return value.Assign(text);
  }
  char* end;
  long integer = strtol(text, &end, 10);
  if (*end == '\0' || ReadsWholeAsDecimal(text)) {
    char number[32];
    snprintf(number, sizeof number, "%ld", integer);
    return value.Assign(number);
  }
  DbgMsg(5, "ParseVar: Thought it was a #, but got string instead of #, %s\n", text);
  return value.Assign(text);
}

// Double quotes of a value become backticks; then the value is wrapped in quotes if it needs them.
bool QuoteValue(TextBuf& value, TextBuf& out) {
  DbgMsg(5, "ParseVar: Replacing variable quotes with `...\n");
  value.Replace('"', '`');
  const char* escapes = tidewright_escapechars.GetString();
  if (!HasEscapeChar(value.c_str(), escapes) && !strstr(value.c_str(), "//")) return out.Assign(value.c_str());
  out.Clear();
  DbgMsg(2, "ParseVar: Quoted variable because it contained tidewright_escape characters...\n");
  return out.Append('"') && out.Append(value.c_str()) && out.Append('"');
}

enum class Lookup { Value, Zero, Missing, Failed };

// Finds the value of a form into `value`. Zero: the form expands to "0" without quoting.
Lookup FindValue(VarKind kind, const char* name, TextBuf& value) {
  if (kind == VarKind::Event) {
    if (!g_currentEvent) {
      DbgMsg(5, "ParseVar: No event was found when event_var used!\n");
      return Lookup::Zero;
    }
    return value.Assign(g_currentEvent->GetString(name, "")) ? Lookup::Value : Lookup::Failed;
  }
  ConVar* var = FindServerVar(name);
  if (!var) {
    DbgMsg(1, "WARNING: Couldn't find server variable: %s\n", name);
    return Lookup::Missing;
  }
  if (var->IsBitSet(FCVAR_PROTECTED)) {
    DbgMsg(1, "WARNING: Server variable is protected: %s\n", name);
    value.Assign("(protected)");
    return Lookup::Value;
  }
  return ServerValue(name, var, value) ? Lookup::Value : Lookup::Failed;
}

// The expansion of a form whose name is known, into `out`; false when it passes the buffer.
bool ExpandForm(VarKind kind, const char* name, TextBuf& out) {
  TextBuf value;
  switch (FindValue(kind, name, value)) {
    case Lookup::Failed:
      return false;
    case Lookup::Missing:
      out.Assign("0");
      DbgMsg(5, "ParseVar: Wasn't valid server variable!\n");
      return true;
    case Lookup::Zero:
      out.Assign("0");
      break;
    case Lookup::Value:
      if (value.Length() == 0)
        out.Assign("0");
      else if (!QuoteValue(value, out))
        return false;
      break;
  }
  DbgMsg(5, "ParseVar: Variable expanded, %s.\n", out.c_str());
  return true;
}

// A literal token, appended with a blank; in double quotes when it starts with ';' or, being longer than
// one character, holds an escape character.
bool AppendLiteral(TextBuf& out, const char* token, const char* escapes) {
  bool quote = token[0] == ';' || (token[0] && token[1] && HasEscapeChar(token, escapes));
  if (!quote) return out.Append(token) && out.Append(' ');
  return out.Append('"') && out.Append(token) && out.Append('"') && out.Append(' ');
}

}  // namespace

int ParseVar(TextBuf& out, int index, int argc) {
  const char* token = engine->Cmd_Argv(index);
  DbgMsg(5, "ParseVar: Current Token: %s\n", token);
  VarKind kind = index < argc ? KeywordOf(token) : VarKind::None;
  if (kind == VarKind::None) {
    DbgMsg(5, "ParseVar: Done trying to expand variables.\n");
    return index;
  }
  DbgMsg(5, "ParseVar: Need to expand variable: %s\n", token);
  int pos = index + 1;
  if (pos >= argc || engine->Cmd_Argv(pos)[0] != '(') return -1;
  if (++pos >= argc) return -1;
  TextBuf name;
  if (!name.Assign(engine->Cmd_Argv(pos))) return -1;
  DbgMsg(5, "ParseVar: Variable Name '%s'...\n", name.c_str());
  int inner = ParseVar(name, pos, argc);
  if (inner < 0) return inner;
  pos = inner + 1;
  if (pos >= argc || engine->Cmd_Argv(pos)[0] != ')') return -1;
  if (!ExpandForm(kind, name.c_str(), out)) return -1;
  DbgMsg(5, "ParseVar: Done trying to expand variables.\n");
  return pos;
}

bool ParseCommand(TextBuf& out, int first, int argc, char last) {
  out.Clear();
  const char* escapes = tidewright_escapechars.GetString();
  for (int i = first; i < argc;) {
    const char* token = engine->Cmd_Argv(i);
    DbgMsg(5, "ParseCommand: token: %s\n", token);
    if (g_currentEvent) DbgMsg(5, "ParseCommand: CurrentKey: %s\n", g_currentEvent->GetName());
    TextBuf work(token);
    int r = ParseVar(work, i, argc);
    bool fits = r >= 0;
    if (fits && r != i) {
      fits = out.Append(work.c_str()) && out.Append(' ');
      i = r + 1;
    } else if (fits) {
      fits = AppendLiteral(out, token, escapes);
      ++i;
    }
    if (!fits) {
      ReportScriptError(0, "ParseCommand: Error in string format.\n");
      SetLastErrorText("Error in string format.");
      return false;
    }
  }
  DbgMsg(5, "ParseCommand: command: %s", out.c_str());
  out.SetLast(last);
  return true;
}

// ---- tw, twnq, tw_xnq ----

namespace {

// The expanded line of the running `tw`/`twnq`, without its first word; false after reporting.
bool ExpandCommandString(const char* command, TextBuf& line) {
  if (g_cached.debug > 4)
    for (int i = 0; i < engine->Cmd_Argc(); ++i) DbgMsg(5, "   Arg%d: %s\n", i, engine->Cmd_Argv(i));
  if (ParseCommand(line, 1, engine->Cmd_Argc(), '\n')) return true;
  DbgMsg(0, "%s: Error parsing command string: %s\n", command, engine->Cmd_Args());
  SetLastErrorText("Error while parsing command string.");
  return false;
}

void Expand_f() {
  if (engine->Cmd_Argc() < 2) {
    DbgMsg(0, "tw: Please provide a command string.\n");
    SetLastErrorText("No arguments provided.");
    return;
  }
  TextBuf line;
  if (!ExpandCommandString("tw", line)) return;
  DbgMsg(2, "tw executing: %s\n", line.c_str());
  ImmediateExecuteCommand(line.c_str());
}

void ExpandNoQuotes_f() {
  if (engine->Cmd_Argc() < 2) {
    DbgMsg(0, "twnq: Please provide a command string.\n");
    SetLastErrorText("No command string provided.");
    return;
  }
  TextBuf line;
  if (!ExpandCommandString("twnq", line)) return;
  DbgMsg(2, "twnq executing: %s", line.c_str());
  if (!strchr(line.c_str(), ';'))
    line.Remove('"');
  else
    DbgMsg(0, "WARNING: twnq: Quotes not stripped because command-line contained a semicolon.\n");
  ImmediateExecuteCommand(line.c_str());
}

void NoQuotes_f() {
  if (engine->Cmd_Argc() < 2) {
    DbgMsg(0, "tw_xnq: Please provide a command string.\n");
    SetLastErrorText("No command string provided.");
    return;
  }
  TextBuf line(engine->Cmd_Args());
  if (!line.Append('\n')) {
    DbgMsg(0, "tw_xnq: The command string is too long.\n");
    SetLastErrorText("Resulting string too long.");
    return;
  }
  line.Remove('"');
  ImmediateExecuteCommand(line.c_str());
}

const PlainCommandRow kExpansionCommands[] = {
    {"tw", Expand_f, "Expands event and server variables in a command string and runs it."},
    {"twnq", ExpandNoQuotes_f,
     "Expands event and server variables in a command string, removes its double quotes and runs it."},
    {"tw_xnq", NoQuotes_f, "Removes the double quotes of a command string and runs it, without expansion."},
};
const CommandTable s_expansionCommands(kExpansionCommands);

}  // namespace
