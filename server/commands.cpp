// The stand-in's built-in console commands and variables, each table the one place that names them.
// Handlers read their arguments through the engine's current command, as plugins' handlers do.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "standin.h"
#include "tier0.h"
#include "vstdlib.h"

namespace {

// Longest alias name accepted.
constexpr size_t kMaxAliasName = 64;
// Frames that one wait, sim_frames or sim_advance may ask for.
constexpr long long kMaxWaitFrames = 10000000;

const ConsoleCommand& Cmd() { return g_standIn->CurrentCommand(); }

// Arguments from `first` on, joined by single blanks.
std::string JoinArgs(int first) {
  std::string text;
  for (int i = first; i < Cmd().Argc(); ++i) {
    if (i > first) text += ' ';
    text += Cmd().Argv(i);
  }
  return text;
}

int FrameCount(long long frames) { return int(std::clamp<long long>(frames, 0, kMaxWaitFrames)); }

// ---- text and configuration files ----

void Echo_f() { Msg("%s\n", JoinArgs(1).c_str()); }

// cfg/NAME, with .cfg added when the last part of NAME has no extension. Slashes in front or doubled are
// harmless: the file system drops empty path parts.
std::string ConfigPath(const char* name) {
  std::string path = std::string("cfg/") + name;
  size_t slash = path.find_last_of("/\\");
  if (path.find('.', slash) == std::string::npos) path += ".cfg";
  return path;
}

bool ReadWholeFile(const std::string& path, std::string& text) {
  IFileSystem& files = g_standIn->Files();
  FileHandle_t f = files.Open(path.c_str(), "rb");
  if (!f) return false;
  text.resize(files.Size(f));
  text.resize(size_t(std::max(0, files.Read(text.data(), int(text.size()), f))));
  files.Close(f);
  text.resize(strlen(text.c_str()));  // a zero byte ends the text
  return true;
}

void Exec_f() {
  std::string text;
  if (!ReadWholeFile(ConfigPath(Cmd().Argv(1)), text)) {
    Msg("exec: couldn't exec %s\n", Cmd().Argv(1));
    return;
  }
  DevMsg(1, "exec: %s\n", Cmd().Argv(1));
  g_standIn->Cbuf().InsertLines(text.c_str());
}

// ---- aliases and the flow of the buffer ----

void ListAliases() {
  Msg("Current alias commands:\n");
  for (const std::string& name : g_standIn->AliasNames()) Msg("%s : %s\n", name.c_str(), g_standIn->FindAlias(name)->c_str());
}

void Alias_f() {
  if (Cmd().Argc() < 2) {
    ListAliases();
    return;
  }
  const char* name = Cmd().Argv(1);
  if (Cmd().Argc() == 2) {
    const std::string* text = g_standIn->FindAlias(name);
    if (text) Msg("%s : %s\n", name, text->c_str());
    else Msg("No alias named \"%s\"\n", name);
    return;
  }
  if (strlen(name) > kMaxAliasName) {
    Msg("alias: name longer than %zu characters; not made\n", kMaxAliasName);
    return;
  }
  if (g_standIn->Console().FindCommandBase(name)) {
    Msg("alias: \"%s\" is a command or variable; not made\n", name);
    return;
  }
  g_standIn->SetAlias(name, JoinArgs(2));
}

void Wait_f() {
  long long frames = Cmd().Argc() > 1 ? std::max(1, Q_atoi(Cmd().Argv(1))) : 1;
  g_standIn->StopRun(FrameCount(frames - 1));
}

void Quit_f() {
  g_standIn->RequestQuit();
  g_standIn->StopRun(0);
}

// ---- looking at the console ----

std::vector<ConCommandBase*> SortedChain(bool variables) {
  std::vector<ConCommandBase*> found;
  for (ConCommandBase* c = g_standIn->Console().GetCommands(); c; c = c->GetNext())
    if (c->IsCommand() != variables) found.push_back(c);
  std::sort(found.begin(), found.end(),
            [](ConCommandBase* a, ConCommandBase* b) { return strcasecmp(a->GetName(), b->GetName()) < 0; });
  return found;
}

void PrintEntry(ConCommandBase* c) {
  const char* help = c->GetHelpText();
  const char* dash = help && help[0] ? " - " : "";
  if (c->IsCommand())
    Msg("%s (command)%s%s\n", c->GetName(), dash, help ? help : "");
  else
    Msg("\"%s\" = \"%s\"%s%s\n", c->GetName(), static_cast<ConVar*>(c)->GetString(), dash, help ? help : "");
}

void Cvarlist_f() {
  const char* prefix = Cmd().Argv(1);
  int shown = 0;
  for (ConCommandBase* c : SortedChain(true)) {
    if (prefix[0] && strncasecmp(c->GetName(), prefix, strlen(prefix)) != 0) continue;
    Msg("%-32s = \"%s\"\n", c->GetName(), static_cast<ConVar*>(c)->GetString());
    ++shown;
  }
  Msg("%d convars\n", shown);
}

// Commands whose name holds a double underscore are the plugin's internal steps, not for typing.
bool IsInternal(ConCommandBase* c) { return strstr(c->GetName(), "__") != nullptr; }

void Find_f() {
  bool all = strcmp(Cmd().Argv(1), "-all") == 0;
  if (all && Cmd().Argc() < 3) {
    PrintConsoleUsage();
    return;
  }
  const char* needle = Cmd().Argv(all ? 2 : 1);
  int hidden = 0;
  for (bool variables : {false, true}) {
    for (ConCommandBase* c : SortedChain(variables)) {
      if (!Q_stristr(c->GetName(), needle) && !Q_stristr(c->GetHelpText(), needle)) continue;
      if (!all && IsInternal(c)) ++hidden;
      else PrintEntry(c);
    }
  }
  if (hidden)
    Msg("(%d internal command%s not shown; find -all %s lists them too)\n", hidden, hidden == 1 ? "" : "s", needle);
}

void HelpGuide() {
  Msg("Type a command to run it, a variable's name to see its value, or the name and a value to set it.\n"
      "  help NAME          what a command or variable is for, with a command's usage\n"
      "  find TEXT          commands and variables whose name or help holds TEXT (find -all TEXT: internal\n"
      "                     ones too)\n"
      "  cvarlist [START]   the console variables, or those whose name starts with START\n"
      "  sim_events [TEXT]  the game events that sim_event fires and scripts listen to, with their fields\n"
      "  find sim_          the commands that play the players' and the game's part (sim_connect, sim_say,\n"
      "                     sim_kill, ...)\n"
      "  quit               ends the server (Ctrl-D at the prompt does too)\n"
      "Scripts: the README's sections \"Writing scripts\" and \"For script authors\".\n");
}

void Help_f() {
  if (Cmd().Argc() < 2) {
    HelpGuide();
    return;
  }
  ConCommandBase* c = g_standIn->Console().FindCommandBase(Cmd().Argv(1));
  if (!c) {
    Msg("help: no command or variable \"%s\"; find %s looks for it in names and help texts\n", Cmd().Argv(1),
        Cmd().Argv(1));
    return;
  }
  PrintEntry(c);
  const char* usage = c->IsCommand() ? static_cast<ConCommand*>(c)->GetUsage() : nullptr;
  if (usage) Msg("%s", usage);
}

// ---- levels ----

void Map_f() {
  if (!g_standIn->Engine().IsMapValid(Cmd().Argv(1))) {
    Msg("%s: invalid map name \"%s\"\n", Cmd().Argv(0), Cmd().Argv(1));
    return;
  }
  g_standIn->RequestLevelChange(Cmd().Argv(1));
  g_standIn->StopRun(0);
}

void Status_f() {
  CStandIn& s = *g_standIn;
  ConVar* hostname = s.Console().FindVar("hostname");
  IServerWorld& world = s.World();
  int players = 0;
  for (int i = 1; i <= world.MaxClients(); ++i)
    if (world.PEntityOfEntIndex(i)) ++players;
  Msg("hostname: %s\n", hostname ? hostname->GetString() : "");
  Msg("game    : %s\n", WORLD_GAME_DESCRIPTION);
  Msg("map     : %s\n", s.LevelActive() ? s.MapName().c_str() : "(none)");
  Msg("players : %d (%d max)\n", players, world.MaxClients());
  Msg("time    : %.3f s, tick %d\n", s.Clock().Now(), s.Clock().Globals()->tickcount);
  world.PrintStatus();
}

// ---- variables ----

void Setinfo_f() {
  const char* name = Cmd().Argv(1);
  CCvar& console = g_standIn->Console();
  ConCommandBase* found = console.FindCommandBase(name);
  if (found && found->IsCommand()) {
    Msg("setinfo: \"%s\" is a command\n", name);
    return;
  }
  if (!found) {
    console.CreateVar(name, Cmd().Argv(2), FCVAR_NONE, "");
    return;
  }
  if (found->IsBitSet(FCVAR_CHEAT) && !console.CheatsAllowed()) {
    Msg("Can't use cheat variable %s unless sv_cheats is 1\n", found->GetName());
    return;
  }
  static_cast<ConVar*>(found)->SetValue(Cmd().Argv(2));
}

void Developer_Changed(ConVar* var, const char*) { SetDeveloperLevel(var->GetInt()); }

// ---- simulation ----

void SimFrames_f() {
  if (Q_atoi(Cmd().Argv(1)) < 1) {
    PrintConsoleUsage();
    return;
  }
  g_standIn->StopRun(FrameCount(Q_atoi(Cmd().Argv(1))));
}

void SimAdvance_f() {
  double seconds = atof(Cmd().Argv(1));
  if (!(seconds > 0)) {
    PrintConsoleUsage();
    return;
  }
  double frames = std::ceil(seconds * g_standIn->Clock().Tickrate());
  g_standIn->StopRun(FrameCount(frames > double(kMaxWaitFrames) ? kMaxWaitFrames : (long long)frames));
}

// The full path of a file under the mod directory, or false (with a message) when it would leave the root.
bool SimFilePath(const char* command) {
  char relative[FILES_MAX_PATH];
  if (g_standIn->Files().RootRelative(Cmd().Argv(1), relative)) return true;
  Msg("%s: the path \"%s\" is not one of the server's files\n", command, Cmd().Argv(1));
  return false;
}

// Writes a file: each argument behind the path is a line, ended by a line feed.
void SimWriteFile_f() {
  if (!SimFilePath("sim_writefile")) return;
  IFileSystem& files = g_standIn->Files();
  FileHandle_t file = files.Open(Cmd().Argv(1), "wb");
  if (file == FILESYSTEM_INVALID_HANDLE) {
    Msg("sim_writefile: can't write %s\n", Cmd().Argv(1));
    return;
  }
  for (int i = 2; i < Cmd().Argc(); ++i) {
    files.Write(Cmd().Argv(i), int(strlen(Cmd().Argv(i))), file);
    files.Write("\n", 1, file);
  }
  files.Close(file);
}

// Sets a file's modification time, in whole seconds since 1970.
void SimFileTime_f() {
  if (!SimFilePath("sim_filetime")) return;
  if (!g_standIn->Files().SetFileTime(Cmd().Argv(1), atoll(Cmd().Argv(2))))
    Msg("sim_filetime: can't set the time of %s\n", Cmd().Argv(1));
}

// Sets one value of a console-made event with the type its declaration gives the key; keys outside the
// declaration are strings.
void SetEventValue(IGameEvent* event, const EventDescriptor& d, const char* key, const char* value) {
  EventFieldType type = EventFieldType::String;
  for (const auto& [name, t] : d.fields)
    if (strcasecmp(name.c_str(), key) == 0) type = t;
  switch (type) {
    case EventFieldType::Bool: event->SetBool(key, Q_atoi(value) != 0); break;
    case EventFieldType::Byte:
    case EventFieldType::Short:
    case EventFieldType::Long: event->SetInt(key, Q_atoi(value)); break;
    case EventFieldType::Float: event->SetFloat(key, Q_atof(value)); break;
    default: event->SetString(key, value); break;
  }
}

void PrintEventValues(CGameEvent* event) {
  std::string values;
  for (KeyValues* k = event->Data().GetFirstSubKey(); k; k = k->GetNextKey())
    values += std::string(" ") + k->GetName() + "=" + event->GetString(k->GetName());
  Msg("sim_event: firing %s%s\n", event->GetName(), values.c_str());
}

// The declared events, grouped by the file that declared them, with their fields and types.
void SimEvents_f() {
  const char* needle = Cmd().Argv(1);
  std::string file;
  int shown = 0;
  for (const EventDescriptor* d : g_standIn->Events().DeclaredEvents()) {
    if (needle[0] && !Q_stristr(d->name.c_str(), needle)) continue;
    if (d->file != file) {
      file = d->file;
      Msg("Declared in %s:\n", file.c_str());
    }
    std::string fields;
    for (const auto& [name, type] : d->fields) fields += " " + name + ":" + EventFieldTypeName(type);
    Msg("  %s%s\n", d->name.c_str(), fields.c_str());
    ++shown;
  }
  Msg("%d events; sim_event NAME [KEY VALUE]... fires one, a script's \"event NAME\" section hears it\n", shown);
}

void SimEvent_f() {
  if (Cmd().Argc() % 2 != 0) {
    PrintConsoleUsage();
    return;
  }
  CGameEventManager& events = g_standIn->Events();
  EventDescriptor* d = events.FindDescriptor(Cmd().Argv(1));
  IGameEvent* event = d ? events.CreateEvent(Cmd().Argv(1), true) : nullptr;
  if (!event) {
    Msg("sim_event: no event \"%s\" is declared\n", Cmd().Argv(1));
    return;
  }
  for (int i = 2; i + 1 < Cmd().Argc(); i += 2) SetEventValue(event, *d, Cmd().Argv(i), Cmd().Argv(i + 1));
  if (GetDeveloperLevel() >= 1) PrintEventValues(static_cast<CGameEvent*>(event));
  events.FireEvent(event);
}

const ConsoleCommandDef kCommands[] = {
    {"echo", Echo_f, "Prints its arguments to the console.", 0},
    {"exec", Exec_f, "Runs a configuration file from the cfg folder.", 0, 2,
     "Usage: exec <file>: runs cfg/<file>(.cfg)\n"},
    {"alias", Alias_f, "Names a list of commands: alias <name> <commands>; without commands it shows aliases.", 0},
    {"wait", Wait_f, "Lets the rest of the command buffer wait one frame, or the number of frames given.", 0},
    {"quit", Quit_f, "Ends the level, unloads the plugin and stops the server.", 0},
    {"cvarlist", Cvarlist_f, "Lists the console variables, or those whose name starts with the text given.", 0},
    {"find", Find_f,
     "Lists commands and variables whose name or help holds the text given; internal ones too after -all.", 0, 2,
     "Usage: find [-all] <text>: lists commands and variables whose name or help holds the text\n"},
    {"help", Help_f, "Shows the value and help of a variable, or the help and usage of a command; alone, how to "
                     "find things.", 0, 0, "Usage: help [command or variable]\n"},
    {"map", Map_f, "Starts the level of the given name.", 0, 2, "Usage: map <map>\n"},
    {"changelevel", Map_f, "Changes to the level of the given name.", 0, 2, "Usage: changelevel <map>\n"},
    {"status", Status_f, "Shows the server's name, level, players and time.", 0},
    {"setinfo", Setinfo_f, "Sets a variable, making it when it is missing: setinfo <name> <value>.", 0, 3,
     "Usage: setinfo <name> <value>: sets a variable, made when missing\n"},
    {"sim_frames", SimFrames_f, "Lets the given number of frames pass before the next command.", 0, 2,
     "Usage: sim_frames <count>: lets that many frames pass before the next command\n"},
    {"sim_advance", SimAdvance_f, "Lets the given number of seconds of game time pass before the next command.", 0, 2,
     "Usage: sim_advance <seconds>: lets that much game time pass before the next command\n"},
    {"sim_events", SimEvents_f, "Lists the declared game events with their fields, or those whose name holds the "
                                "text given.", 0},
    {"sim_event", SimEvent_f, "Fires a game event: sim_event <event> [<key> <value>]...", 0, 2,
     "Usage: sim_event <event> [<key> <value>]...: fires a game event\n"},
    {"sim_writefile", SimWriteFile_f, "Writes a file under the mod directory: sim_writefile <path> [line]...", 0, 2,
     "Usage: sim_writefile <path> [line]...: writes the lines into the file under the mod directory\n"},
    {"sim_filetime", SimFileTime_f, "Sets a file's modification time: sim_filetime <path> <seconds since 1970>.", 0, 3,
     "Usage: sim_filetime <path> <seconds>: sets the modification time of the file under the mod directory\n"},
};

const ConsoleVarDef kVars[] = {
    {"sv_cheats", "0", FCVAR_NOTIFY, "Allows cheat commands and variables when 1.", nullptr},
    {"hostname", "Tidewright stand-in", 0, "The server's name.", nullptr},
    {"rcon_password", "", FCVAR_DONTRECORD, "The remote console password.", nullptr},
    {"sv_gravity", "600", FCVAR_NOTIFY | FCVAR_REPLICATED, "World gravity.", nullptr},
    {"developer", "0", 0, "Shows developer messages up to this level.", Developer_Changed},
};

}  // namespace

void RegisterServerConsole(CCvar& console) {
  console.AddVars(kVars, sizeof kVars / sizeof kVars[0]);
  console.AddCommands(kCommands, sizeof kCommands / sizeof kCommands[0]);
}
