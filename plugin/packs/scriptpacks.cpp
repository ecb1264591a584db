// The script pack registry: tidewright_register and tidewright_unregister, the list (tw_scriptpacklist),
// and the two questions the event intake asks for every event, whether a pack answers it and which pack
// files to run. A pack's file for an event is cfg/<subdirectory>/<pack>/<event>.cfg.
#include "packs/scriptpacks.h"

#include <cstdio>
#include <cstdlib>

#include "KeyValues.h"
#include "eiface.h"
#include "events/plugin_events.h"
#include "filesystem.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "script/machine.h"
#include "vstdlib.h"
#include "world/players.h"

namespace {

constexpr const char* kRule = "------------------------------------------\n";

// "ScriptPacks": one value per pack, 1 on and 0 off. Null until the first registration.
KeyValues* s_packs = nullptr;

// A pack by its whole name (ignoring case, as key names do). The name is one key even when it holds '/',
// so a pack in a nested folder stays one value of the tree.
KeyValues* FindOrAddPack(const char* name) {
  KeyValues* pack = s_packs->FindKey(KeyValuesSystem()->GetSymbolForString(name));
  return pack ? pack : s_packs->CreateKey(name);
}

int PackState(KeyValues* pack) { return pack->GetInt(nullptr, 0); }

// Names that don't fit a path or command are reported, and the file counts as absent.
void ReportTooLong(KeyValues* pack, const char* event) {
  DbgMsg(0, "[Tidewright] The file name of script pack %s for event %s is too long.\n", pack->GetName(), event);
}

// cfg/<subdirectory>/<pack>/<event>.cfg
bool PackFile(TextBuf& path, KeyValues* pack, const char* event) {
  bool fits = path.Append("cfg/") && path.Append(tidewright_subdirectory.GetString()) && path.Append('/') &&
              path.Append(pack->GetName()) && path.Append('/') && path.Append(event) && path.Append(".cfg");
  if (!fits) ReportTooLong(pack, event);
  return fits;
}

// Where the pack list goes: the console for userid 0, else the console of the player with that userid,
// line by line through echo. A userid without a player gets nothing.
class PackListOutput {
public:
  explicit PackListOutput(int userid) : m_toClient(userid >= 1), m_client(m_toClient ? LookupEdictByUserid(userid) : nullptr) {}
  void Header() {
    if (!m_toClient) DbgMsg(0, "\nTidewright Script packs:\n%s", kRule);
    Send("echo Tidewright Script packs:");
    Send(kClientRule);
  }
  void Pack(int number, bool on, const char* name) {
    const char* state = on ? "[on] " : "[off]";
    if (!m_toClient) {
      DbgMsg(0, "%02d:   %s   \"%s\"\n", number, state, name);
      return;
    }
    char line[TEXT_BUFFER_SIZE];
    snprintf(line, sizeof line, "echo %02d:   %s   \"%s\"", number, state, name);
    Send(line);
  }
  void Footer() {
    if (!m_toClient) DbgMsg(0, "%s", kRule);
    Send(kClientRule);
  }

private:
  static constexpr const char* kClientRule = "echo ------------------------------------------";
  void Send(const char* text) {
    if (m_client) engine->ClientCommand(m_client, "%s", text);
  }
  bool m_toClient;
  edict_t* m_client;
};

bool PackAnswers(KeyValues* pack, const char* event) {
  TextBuf path;
  return PackFile(path, pack, event) && filesystem->FileExists(path.c_str());
}

// <exec> <subdirectory>/<pack>/<event>.cfg
void QueuePackFile(KeyValues* pack, const char* event) {
  TextBuf path;
  if (!PackFile(path, pack, event)) return;
  if (!filesystem->FileExists(path.c_str())) {
    DbgMsg(1, "File doesn't exist: %s\n", path.c_str());
    return;
  }
  const char* exec = tidewright_exec_cmd.GetString();
  const char* subdirectory = tidewright_subdirectory.GetString();
  TextBuf line;
  if (!line.Append(exec) || !line.Append(' ') || !line.Append(subdirectory) || !line.Append('/') ||
      !line.Append(pack->GetName()) || !line.Append('/') || !line.Append(event) || !line.Append(".cfg\n")) {
    ReportTooLong(pack, event);
    return;
  }
  DbgMsg(2, "Sending %s command for %s/%s/%s.\n", exec, subdirectory, pack->GetName(), event);
  engine->ServerCommand(line.c_str());
}

// The files of the enabled packs, in registration order.
void QueuePackFiles(const char* event) {
  DbgMsg(2, "Script pack registration scanning...\n");
  for (KeyValues* pack = s_packs->GetFirstSubKey(); pack; pack = pack->GetNextKey()) {
    const int state = PackState(pack);
    DbgMsg(2, "ExecAllRegistered found value: %s with int: %d\n", pack->GetName(), state);
    if (state > 0) {
      DbgMsg(3, "ExecAllRegistered2 found value: %s with int: %d\n", pack->GetName(), state);
      QueuePackFile(pack, event);
    } else {
      DbgMsg(3, "ExecAllRegistered3 found value: %s with int: %d\n", pack->GetName(), state);
    }
  }
}

bool EventNameMissing(const char* event, const char* lastError) {
  if (event && event[0]) return false;
  DbgMsg(0, "[Tidewright] Error, event string nonexistent.\n");
  SetLastErrorText("%s", lastError);
  return true;
}

// ---- the console commands ----

// Each pack gets a server variable <pack>_dir with its folder relative to cfg, for its own files to use.
bool SetPackDirectoryVar(const char* name) {
  TextBuf line;
  if (!line.Append("setinfo ") || !line.Append(name) || !line.Append("_dir \"") ||
      !line.Append(tidewright_subdirectory.GetString()) || !line.Append('/') || !line.Append(name) ||
      !line.Append("/\"\n")) {
    DbgMsg(0, "[Tidewright] Script pack name too long: %s\n", name);
    SetLastErrorText("Resulting string too long.");
    return false;
  }
  DbgMsg(1, "tidewright_register executing: %s\n", line.c_str());
  ImmediateExecuteCommand(line.c_str());
  return true;
}

void Register_f() {
  if (engine->Cmd_Argc() < 2) {
    ListScriptPacks(0);
    return;
  }
  const char* name = engine->Cmd_Argv(1);
  if (!SetPackDirectoryVar(name)) return;
  if (!s_packs) s_packs = new KeyValues("ScriptPacks");
  FindOrAddPack(name)->SetInt(nullptr, 1);
  DbgMsg(0, "[Tidewright] Registered script pack: %s\n", engine->Cmd_Args());
  FirePluginEvent("tw_scriptpack_register", [&](IGameEvent* event) { event->SetString("scriptpack", name); });
}

// The pack is named by the whole argument text. It hears its own unregister event before it goes off.
void Unregister_f() {
  if (engine->Cmd_Argc() < 2) {
    ListScriptPacks(0);
    return;
  }
  if (!s_packs) {
    DbgMsg(0,
           "[Tidewright] Internal Error: Couldn't unregister-- registration system is unavailable until you load "
           "your first script pack with tidewright_register.\n");
    SetLastErrorText("Internal error: registration system is unavailable.");
    return;
  }
  const char* name = engine->Cmd_Args();
  FirePluginEvent("tw_scriptpack_unregister", [&](IGameEvent* event) { event->SetString("scriptpack", name); });
  FindOrAddPack(name)->SetInt(nullptr, 0);
  DbgMsg(0, "[Tidewright] Unregistered script pack: %s\n", name);
}

void ScriptPackList_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ListScriptPacks(args.Argc() > 1 ? atoi(args.Argv(1)) : 0);
}

