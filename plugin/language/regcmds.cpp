// Registered commands: the tables of words bound to blocks, regcmd/regsaycmd/regclientcmd and their
// removal, tw__cmdproxy and tw__clientcmdproxy, the say path that CSayWrap runs in place of say/say_team,
// and the client commands that reach the plugin's ClientCommand. Running the blocks is the execution
// engine's (DoBlock).
#include "language/regcmds.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <strings.h>

#include "edict.h"
#include "eiface.h"
#include "igameevents.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "host/server_state.h"
#include "host/version.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "language/varcommands.h"
#include "language/wrappers.h"
#include "python/hooks.h"
#include "script/machine.h"

namespace {

using CommandTableByName = NameTable<std::string>;

// The tables live for the whole process, shutdown included, and survive every map change.
CommandTableByName& ConsoleCommands() {
  static CommandTableByName& table = *new CommandTableByName(true);
  return table;
}

CommandTableByName& SayCommands() {
  static CommandTableByName& table = *new CommandTableByName(true);
  return table;
}

CommandTableByName& ClientCommands() {
  static CommandTableByName& table = *new CommandTableByName(true);
  return table;
}

const char* FindIn(CommandTableByName& table, const char* name) {
  const std::string* block = table.FindValue(name);
  return block ? block->c_str() : nullptr;
}

void LowerCase(char* text) {
  for (char* c = text; *c; ++c) *c = char(tolower(static_cast<unsigned char>(*c)));
}

// "<name> <args>", or the name alone when there are no arguments: a block's arguments, so that getargv 0
// is the command's name. False, after a report, when the line doesn't fit.
bool BuildCommandLine(TextBuf& line, const char* name, const char* args) {
  line.Append(name);
  if (args && *args) {
    line.Append(' ');
    line.Append(args);
  }
  if (!line.Overflowed()) return true;
  DbgMsg(0, "CmdProxy: The command line of %s is too long.\n", name);
  SetLastErrorText("Resulting string too long.");
  return false;
}

// Starts a registered word's block with `line` as its arguments. The name is copied first: DoBlock may
// run Python, which may change the tables.
void StartRegisteredBlock(const char* block, const char* line) {
  char name[TEXT_BUFFER_SIZE];
  snprintf(name, sizeof name, "%s", block);
  DoBlock(name, line);
}

// The same for a client's command or chat line, whose userid becomes the command userid.
void RunClientBlock(const char* block, const char* line, int userid) {
  g_commandUserid = userid;
  StartRegisteredBlock(block, line);
}

// ---- the proxies ----

void RunProxy(CommandTableByName& table) {
  const char* name = engine->Cmd_Argv(0);
  const char* args = engine->Cmd_Args();
  DbgMsg(1, "CmdProxy: \"%s %s\"\n", name, args);
  const char* block = FindIn(table, name);
  if (!block) {
    DbgMsg(0, "CmdProxy: Internal Error. No such command registered: %s\n", name);
    SetLastErrorText("Internal Error");
    return;
  }
  TextBuf line;
  if (BuildCommandLine(line, name, args)) StartRegisteredBlock(block, line.c_str());
}

// The callback of tw__cmdproxy and of every command that regcmd makes.
void CmdProxy_f() { RunProxy(ConsoleCommands()); }
void ClientCmdProxy_f() { RunProxy(ClientCommands()); }

// ---- filling and emptying the tables ----

// A console command that regcmd made: it owns its name and help text, registers with the engine at once,
// and runs the proxy. It stays until the process ends.
class CRegisteredCommand : public ConCommand {
public:
  CRegisteredCommand(const char* name, const char* help) : m_name(name), m_help(help) {
    Create(m_name.c_str(), CmdProxy_f, m_help.c_str(), 0);
  }

private:
  std::string m_name;
  std::string m_help;
};

// An entry stays when its name is there already; the new block is dropped without a message.
void AddEntry(CommandTableByName& table, const char* name, const char* block) {
  try {
    table.Insert(name, block);
  } catch (const std::bad_alloc&) {
    DbgMsg(0, "tw_xregcmd: Out of memory.\n");
  }
}

void RegCmd_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const char* name = args.Argv(1);
  if (FindConsoleCommand(name)) {
    DbgMsg(0, "tw_xregcmd: ERROR. Command %s already exists.\n", name);
    return;
  }
  if (!*name) {
    DbgMsg(0, "tw_xregcmd: ERROR. A command needs a name.\n");
    SetLastErrorText("Invalid parameter");
    return;
  }
  try {
    KeepCommand(new CRegisteredCommand(name, args.Argv(3)));
  } catch (const std::bad_alloc&) {
    DbgMsg(0, "tw_xregcmd: Out of memory.\n");
    return;
  }
  AddEntry(ConsoleCommands(), name, args.Argv(2));
}

