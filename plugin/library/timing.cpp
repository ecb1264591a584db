// The clock for scripts: gettime, gettimestamp and gettimestring read the system's clock into a variable,
// profile is a stopwatch on the engine's clock kept in a variable, and cbench times a few of the plugin's
// own loops for an operator. Formatting follows tidewright_timeformat; storing follows the console's rules.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <strings.h>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/expansion.h"
#include "script/commandargs.h"

namespace {

// gettimestamp counts from 2005-12-31 17:15:34 UTC: a shorter number, good only for comparing.
constexpr long kTimestampEpoch = 1136049334;
// Bytes of a formatted time, terminator included.
constexpr size_t kTimeStringSize = 2048;
const char kTimeFormatError[] = "#TimeFormatError";

// ---- the system's clock ----

// gettime and gettimestamp: the variable is made when missing. From Python too the variable is named.
void StoreClock(bool expand, long value) {
  ArgView args(expand);
  const char* name = args.Argv(1);
  if (!*name) {
    DbgMsg(0, "Specify a variable!\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* var = SetVarInt(name, int(value), true);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be set.\n", name);
    SetLastErrorText("Variable could not be set.");
    return;
  }
  DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

void GetTime_h(bool expand, bool) { StoreClock(expand, long(time(nullptr))); }

void GetTimestamp_h(bool expand, bool) { StoreClock(expand, long(time(nullptr)) - kTimestampEpoch); }

// The local time in tidewright_timeformat; a format that gives no text, or too long a text, gives the
// error text instead. The variable must exist (or tidewright_autocreate make it).
void GetTimeString_h(bool expand, bool) {
  ArgView args(expand);
  const char* name = args.Argv(1);
  time_t now = time(nullptr);
  struct tm local;
  localtime_r(&now, &local);
  char text[kTimeStringSize];
  size_t length = strftime(text, sizeof text, tidewright_timeformat.GetString(), &local);
  ConVar* var = SetVarText(name, length ? text : kTimeFormatError, false);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be set\n", name);
    return;
  }
  DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

// ---- the stopwatch ----

const char kProfileHelp[] = "profile begin <var>\nor\nprofile end <var>\n";

// "begin" (any case) starts the watch in the variable; any other word ends it, the difference replacing
// the start. The engine's clock is a float, and so is the result.
void Profile_f() {
  if (engine->Cmd_Argc() < 3) {
    DbgMsg(0, "%s", kProfileHelp);
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
    return;
  }
  const char* name = engine->Cmd_Argv(2);
  if (strcasecmp(engine->Cmd_Argv(1), "begin") == 0) {
    DbgMsg(0, "Profiler timer %s started.\n", name);
    SetVarFloat(name, engine->Time(), true);
    return;
  }
  ConVar* var = FindServerVar(name);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", name);
    return;
  }
  const float now = engine->Time();
  const float start = var->GetFloat();
  const float elapsed = now - start;
  DbgMsg(1, "Profiler: %lf - %lf = %lf\n", double(now), double(start), double(elapsed));
  SetVarFloat(name, elapsed, false);
  DbgMsg(0, "Profiler timer %s ended: %lf\n", name, double(elapsed));
}

// ---- timing the plugin's own loops ----

constexpr int kBenchRuns = 100000;
const char kBenchLine[] = "tw_set bench_value \"two words\" server_var(tidewright_debug) event_var(userid)";

template <class Body>
void TimeLoop(const char* what, Body body) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kBenchRuns; ++i) body();
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  DbgMsg(0, "cbench: %-16s %d runs in %.3f ms, %.0f per second\n", what, kBenchRuns, seconds.count() * 1000.0,
         seconds.count() > 0 ? kBenchRuns / seconds.count() : 0.0);
}

// Reads and builds, and writes nothing: a variable lookup, tokenizing a script line, and expanding this
// command's own arguments (`cbench server_var(hostname)` times that expansion).
void CBench_f() {
  volatile int sink = 0;
  TimeLoop("variable lookup", [&] { sink = sink + (FindServerVar("tidewright_debug") != nullptr); });
  TimeLoop("line tokenizing", [&] {
    CommandArgs* record = Cmd_Tokenize(kBenchLine);
    sink = sink + record->Argc();
    delete record;
  });
  TimeLoop("expansion", [&] {
    TextBuf line;
    sink = sink + ParseCommand(line, 0, engine->Cmd_Argc(), '\0');
  });
}

const CommandRow kTimeCommands[] = {
    {"gettime", GetTime_h, 2, "Syntax: %s <varname>\n", "Stores the system time in seconds since 1970 in a variable.",
     DOORS_ALL},
    {"gettimestamp", GetTimestamp_h, 2, "Syntax: %s <varname>\n",
     "Stores a timestamp for comparing times (the system time minus 1136049334) in a variable.", DOORS_ALL},
    {"gettimestring", GetTimeString_h, 2, "Syntax: %s <varname>\n",
     "Stores the local time, formatted by tidewright_timeformat, in a variable.", DOORS_ALL},
};
const CommandTable s_timeCommands(kTimeCommands);

const PlainCommandRow kTimePlainCommands[] = {
    {"profile", Profile_f, kProfileHelp},
    {"cbench", CBench_f, "Times a few of Tidewright's own loops and prints the results; changes nothing."},
};
const CommandTable s_timePlainCommands(kTimePlainCommands);

}  // namespace
