// Delayed and queued commands: the pending list with its frame and level hooks, and the bases delayed and
// soon. What a command does when it runs is the engine's; this file only decides when its text is queued.
#include "library/delayed.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"

namespace {

// Pending commands by due time. A multimap inserts an equal key behind those already there, so ties leave in
// the order they were scheduled; the head is the next to leave.
using DelayedList = std::multimap<float, std::string>;

DelayedList& Pending() {
  static DelayedList& list = *new DelayedList;  // kept to the process's end, as the plugin's state is
  return list;
}

// The one text the engine's queue receives: a command and its line end.
struct QueuedLine {
  char text[DELAYED_MAX_COMMAND + 2];
};

// False, after the report, for a command that can't leave whole.
bool FitsOneLine(const char* command, const char* who) {
  if (strlen(command) <= DELAYED_MAX_COMMAND) return true;
  ReportScriptError(0, "%s: The command is longer than %d characters.\n", who, DELAYED_MAX_COMMAND);
  SetLastErrorText("Resulting string too long.");
  return false;
}

// A delay that is no finite number, as a 32-bit float, counts as 0.
float ReadDelay(const char* text) {
  const float delay = float(strtod(text, nullptr));
  return std::isfinite(delay) ? delay : 0.0f;
}

void Delayed_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const float delay = ReadDelay(args.Argv(1));
  // The command is the raw text behind the first blank, quotes and all; without a blank there is none.
  const char* blank = strchr(args.Args(), ' ');
  if (!blank) return;
  const char* command = blank + 1;
  if (!FitsOneLine(command, args.Argv(0))) return;
  Delayed_Schedule(engine->Time() + delay, command);
  DbgMsg(2, "tw_xdelayed, will run \"%s\" in %f seconds.\n", command, double(delay));
}

void Soon_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (!FitsOneLine(args.Args(), args.Argv(0))) return;
  QueuedLine line;
  snprintf(line.text, sizeof line.text, "%s\n", args.Args());
  engine->ServerCommand(line.text);
}

const CommandRow kDelayedCommands[] = {
    {"delayed", Delayed_h, 3, "Syntax: %s Syntax : tw_xdelayed <seconds> <commandstring>\n",
     "Runs a command after the given number of seconds.", DOORS_ALL},
    {"soon", Soon_h, 2, "Syntax: %s <command>\n", "Adds a command to the end of the server's command queue.",
     DOORS_ALL},
};
const CommandTable s_delayedCommands(kDelayedCommands);

}  // namespace

bool Delayed_Schedule(float dueTime, const char* command) {
  if (strlen(command) > DELAYED_MAX_COMMAND) return false;
  Pending().emplace(dueTime, command);
  return true;
}

size_t Delayed_PendingCount() { return Pending().size(); }

void Delayed_OnFrame() {
  DelayedList& list = Pending();
  if (list.empty()) return;
  const float now = engine->Time();
  const auto head = list.begin();
  if (now < head->first) return;
  QueuedLine line;
  snprintf(line.text, sizeof line.text, "%s\n", head->second.c_str());
  DbgMsg(2, "tw_xdelayed %s, %f seconds late, is executing:\n  %s;\n", "", double(now - head->first),
         head->second.c_str());
  engine->ServerCommand(line.text);
  list.erase(head);
}

void Delayed_OnLevelInit() {
  DbgMsg(1, "[Tidewright] Resetting delayed counters.\n");
  Pending().clear();
}