void RegSayCmd_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  AddEntry(SayCommands(), args.Argv(1), args.Argv(2));
}

void RegClientCmd_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  AddEntry(ClientCommands(), args.Argv(1), args.Argv(2));
}

void RemoveEntry(CommandTableByName& table, const char* name, const char* missingFormat) {
  CommandTableByName::Handle entry = table.Find(name);
  if (entry == CommandTableByName::kNotFound)
    DbgMsg(0, missingFormat, name);
  else
    table.Remove(entry);
}

void UnregSayCmd_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  RemoveEntry(SayCommands(), args.Argv(1), "unregsaycmd: Did not find command: %s\n");
}

void UnregClientCmd_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  RemoveEntry(ClientCommands(), args.Argv(1), "unregclientcmd: Did not find command: %s\n");
}

const CommandRow kRegisteredCommandRows[] = {
    {"regcmd", RegCmd_h, 3, "Syntax: %s <command-name> <block-name> <description>\n",
     "Registers a console command that runs a block with the command's line as its arguments.", DOORS_ALL},
    {"regsaycmd", RegSayCmd_h, 3, "Syntax: %s <command-name> <block-name> <description>\n",
     "Registers a word at the start of a chat line that runs a block with the line as its arguments.", DOORS_ALL},
    {"regclientcmd", RegClientCmd_h, 3, "Syntax: %s <command-name> <block-name> <description>\n",
     "Registers a client console command that runs a block with the command's line as its arguments.", DOORS_ALL},
    {"unregsaycmd", UnregSayCmd_h, 2, "Syntax: %s <command-name>\n", "Removes a registered say command.",
     DOORS_ALL},
    {"unregclientcmd", UnregClientCmd_h, 2, "Syntax: %s <command-name>\n",
     "Removes a registered client command.", DOORS_ALL},
};
const CommandTable s_registeredCommands(kRegisteredCommandRows);

const PlainCommandRow kProxyRows[] = {
    {"tw__cmdproxy", CmdProxy_f, "Internal TW Command"},
    {"tw__clientcmdproxy", ClientCmdProxy_f, "Internal TW Command"},
};
const CommandTable s_proxies(kProxyRows);

// ---- the say path ----

// The speaker of the running say: the edict after the command client (the world for the server console).
edict_t* Speaker() { return engine->PEntityOfEntIndex(g_commandIndex + 1); }

bool FireChatEvent(int userid, bool teamOnly, const char* text) {
  IGameEvent* event = gameeventmanager ? gameeventmanager->CreateEvent("tw_player_chat", false) : nullptr;
  if (!event) return false;
  event->SetInt("userid", userid);
  event->SetBool("teamonly", teamOnly);
  event->SetString("text", text);
  gameeventmanager->FireEvent(event, false);
  return true;
}

// A player's line: its first word, lowered, may name a say command, which then takes the whole line.
bool RunSayCommand(char* line, int userid) {
  size_t wordLength = strcspn(line, " ");
  char saved = line[wordLength];
  line[wordLength] = '\0';
  LowerCase(line);
  const char* block = FindSayCommand(line);
  line[wordLength] = saved;
  if (!block) return false;
  RunClientBlock(block, line, userid);
  return true;
}