const PlainCommandRow kPackConsoleCommands[] = {
    {"tidewright_register", Register_f,
     "Syntax : tidewright_register [subdirectory]\n  Registers a script pack subdirectory or, with no parameters, "
     "lists all registered script packs.\n"},
    {"tidewright_unregister", Unregister_f,
     "Syntax : tidewright_unregister [subdirectory]\n  Unregisters/disables a script pack subdirectory, or, with no "
     "parameters, lists all registered script packs.\n"},
};
const CommandTable s_packConsoleCommands(kPackConsoleCommands);

const CommandRow kPackCommands[] = {
    {"scriptpacklist", ScriptPackList_h, 1, "Syntax: %s [userid]\n",
     "Lists the registered script packs with their state.", DOORS_ALL},
};
const CommandTable s_packCommands(kPackCommands);

}  // namespace

bool RegisteredScriptExists(const char* event) {
  if (EventNameMissing(event, "Internal Error")) return false;
  if (!s_packs) {
    DbgMsg(6, "[Tidewright] Script Packs: No registration system available.\n");
    return false;
  }
  DbgMsg(2, "Script pack registration scanning...\n");
  for (KeyValues* pack = s_packs->GetFirstSubKey(); pack; pack = pack->GetNextKey()) {
    DbgMsg(3, "RegisteredScriptExists found value: %s with int: %d\n", pack->GetName(), PackState(pack));
    if (PackState(pack) > 0 && PackAnswers(pack, event)) return true;
  }
  return false;
}

void ExecAllRegistered(const char* event) {
  if (EventNameMissing(event, "Internal error")) return;
  if (s_packs) QueuePackFiles(event);
  DbgMsg(2, "Checking all scripts...\n");
  BeginAllScriptEvents(event);
}

// The pseudo event "server" has no event of its own, so its blocks see whatever event is current.
void Packs_OnLevelInit() {
  DbgMsg(1, "[Tidewright] Executing all registered server.cfgs.\n");
  ExecAllRegistered("server");
}

void ListScriptPacks(int userid) {
  PackListOutput out(userid);
  out.Header();
  if (!s_packs) {
    DbgMsg(1,
           "[Tidewright] Error: No registration system available because you've never loaded a script pack. "
           "(Script pack subsystem is deactivated until you register the first script pack with "
           "tidewright_register.)\n");
  } else {
    DbgMsg(2, "Script pack registration scanning...\n");
    int number = 0;
    for (KeyValues* pack = s_packs->GetFirstSubKey(); pack; pack = pack->GetNextKey(), ++number) {
      DbgMsg(2, "RegisteredScriptExists found value: %s with int: %d\n", pack->GetName(), PackState(pack));
      out.Pack(number, PackState(pack) > 0, pack->GetName());
    }
  }
  out.Footer();
}

void DeleteScriptPackTree() {
  if (s_packs) s_packs->deleteThis();
  s_packs = nullptr;
}
