// Conditionals: the operator table, the comparison, tw_xif/if with their `then` and `do` forms, and
// tw_xelse/else. Refusing the block behind a false `do` is the machine's (ExecBlock); saving lastIfResult
// across a block's frame is tw__sb/tw__eb's.
#include "script/conditionals.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>

#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "script/machine.h"
#include "vstdlib.h"

namespace {

// Tokens of the shortest condition: the command, "(", left, operator, right, ")", then/do.
constexpr int kConditionTokens = 7;
const char kThenMarker[] = ") then ";
const char kDoMarker[] = ") do";

// Each comparison with its spellings, in the order they are tried; a row ends early with null.
constexpr int kMaxSpellings = 3;
struct OperatorRow {
  CompareCode code;
  const char* spellings[kMaxSpellings];
};

const OperatorRow kOperators[] = {
    {COMPARE_EQUAL, {"equalto", "=", "=="}},
    {COMPARE_NOT_EQUAL, {"notequalto", "!="}},
    {COMPARE_GREATER, {"greaterthan", ">"}},
    {COMPARE_LESS, {"lessthan", "<"}},
    {COMPARE_NOT_LESS, {"notlessthan", ">=", "=>"}},
    {COMPARE_NOT_GREATER, {"notgreaterthan", "=<", "<="}},
    {COMPARE_IN, {"in", ":"}},
    {COMPARE_NOT_IN, {"notin", "!:"}},
};

// Operands of the order comparisons: a text that is no number counts as 0, and NaN makes every order false.
double Number(const char* text) { return text ? atof(text) : 0.0; }

bool TextEqual(const char* left, const char* right) { return left && right && strcasecmp(left, right) == 0; }

bool Contains(const char* haystack, const char* needle) {
  return haystack && needle && Q_stristr(haystack, needle) != nullptr;
}

}  // namespace

// ---- comparing ----

CompareCode ConditionOperatorCode(const char* spelling) {
  if (!spelling) return COMPARE_UNSUPPORTED;
  for (const OperatorRow& row : kOperators)
    for (const char* text : row.spellings)
      if (text && strcasecmp(text, spelling) == 0) return row.code;
  return COMPARE_UNSUPPORTED;
}

bool CompareTokens(const char* left, CompareCode code, const char* right) {
  switch (code) {
    case COMPARE_EQUAL:
      return TextEqual(left, right);
    case COMPARE_NOT_EQUAL:
      return !TextEqual(left, right);
    case COMPARE_GREATER:
      return Number(left) > Number(right);
    case COMPARE_LESS:
      return Number(left) < Number(right);
    case COMPARE_NOT_LESS:
      return Number(left) >= Number(right);
    case COMPARE_NOT_GREATER:
      return Number(left) <= Number(right);
    case COMPARE_IN:
      return Contains(right, left);
    case COMPARE_NOT_IN:
      return !Contains(right, left);
    case COMPARE_UNSUPPORTED:
      break;
  }
  const char* args = engine->Cmd_Args();
  DbgMsg(0, "%s: Unsupported comparison operator. Your line was:\n  %s\n", engine->Cmd_Argv(0), args ? args : "");
  ReportErrorLocation();
  SetLastErrorText("Syntax error");
  return false;
}

// ---- applying a result ----

void ConditionTrue(const char* command, bool isDo) {
  g_scriptMachine.lastIfResult = 1;
  if (!isDo) {
    ImmediateExecuteCommand(command);
    return;
  }
  DbgMsg(4, "setting skip flag\n");
  g_scriptMachine.skipNextBlock = 0;
}

void ConditionFalse(bool isDo) {
  g_scriptMachine.lastIfResult = 0;
  if (isDo) g_scriptMachine.skipNextBlock = 1;
}

void EvaluateCondition(const char* left, const char* op, const char* right, const char* command, bool isDo) {
  if (CompareTokens(left, ConditionOperatorCode(op), right))
    ConditionTrue(command, isDo);
  else
    ConditionFalse(isDo);
}