// The chat event and the say commands; true when a say command ate the line. A player's line runs a say
// command only once its event fired: a line whose event nobody can hear runs none.
bool HandleChatLine(const char* text, bool teamOnly, int userid) {
  if (userid <= 0) {
    FireChatEvent(userid, teamOnly, text);
    return false;
  }
  char line[TEXT_BUFFER_SIZE];
  snprintf(line, sizeof line, "%s", text);
  CutOuterQuotes(line);
  return FireChatEvent(userid, teamOnly, line) && RunSayCommand(line, userid);
}

// ---- client commands ----

void FireClientCommandEvent(int userid, const char* cmd) {
  IGameEvent* event = gameeventmanager ? gameeventmanager->CreateEvent("tw_client_command", false) : nullptr;
  if (!event) {
    DbgMsg(0, "Not fired! =(\n");
    return;
  }
  event->SetInt("userid", userid);
  event->SetString("command", cmd);
  event->SetString("commandstring", engine->Cmd_Args());
  gameeventmanager->FireEvent(event, false);
}

bool WantsClientCommandEvent(const char* cmd) {
  if (cmd[0] && strchr(tidewright_cmdprefixes.GetString(), cmd[0])) {
    DbgMsg(2, "Client command received, time to fire tw_client_command for: %s\n", cmd);
    return true;
  }
  return strcasecmp(cmd, "menuselect") == 0;
}

// A registered client command takes the command from the engine and the game.
bool RunRegisteredClientCommand(const char* cmd, int userid) {
  char lowered[TEXT_BUFFER_SIZE];
  snprintf(lowered, sizeof lowered, "%s", cmd);
  LowerCase(lowered);
  const char* block = FindClientCommand(lowered);
  if (!block) return false;
  TextBuf line;
  if (BuildCommandLine(line, cmd, engine->Cmd_Args())) RunClientBlock(block, line.c_str(), userid);
  return true;
}

}  // namespace

const char* FindConsoleCommand(const char* name) { return FindIn(ConsoleCommands(), name); }
const char* FindSayCommand(const char* name) { return FindIn(SayCommands(), name); }
const char* FindClientCommand(const char* name) { return FindIn(ClientCommands(), name); }

void CutOuterQuotes(char* text) {
  size_t n = strlen(text);
  if (n < 2 || text[0] != '"' || text[n - 1] != '"') return;
  int inner = 0;
  for (size_t i = 1; i + 1 < n; ++i) inner += text[i] == '"';
  if (inner > 1) return;
  memmove(text, text + 1, n - 2);
  text[n - 2] = '\0';
}

// Runs in place of say and say_team. Python's filter sees the line first, and a line it ate goes no further.
// The event fires before a say command runs, and a line that a say command took still fires it.
void CSayWrap::Dispatch() {
  const char* text = engine->Cmd_Args();
  const bool teamOnly = strcasecmp(engine->Cmd_Argv(0), "say_team") == 0;
  edict_t* speaker = Speaker();
  const int userid = speaker ? engine->GetPlayerUserId(speaker) : -1;
  const bool eaten = !Python_SayFilter(userid, text, teamOnly) ||
                     (speaker && engine->Cmd_Argc() > 1 && HandleChatLine(text, teamOnly, userid));
  if (CheatRefused()) return;
  if (eaten)
    DbgMsg(3, "[Tidewright] say command eaten.");
  else
    RunWrapped();
}

PLUGIN_RESULT RegCmds_OnClientCommand(edict_t* edict) {
  if (!edict || edict->IsFree() || !engine) return PLUGIN_CONTINUE;
  const char* cmd = engine->Cmd_Argv(0);
  const int userid = engine->GetPlayerUserId(edict);
  if (strcasecmp(cmd, "tidewright_version") == 0 || strcasecmp(cmd, "tw_version") == 0) {
    char reply[TEXT_BUFFER_SIZE];
    snprintf(reply, sizeof reply, "tw_xtell %d %s\n", userid, kPluginDescription);
    engine->ServerCommand(reply);
  }
  if (g_cached.brannock > 0 && !Python_ClientCommand(userid)) return PLUGIN_STOP;
  if (WantsClientCommandEvent(cmd)) FireClientCommandEvent(userid, cmd);
  if (g_cached.brannock > 0 && RunRegisteredClientCommand(cmd, userid)) return PLUGIN_STOP;
  return PLUGIN_CONTINUE;
}
