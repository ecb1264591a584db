// Server variable commands with their three doors (set, setinfo, copy, getargv/c/s, getcmduserid,
// forcevalue, flags, makepublic, getgame, log, logv, dbgmsg, dbgmsgv, commandv) and the commands of one
// form tw_xlogq, tw_logq, printcount, tidewright_version and tidewright_log.
#include "language/varcommands.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/version.h"
#include "icvar.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "script/machine.h"

int g_commandUserid = 0;

namespace {

// A text cut to a console line, with a line feed: what log and debug output get.
struct OutputLine {
  char text[TEXT_BUFFER_SIZE];
  explicit OutputLine(const char* body) { snprintf(text, sizeof text, "%.*s\n", TEXT_BUFFER_SIZE - 2, body); }
};

int TruncateToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483647 - 1;
  return int(value);
}

// ---- assignment and copy ----

void Set_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() < 4)
    SetVarText(args.Argv(1), args.Argv(2), true);
  else
    SetVarTextWithHelp(args.Argv(1), args.Argv(2), args.Argv(3), true);
}

void SetInfo_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  SetVarText(args.Argv(1), args.Argv(2), true);
}

void Copy_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() != 3) {
    DbgMsg(0, "Syntax: tw_xcopy <varname> <varname2>\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  const char* target = args.Argv(1);
  if (!*target || !*args.Argv(2)) {
    DbgMsg(0, "Specify a variable!\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* source = FindServerVar(args.Argv(2));
  if (!source) {
    DbgMsg(0, "The var \"%s\" could not be found\n", args.Argv(2));
    return;
  }
  // A copy of the text: the target may be the source, whose text the store replaces.
  const std::string text = source->GetString();
  ConVar* stored = SetVarText(target, text.c_str(), false);
  if (!stored)
    DbgMsg(0, "The var \"%s\" could not be set.\n", target);
  else
    DbgMsg(1, "%s = \"%s\"\n", stored->GetName(), stored->GetString());
}

// ---- block arguments and the command's client ----

void GetArgv_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const CommandArgs* block = g_scriptMachine.blockArgs;
  int index = atoi(args.Argv(fromConsole ? 2 : 1));
  ReturnText(fromConsole, args.Argv(1), block ? block->Argv(index) : nullptr);
}

void GetArgc_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const CommandArgs* block = g_scriptMachine.blockArgs;
  ReturnInt(fromConsole, args.Argv(1), block ? block->Argc() : 0);
}

void GetArgs_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const CommandArgs* block = g_scriptMachine.blockArgs;
  ReturnText(fromConsole, args.Argv(1), block ? block->Args() : nullptr);
}

void GetCmdUserid_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnInt(fromConsole, args.Argv(1), g_commandUserid);
}

// ---- writing past the rules ----

// Stores a value with none of the setters' checks: no clamp, no callback, no cheat test.
void ForceValue(ConVar* var, const char* text) {
  ConVar* values = var->GetParent();
  double number = strtod(text, nullptr);
  values->m_fValue = float(number);
  values->m_nValue = TruncateToInt(values->m_fValue);
  if (values->GetFlagsRaw() & FCVAR_NEVER_AS_STRING) return;
  int needed = int(strlen(text)) + 1;
  if (needed > values->m_StringLength) {
    free(values->m_pszString);
    values->m_pszString = static_cast<char*>(malloc(size_t(needed)));
    values->m_StringLength = needed;
  }
  memcpy(values->m_pszString, text, size_t(needed));
}

void ForceValue_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ConVar* var = FindServerVar(args.Argv(1));
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", args.Argv(1));
    return;
  }
  ForceValue(var, args.Argv(2));
}

struct FlagWord {
  const char* word;
  int mask;
};
const FlagWord kFlagWords[] = {
    {"cheat", FCVAR_CHEAT},       {"notify", FCVAR_NOTIFY},           {"gamedll", FCVAR_GAMEDLL},
    {"replicated", FCVAR_REPLICATED}, {"protected", FCVAR_PROTECTED},  {"unlogged", FCVAR_UNLOGGED},
    {"neverstring", FCVAR_NEVER_AS_STRING}, {"printable", FCVAR_PRINTABLEONLY}, {"demo", FCVAR_DEMO},
    {"dontrecord", FCVAR_DONTRECORD},
};