namespace {

// ---- tw_xif and if ----

void FormatError(int number, const char* line) {
  DbgMsg(0, "tw_xif: Format is:\n  tw_xif (<foo> equalto <bar>) then <any typical script line>\n%d Your line was: %s\n",
         number, line);
  ReportErrorLocation();
  SetLastErrorText("Syntax error");
}

void If_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argv(1)[0] != '(') return FormatError(2, args.Args());
  if (args.Argv(5)[0] != ')') return FormatError(3, args.Args());
  const bool isDo = strcasecmp(args.Argv(6), "do") == 0;
  if (!isDo && strcasecmp(args.Argv(6), "then") != 0) return FormatError(4, args.Args());

  // Case-sensitive, unlike the word test above; the command is cut from the raw text, quotes and all.
  const char* marker = isDo ? kDoMarker : kThenMarker;
  const char* found = strstr(args.Args(), marker);
  if (!found) {
    DbgMsg(0,
           "tw_xif: Couldn't find then portion. Format is:\n  tw_xif (<foo> equalto <bar>) then <any typical script "
           "line>\n5 Your line was: %s\n",
           args.Args());
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
    return;
  }
  TextBuf command;
  if (!isDo && (!command.Append(found + strlen(marker)) || !command.Append('\n'))) {
    DbgMsg(0, "%s: The command behind then is too long.\n", args.Argv(0));
    SetLastErrorText("Resulting string too long.");
    return;
  }
  EvaluateCondition(args.Argv(2), args.Argv(3), args.Argv(4), command.c_str(), isDo);
}

// ---- tw_xelse and else ----

// "else do": the block behind runs only when the condition of this level failed. True when it was that form.
bool ElseDo() {
  if (engine->Cmd_Argc() < 2 || strcasecmp(engine->Cmd_Argv(1), "do") != 0) return false;
  g_scriptMachine.skipNextBlock = g_scriptMachine.lastIfResult ? 1 : 0;
  return true;
}

// Builds "<start><Cmd_Args>\n", the start alone when the command has no arguments; false after reporting
// when that passes a console line.
bool BuildWithArgs(TextBuf& line, const char* who, const char* start) {
  line.Append(start);
  if (engine->Cmd_Argc() > 1) line.Append(engine->Cmd_Args());
  line.Append('\n');
  if (!line.Overflowed()) return true;
  DbgMsg(0, "%s: The command string is too long.\n", who);
  SetLastErrorText("Resulting string too long.");
  return false;
}

void XElse_f() {
  if (ElseDo() || g_scriptMachine.lastIfResult || engine->Cmd_Argc() <= 1) return;
  TextBuf line;
  if (BuildWithArgs(line, "tw_xelse", "")) ImmediateExecuteCommand(line.c_str());
}

// The command is expanded by `tw` first and tested by tw_xelse after, so it is expanded even when it won't run.
void Else_f() {
  if (ElseDo()) return;
  TextBuf line;
  if (!BuildWithArgs(line, "else", engine->Cmd_Argc() > 1 ? "tw tw_xelse " : "tw tw_xelse")) return;
  DbgMsg(2, "tw_else executing: %s\n", line.c_str());
  ImmediateExecuteCommand(line.c_str());
}

const CommandRow kIfCommands[] = {
    {"if", If_h, kConditionTokens, "Syntax: %s (<token1> <operator> <token2>) <then/do> [typical script line]\n\n",
     "Compares two tokens: then runs the rest of the line, do lets the nested block behind pass when true.",
     DOORS_CONSOLE, "if"},
};
const CommandTable s_ifCommands(kIfCommands);

const PlainCommandRow kElseCommands[] = {
    {"tw_xelse", XElse_f,
     "Runs the rest of the line, or with do the nested block behind, when the last condition failed."},
    {"else", Else_f,
     "Runs the rest of the line, or with do the nested block behind, when the last condition failed. Expands event "
     "and server variables."},
};
const CommandTable s_elseCommands(kElseCommands);

}  // namespace
