// The console's steps of Load and LevelInit: the directories and the command line stored in their
// variables, the cached switches read afresh, rcon_password protected from expansion. The order in which
// they run is the plugin object's.
#include <cstdio>

#include "convar.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/textbuf.h"
#include "vstdlib.h"

namespace {

constexpr int kMaxPath = 2048;
constexpr const char* kAddonSubdirectory = "/addons/tidewright";

}  // namespace

void StoreGameDirectories() {
  char gameDir[kMaxPath] = "";
  engine->GetGameDir(gameDir, kMaxPath - 1);
  char addonDir[kMaxPath];
  snprintf(addonDir, sizeof addonDir, "%s%s", gameDir, kAddonSubdirectory);
  tidewright_addondir.SetValue(addonDir);
  tidewright_gamedir.SetValue(gameDir);
}

void RefreshCachedSwitches() {
  g_cached.eiface = tidewright_eiface.GetInt();
  g_cached.debug = tidewright_debug.GetInt();
  g_cached.debuglog = tidewright_debuglog.GetInt();
}

// The line travels as one quoted argument, so its own double quotes become single ones and line ends become
// blanks; a command line too long for the buffer is cut, and the command keeps its closing quote and line end.
void QueueCommandLine() {
  static constexpr char kPrefix[] = "tw_xsetinfo tidewright_cmdline \"";
  static constexpr char kSuffix[] = "\"\n";
  char line[TEXT_BUFFER_SIZE - (sizeof kPrefix - 1) - (sizeof kSuffix - 1)];
  const char* commandLine = CommandLine()->GetCmdLine();
  snprintf(line, sizeof line, "%s", commandLine ? commandLine : "");
  for (char* c = line; *c; ++c) {
    if (*c == '"') *c = '\'';
    if (*c == '\n' || *c == '\r') *c = ' ';
  }
  char command[TEXT_BUFFER_SIZE];
  snprintf(command, sizeof command, "%s%s%s", kPrefix, line, kSuffix);
  engine->ServerCommand(command);
}

void ProtectRconPassword() {
  if (tidewright_protectrcon.GetInt() <= 0) return;
  if (ConVar* rcon = FindServerVar("rcon_password")) rcon->AddFlags(FCVAR_PROTECTED);
}