int FlagMask(const char* word) {
  for (const FlagWord& flag : kFlagWords)
    if (strcasecmp(flag.word, word) == 0) return flag.mask;
  return 0;
}

// A variable by name, else a command of exactly that name in the engine's chain. For a variable, the object
// whose flags count is its parent.
ConCommandBase* FindFlagTarget(const char* name) {
  if (ConVar* var = FindServerVar(name)) return var->GetParent();
  if (!cvar) return nullptr;
  for (ConCommandBase* base = cvar->GetCommands(); base; base = base->GetNext())
    if (base->IsCommand() && base->GetName() && strcmp(base->GetName(), name) == 0) return base;
  return nullptr;
}

void Flags_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  int mask = FlagMask(args.Argv(2));
  ConCommandBase* target = FindFlagTarget(args.Argv(3));
  if (!target) {
    DbgMsg(0, "tw_xflags: Could not find var or command: %s\n", args.Argv(3));
    return;
  }
  if (strcasecmp(args.Argv(1), "add") == 0)
    target->SetFlagsRaw(target->GetFlagsRaw() | mask);
  else if (strcasecmp(args.Argv(1), "remove") == 0 && (target->GetFlagsRaw() & mask))
    target->SetFlagsRaw(target->GetFlagsRaw() & ~mask);
}

void MakePublic_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ConVar* var = FindServerVar(args.Argv(1));
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", args.Argv(1));
    SetLastErrorText("Variable couldn't be found.");
    return;
  }
  var->AddFlags(FCVAR_NOTIFY | FCVAR_REPLICATED);
}

void GetGame_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnText(fromConsole, args.Argv(1), gamedll ? gamedll->GetGameDescription() : "");
}

// ---- texts to the log, the debug output and the command stream ----

void Log_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  OutputLine line(args.Args());
  TextBuf unquoted;
  unquoted.Append(line.text);
  unquoted.Remove('"');
  engine->LogPrint(unquoted.c_str());
}

// The variable that logv, commandv and dbgmsgv read; null after both error reports.
ConVar* FindTextVar(const char* name) {
  ConVar* var = FindOrCreateServerVar(name, "", false);
  if (!var) {
    ReportScriptError(0, "ERROR: variable %s does not exist.\n", name);
    SetLastErrorText("Variable does not exist");
  }
  return var;
}

void LogVar_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (ConVar* var = FindTextVar(args.Argv(1))) engine->LogPrint(OutputLine(var->GetString()).text);
}

void CommandVar_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ConVar* var = FindTextVar(args.Argv(1));
  if (!var) return;
  // A command that doesn't fit a console line is not run in part.
  TextBuf line;
  if (!line.Append(var->GetString()) || !line.Append('\n')) {
    ReportScriptError(0, "The text of %s is too long to run as a command.\n", args.Argv(1));
    SetLastErrorText("Resulting string too long.");
    return;
  }
  ImmediateExecuteCommand(line.c_str());
}

void DebugMessage_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() < 3) {
    ReportScriptError(0, "Invalid syntax.\n");
    SetLastErrorText("Invalid syntax");
    return;
  }
  // The message is the raw text behind the level; with no blank behind the level there is none.
  const char* blank = strchr(args.Args(), ' ');
  DbgMsg(atoi(args.Argv(1)), "%s\n", blank ? blank + 1 : "");
}

void DebugMessageVar_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  int level = atoi(args.Argv(1));
  if (ConVar* var = FindTextVar(args.Argv(2))) DbgMsg(level, "%s\n", var->GetString());
}

