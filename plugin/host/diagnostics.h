// Every message of the plugin goes through these: one filter by level for console output, one report that
// adds where in a script the failure happened, one slot (tidewright_lasterror) for a command's last error.
#pragma once

#include "language/textbuf.h"
#include "tier0.h"

class CScriptLine;

// Switches read on hot paths, kept as integers beside their variables by change callbacks.
struct CachedSwitches {
  int debug = 0;              // tidewright_debug: the level threshold
  int debuglog = 0;           // tidewright_debuglog: 1 routes messages to the server log
  int scripttrace = 0;        // tidewright_scripttrace: 1 traces script lines, 2 every inserted text
  int eiface = 1;             // tidewright_eiface
  int defaultevents = 1;      // tidewright_defaultevents
  int noisy = 0;              // tidewright_noisy
  int brannock = 1;           // brannock_tidewright: the master switch
  int python = 1;             // brannock_python
  int frametimecheck = 0;     // tidewright_frametimecheck
  int errorlocation = 1;      // tidewright_errorlocation: 1 adds a script error's place
};
extern CachedSwitches g_cached;

// The current instruction: the script line running now, its successor and its file. Written by the
// execution engine; read by reports and traces. cmd is "(no script)\n", line "(console)" and current null
// when no line runs.
struct Instruction {
  const char* cmd;
  CScriptLine* next;
  const char* line;
  const CScriptLine* current;
};
extern Instruction ip;

// The location that reports name while no script line runs.
inline constexpr const char* kNoScriptCmd = "(no script)\n";
inline constexpr const char* kNoScriptLine = "(console)";
// Puts ip in the state of no script running.
void ClearInstruction();

// Prints when `level` is at most tidewright_debug; to the server log instead when tidewright_debuglog is 1.
void DbgMsg(int level, const char* format, ...) TW_PRINTF(2, 3);
// As DbgMsg, followed by the place of the current script line.
void ReportScriptError(int level, const char* format, ...) TW_PRINTF(2, 3);
// Writes where a compiled line stands in its file ("<path>:<line> (block <name>)"); false when it has no
// place. Only the execution engine knows compiled lines: it sets the locator.
using LineLocator = bool (*)(const CScriptLine* line, char* out, size_t size);
void SetLineLocator(LineLocator locator);
// After the message of an error raised by a running script line: "  at <place>", on the message's way out,
// while tidewright_errorlocation is 1. Nothing for a console line.
void ReportErrorLocation();
// Stores a short text in tidewright_lasterror. Prints nothing; nothing ever clears it.
void SetLastErrorText(const char* format, ...) TW_PRINTF(1, 2);

// Times one frame while tidewright_frametimecheck is on when the frame begins: made at the frame's start,
// Report at its end prints "[Tidewright] Long frame: %f seconds" for a frame longer than 0.01 seconds.
class FrameTimer {
public:
  FrameTimer();
  void Report() const;

private:
  bool m_timed;
  float m_start;
};
