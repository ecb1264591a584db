// The loops over a keygroup: foreachkey walks the keys of a group, foreachval the values of a key. A loop
// keeps no state of its own: each step inserts at the head of the command buffer the line that sets the
// variable, the body, and the next step (_foreachkey, _foreachval) with the loop's position in its text.
// The position is the handle of the node the loop stands on, so a node deleted meanwhile ends the loop.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "KeyValues.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/textbuf.h"

namespace {

// What tells the two loops apart.
struct LoopKind {
  const char* stepWord;       // the next step's command in the first step's line
  const char* invalidSyntax;  // the message of a first step without "in"
  bool overValues;            // values of a key, or keys of a group
  int bodyIndex;              // the body's argument in the first step; one more in the next steps
};

const LoopKind kKeyLoop = {"tw_x_foreachkey", " Invalid syntax: tw_xforeachkey <var> in <groupname> <command>",
                           false, 4};
const LoopKind kValueLoop = {"tw_x_foreachval",
                             " Invalid syntax: tw_xforeachval <var> in <groupname> <command>\n", true, 5};

KeyValues* FirstNode(const LoopKind& kind, KeyValues* holder) {
  return kind.overValues ? holder->GetFirstValue() : holder->GetFirstTrueSubKey();
}

KeyValues* NextNode(const LoopKind& kind, KeyValues* node) {
  return kind.overValues ? node->GetNextValue() : node->GetNextTrueSubKey();
}

// The step's arguments that the next step carries on: the variable, "in", the group, [the key,] the body.
// The console doors hand on their raw text, quotes and all. The Python door's text joins its items with
// blanks, which the next step's tokenizing would split, so there each item is quoted.
struct LoopTail {
  const ArgView& args;
  bool fromConsole;
  const char* rawText;  // the text behind the position (or behind the command's name in the first step)
  int firstArg;         // the index of the variable in `args`
};

bool AppendTail(TextBuf& line, const LoopTail& tail) {
  if (tail.fromConsole) return line.Append(tail.rawText);
  bool fits = true;
  for (int i = tail.firstArg; i < tail.args.Argc(); ++i) {
    if (i > tail.firstArg) fits = fits && line.Append(' ');
    fits = fits && line.Append('"') && line.Append(tail.args.Argv(i)) && line.Append('"');
  }
  return fits;
}

// A node whose name holds a double quote can't stand in the generated line: it is passed over with a
// message. Gives the first node from `node` on that can, or null.
KeyValues* FirstUsableNode(const LoopKind& kind, KeyValues* node, const char* command) {
  while (node && strchr(node->GetName(), '"')) {
    DbgMsg(0, "%s: the name %s holds a double quote and can't be set by the loop; it is passed over.\n",
           command, node->GetName());
    node = NextNode(kind, node);
  }
  return node;
}

// Inserts "tw_xsetinfo <var> "<name>";<body>\n;<step word> <position> <tail>\n" for `node`. A missing node,
// or one with an empty name, ends the loop.
void InsertStep(const LoopKind& kind, KeyValues* node, const char* variable, const char* body,
                const char* stepWord, const LoopTail& tail) {
  node = FirstUsableNode(kind, node, tail.args.Argv(0));
  if (!node || !node->GetName()[0]) return;
  char position[32];
  snprintf(position, sizeof position, " %llu ", static_cast<unsigned long long>(node->GetHandle()));
  TextBuf line("tw_xsetinfo ");
  bool fits = line.Append(variable) && line.Append(" \"") && line.Append(node->GetName()) &&
              line.Append("\";") && line.Append(body) && line.Append("\n;") && line.Append(stepWord) &&
              line.Append(position) && AppendTail(line, tail) && line.Append('\n');
  if (!fits) {
    DbgMsg(0, "%s: the loop's next line is longer than %d characters; the loop ends.\n", tail.args.Argv(0),
           TEXT_BUFFER_SIZE - 1);
    SetLastErrorText("Resulting string too long.");
    return;
  }
  ImmediateExecuteCommand(line.c_str());
}

// ---- the first step ----

// The group, or for the value loop the key in the group; null after the report.
KeyValues* LoopHolder(const LoopKind& kind, const ArgView& args) {
  if (!FindUserGroups()) return nullptr;
  KeyValues* group = FindGroup(args.Argv(3), false);
  if (!group) {
    DbgMsg(0, "%s\nERROR: Tidewright cannot find keygroup: %s!\n", args.Argv(0), args.Argv(3));
    SetLastErrorText("Keygroup not found");
    return nullptr;
  }
  if (!kind.overValues) return group;
  KeyValues* key = FindChildKey(group, args.Argv(4));
  if (!key) {
    DbgMsg(0, "%s\nERROR: Tidewright cannot find key: %s!\n", args.Argv(0), args.Argv(4));
    SetLastErrorText("Key not found");
  }
  return key;
}

void StartLoop(const LoopKind& kind, bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() < 5 || strcasecmp(args.Argv(2), "in") != 0) {
    DbgMsg(0, "%s", kind.invalidSyntax);
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
    return;
  }
  KeyValues* holder = LoopHolder(kind, args);
  if (!holder) return;
  LoopTail tail{args, fromConsole, args.Args(), 1};
  InsertStep(kind, FirstNode(kind, holder), args.Argv(1), args.Argv(kind.bodyIndex), kind.stepWord, tail);
}

// ---- the next step ----

// The text behind the first blank of `text`, or the empty text.
const char* BehindFirstBlank(const char* text) {
  const char* blank = strchr(text, ' ');
  return blank ? blank + 1 : "";
}

void NextStep(const LoopKind& kind, bool expand, bool fromConsole) {
  ArgView args(expand);
  KeyValues* at = KeyValues::FromHandle(strtoull(args.Argv(1), nullptr, 10));
  if (!at) {
    // The node was deleted by the loop's body, or the position was typed: either way nothing to step from.
    DbgMsg(1, "%s: the loop position %s names no live key or value; the loop ends.\n", args.Argv(0),
           args.Argv(1));
    return;
  }
  LoopTail tail{args, fromConsole, BehindFirstBlank(args.Args()), 2};
  InsertStep(kind, NextNode(kind, at), args.Argv(2), args.Argv(kind.bodyIndex + 1), args.Argv(0), tail);
}

void ForEachKey_h(bool expand, bool fromConsole) { StartLoop(kKeyLoop, expand, fromConsole); }
void ForEachValue_h(bool expand, bool fromConsole) { StartLoop(kValueLoop, expand, fromConsole); }
void NextKey_h(bool expand, bool fromConsole) { NextStep(kKeyLoop, expand, fromConsole); }
void NextValue_h(bool expand, bool fromConsole) { NextStep(kValueLoop, expand, fromConsole); }

const CommandRow kLoopCommands[] = {
    {"foreachval", ForEachValue_h, 5, "Syntax: %s <var> in <groupname> <keyname> <command>\n",
     "Runs a command for each value of a key, with the value's name in a variable.", DOORS_ALL},
    {"foreachkey", ForEachKey_h, 5, "Syntax: %s <var> in <groupname> <command>\n",
     "Runs a command for each key of a keygroup, with the key's name in a variable.", DOORS_ALL},
    {"_foreachval", NextValue_h, 6, "Syntax: %s <ptr> <var> in <groupname> <keyname> <command>\n",
     "The next step of a foreachval loop.", DOORS_ALL},
    {"_foreachkey", NextKey_h, 6, "Syntax: %s <ptr> <var> in <groupname> <command>\n",
     "The next step of a foreachkey loop.", DOORS_ALL},
};
const CommandTable s_loopCommands(kLoopCommands);

}  // namespace
