// The script lifecycle commands as far as loading and removal go: load, unload and _unload, each with its
// three doors. Removal waits behind the script's unload block, because both are inserted at the buffer's head.
#include "script/lifecycle.h"

#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "script/machine.h"

void RemoveAddon(const char* name) {
  if (g_scriptMachine.registry.RemoveScript(name)) DbgMsg(0, "Script removed: %s\n", name);
}

void PrintScriptList() {
  DbgMsg(0, "\n[Tidewright] Loaded:\n");
  for (CScript* script = g_scriptMachine.registry.FirstScript(); script; script = script->next)
    DbgMsg(0, "[Tidewright]   [%s] %s\n", script->enabled ? " enabled" : "disabled", script->name);
  DbgMsg(0, "[Tidewright]------------------------\n\n");
}

namespace {

// Formats "<start><name><end>" for the buffer; false after reporting when it doesn't fit a console line.
bool BuildLine(TextBuf& line, const char* start, const char* name, const char* end) {
  if (line.Append(start) && line.Append(name) && line.Append(end)) return true;
  DbgMsg(0, "The script name is too long: %.64s...\n", name);
  SetLastErrorText("Resulting string too long.");
  return false;
}

void Load_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() < 2) {
    PrintScriptList();
    return;
  }
  LoadAddonFile(args.Argv(1));
}

void Unload_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() <= 1) return;
  TextBuf removal;
  TextBuf unloadBlock;
  if (!BuildLine(removal, "tw__unload ", args.Args(), "\n") ||
      !BuildLine(unloadBlock, "tw__db ", args.Args(), "/unload\n"))
    return;
  ImmediateExecuteCommand(removal.c_str());
  DbgMsg(0, "Unloading %s...\n", args.Args());
  ImmediateExecuteCommand(unloadBlock.c_str());
}

void RemoveAddon_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() > 1) RemoveAddon(args.Args());
}

const CommandRow kLifecycleCommands[] = {
    {"load", Load_h, 1, "Syntax: %s [scriptname]\n", "Loads a script; without a name, lists the loaded scripts.",
     DOORS_ALL},
    {"unload", Unload_h, 2, "Syntax: %s <scriptname>\n", "Runs a script's unload block, then removes the script.",
     DOORS_ALL},
    {"_unload", RemoveAddon_h, 2, "Syntax: %s <scriptname>\n", "Tidewright internal command: removes a script.",
     DOORS_ALL},
};
const CommandTable s_lifecycleCommands(kLifecycleCommands);

}  // namespace
