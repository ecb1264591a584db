// The script lifecycle commands, each with its three doors: load (or the list), unload, reload, enable, disable,
// the internal _unload and _disable, and createscriptlist. The real work of unload and disable waits behind
// the script's own block, because both are inserted at the buffer's head, the block in front.
#include "script/lifecycle.h"

#include <strings.h>
#include <utility>

#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/results.h"
#include "language/textbuf.h"
#include "python/hooks.h"
#include "script/machine.h"

// A name that no text script has may be a Python addon's.
void RemoveAddon(const char* name) {
  if (g_scriptMachine.registry.RemoveScript(name))
    DbgMsg(0, "Script removed: %s\n", name);
  else
    UnloadModuleAddon(name);
}

void PrintScriptList() {
  DbgMsg(0, "\n[Tidewright] Loaded:\n");
  for (CScript* script = g_scriptMachine.registry.FirstScript(); script; script = script->next)
    DbgMsg(0, "[Tidewright]   [%s] %s\n", script->enabled ? " enabled" : "disabled", script->name);
  Python_PrintScriptList();
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

// Puts the script's block `<name><blockSuffix>` at the head of the buffer with `<afterCommand><name>`
// waiting behind it, so the command finds the block run to its end.
void RunBlockThen(const char* name, const char* blockSuffix, const char* afterCommand, const char* message) {
  TextBuf after;
  TextBuf block;
  if (!BuildLine(after, afterCommand, name, "\n") || !BuildLine(block, "tw__db ", name, blockSuffix)) return;
  ImmediateExecuteCommand(after.c_str());
  DbgMsg(0, message, name);
  ImmediateExecuteCommand(block.c_str());
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
  if (args.Argc() > 1) RunBlockThen(args.Args(), "/unload\n", "tw__unload ", "Unloading %s...\n");
}

void RemoveAddon_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() > 1) RemoveAddon(args.Args());
}

// The unload runs first: its own two insertions stand in front of the waiting load.
void Reload_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() <= 1) return;
  TextBuf load;
  TextBuf unload;
  if (!BuildLine(load, "tw_xload ", args.Args(), "\n") || !BuildLine(unload, "tw_xunload ", args.Args(), "\n")) return;
  ImmediateExecuteCommand(load.c_str());
  ImmediateExecuteCommand(unload.c_str());
}

// The script is enabled before its enable block runs; the block runs every time.
void Enable_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() <= 1) return;
  TextBuf enableBlock;
  if (!BuildLine(enableBlock, "tw__db ", args.Args(), "/enable\n")) return;
  g_scriptMachine.registry.SetScriptEnabled(args.Args(), true);
  DbgMsg(0, "Enabling %s...\n", args.Args());
  ImmediateExecuteCommand(enableBlock.c_str());
}

// The disable block runs first and the script is disabled after it, by tw__disable waiting behind it.
void Disable_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() > 1) RunBlockThen(args.Args(), "/disable\n", "tw__disable ", "Disabling %s...\n");
}

void DisableNow_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() > 1) g_scriptMachine.registry.SetScriptEnabled(args.Args(), false);
}

// ---- the script list ----

// At the console doors the list goes into the keygroup Argv(1), from Python into a dictionary; both hold only
// the script named, when a name is given.
void CreateScriptList_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int nameIndex = fromConsole ? 2 : 1;
  if ((fromConsole ? args.Argc() : args.Argc() + 1) <= 1) return;
  KeyValues* group = fromConsole ? OpenListGroup(args.Argv(1)) : nullptr;
  if (fromConsole && !group) return;
  const bool named = args.Argc() > nameIndex;
  ListResult list;
  int listed = 0;
  for (const CScript* script = g_scriptMachine.registry.FirstScript(); script; script = script->next) {
    if (named && strcasecmp(args.Argv(nameIndex), script->name) != 0) continue;
    list.AddRow(script->name);
    list.Text("status", script->enabled ? "enabled" : "disabled");
    list.Text("type", "txt");
    DbgMsg(1, "createscriptlist, listing done: %d\n", ++listed);
    if (named) break;
  }
  ReturnList(fromConsole, group, std::move(list));
}

const CommandRow kLifecycleCommands[] = {
    {"load", Load_h, 1, "Syntax: %s [scriptname]\n", "Loads a script; without a name, lists the loaded scripts.",
     DOORS_ALL},
    {"unload", Unload_h, 2, "Syntax: %s <scriptname>\n", "Runs a script's unload block, then removes the script.",
     DOORS_ALL},
    {"_unload", RemoveAddon_h, 2, "Syntax: %s <scriptname>\n", "Tidewright internal command: removes a script.",
     DOORS_ALL},
    {"reload", Reload_h, 2, "Syntax: %s <scriptname>\n", "Unloads a script, then loads it again from its file.",
     DOORS_ALL},
    {"enable", Enable_h, 2, "Syntax: %s <scriptname>\n", "Enables a script's events, then runs its enable block.",
     DOORS_ALL},
    {"disable", Disable_h, 2, "Syntax: %s <scriptname>\n",
     "Runs a script's disable block, then keeps its events from running.", DOORS_ALL},
    {"_disable", DisableNow_h, 2, "Syntax: %s <scriptname>\n",
     "Tidewright internal command: keeps a script's events from running.", DOORS_ALL},
    {"createscriptlist", CreateScriptList_h, 1, "Syntax: %s <keygroup> [scriptname]\n",
     "Lists the loaded scripts with their state in a keygroup, or only the one script named.", DOORS_ALL},
};
const CommandTable s_lifecycleCommands(kLifecycleCommands);

}  // namespace
