// The plugin's one way out to the console and the server log: the level filter, script error reports with
// their location, the last error slot and the long frame report. Also the cached switches and the current
// instruction, which the execution engine writes and the reports read.
#include "host/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "eiface.h"
#include "host/console.h"
#include "host/engine_surface.h"

CachedSwitches g_cached;
Instruction ip = {kNoScriptCmd, nullptr, kNoScriptLine, nullptr};

namespace {

// A frame that spends longer than this in the plugin is reported when tidewright_frametimecheck is on.
constexpr float kLongFrameSeconds = 0.01f;

// Formats into `out`, cutting the text at the console line's length.
void FormatMessage(char (&out)[TEXT_BUFFER_SIZE], const char* format, va_list args) {
  if (vsnprintf(out, sizeof out, format, args) < 0) out[0] = '\0';
}

bool RoutedToLog() { return g_cached.debuglog == 1; }

const char* Location(const char* text, const char* fallback) { return text ? text : fallback; }

LineLocator s_locator = nullptr;
// True while the last message printed left its line open (it didn't end in a line feed).
bool s_lineOpen = false;

}  // namespace

void ClearInstruction() {
  ip.cmd = kNoScriptCmd;
  ip.next = nullptr;
  ip.line = kNoScriptLine;
  ip.current = nullptr;
}

void DbgMsg(int level, const char* format, ...) {
  if (level > g_cached.debug) return;
  char text[TEXT_BUFFER_SIZE];
  va_list args;
  va_start(args, format);
  FormatMessage(text, format, args);
  va_end(args);
  if (text[0]) s_lineOpen = text[strlen(text) - 1] != '\n';
  if (RoutedToLog()) {
    if (engine) engine->LogPrint(text);
    return;
  }
  Msg("%s", text);
}

void ReportScriptError(int level, const char* format, ...) {
  if (level > g_cached.debug) return;
  char text[TEXT_BUFFER_SIZE];
  va_list args;
  va_start(args, format);
  FormatMessage(text, format, args);
  va_end(args);
  const char* line = Location(ip.line, kNoScriptLine);
  const char* cmd = Location(ip.cmd, kNoScriptCmd);
  s_lineOpen = cmd[0] && cmd[strlen(cmd) - 1] != '\n';
  if (RoutedToLog()) {
    if (!engine) return;
    engine->LogPrint(text);
    char where[TEXT_BUFFER_SIZE];
    snprintf(where, sizeof where, "  Error location %s: %s", line, cmd);
    engine->LogPrint(where);
    ReportErrorLocation();
    return;
  }
  Msg("%s  Error source %s: %s", text, line, cmd);
  ReportErrorLocation();
}

void SetLineLocator(LineLocator locator) { s_locator = locator; }

void ReportErrorLocation() {
  if (!g_cached.errorlocation || !ip.current || !s_locator) return;
  char where[TEXT_BUFFER_SIZE];
  // The message keeps its line as it is; the place starts a line of its own.
  if (s_locator(ip.current, where, sizeof where)) DbgMsg(0, "%s  at %s\n", s_lineOpen ? "\n" : "", where);
}

void SetLastErrorText(const char* format, ...) {
  char text[TEXT_BUFFER_SIZE];
  va_list args;
  va_start(args, format);
  FormatMessage(text, format, args);
  va_end(args);
  tidewright_lasterror.SetValue(text);
}

// ---- frame timing ----

FrameTimer::FrameTimer() : m_timed(g_cached.frametimecheck != 0 && engine), m_start(m_timed ? engine->Time() : 0.0f) {}

void FrameTimer::Report() const {
  if (!m_timed) return;
  float elapsed = engine->Time() - m_start;
  if (elapsed > kLongFrameSeconds) DbgMsg(0, "[Tidewright] Long frame: %f seconds\n", double(elapsed));
}