void LogQuoted_f() {
  if (engine->Cmd_Argc() < 2) {
    DbgMsg(0, "tw_xlogq: Please provide something to broadcast.\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  engine->LogPrint(OutputLine(engine->Cmd_Args()).text);
}

void PrintCount_f() { DbgMsg(0, "%d\n", gpGlobals ? gpGlobals->framecount : 0); }

void Version_f() { DbgMsg(0, "%s\n", kPluginDescription); }

void LogVersion_f() {
  engine->LogPrint(kPluginDescription);
  engine->LogPrint("\n");
}

const CommandRow kVariableCommands[] = {
    {"set", Set_h, 3, "Syntax: %s <key> <value> [description]\n", "Adds/sets a new server/global variable.",
     DOORS_ALL},
    {"setinfo", SetInfo_h, 3, "Syntax: %s <variable> <value>\n", "Adds/sets a new server/global variable.",
     DOORS_ALL},
    {"copy", Copy_h, 3, "Syntax: %s <varname> <varname2>\n", "Copies the value of the second variable into the first.",
     DOORS_ALL},
    {"getargv", GetArgv_h, 2, "Syntax: %s <var> <index>\n",
     "Stores an argument of the running block call, counted from 0, in a variable.", DOORS_ALL},
    {"getargc", GetArgc_h, 2, "Syntax: %s <var>\n",
     "Stores the argument count of the running block call in a variable.", DOORS_ALL},
    {"getargs", GetArgs_h, 2, "Syntax: %s <var>\n",
     "Stores the argument text of the running block call, behind its first token, in a variable.", DOORS_ALL},
    {"getcmduserid", GetCmdUserid_h, 2, "Syntax: %s <var>\n",
     "Stores the userid of the client whose command is running in a variable.", DOORS_CONSOLE},
    {"forcevalue", ForceValue_h, 3, "Syntax: %s <var> <value>\n",
     "Forces a value into a variable past its limits, callbacks and cheat protection.", DOORS_ALL},
    {"flags", Flags_h, 4, "Syntax: %s <add/remove> <flag> <command/var>\n",
     "Adds or removes a flag of a variable or command.", DOORS_ALL},
    {"makepublic", MakePublic_h, 2, "Syntax: %s <var>\n", "Makes a variable public: notify and replicated.",
     DOORS_ALL},
    {"getgame", GetGame_h, 2, "Syntax: %s <variable>\n", "Stores the game's description in a variable.", DOORS_ALL},
    {"log", Log_h, 2, "Syntax: %s Please provide something to message.\n",
     "Writes a text to the server log, without its double quotes.", DOORS_ALL},
    {"logv", LogVar_h, 2, "Syntax: %s <variable>\n", "Writes the value of a variable to the server log.", DOORS_ALL},
    {"dbgmsg", DebugMessage_h, 2, "Syntax: %s Please provide something to message.\n",
     "Prints a text at a debug level: <level> <text>.", DOORS_ALL},
    {"dbgmsgv", DebugMessageVar_h, 2, "Syntax: %s Please provide something to message.\n",
     "Prints the value of a variable at a debug level: <level> <variable>.", DOORS_ALL},
    {"commandv", CommandVar_h, 2, "Syntax: %s <variable>\n", "Runs the value of a variable as a command.",
     DOORS_ALL},
};
const CommandTable s_variableCommands(kVariableCommands);

const PlainCommandRow kVariablePlainCommands[] = {
    {"tw_xlogq", LogQuoted_f, "Writes a text to the server log, double quotes kept."},
    {"printcount", PrintCount_f, "Prints the engine's frame counter."},
    {"tidewright_version", Version_f, "Prints the version of Tidewright."},
    {"tidewright_log", LogVersion_f, "Writes the version of Tidewright to the server log."},
};
const CommandTable s_variablePlainCommands(kVariablePlainCommands);

const PrefixTwinRow kVariablePrefixTwins[] = {
    {"tw_logq", 2, "tw tw_xlogq ", "tw_log: Please provide something to log.\n", "tw_logq executing: %s\n", 2,
     "Writes a text to the server log, double quotes kept. Expands event and server variables."},
};
const CommandTable s_variablePrefixTwins(kVariablePrefixTwins);

}  // namespace
