// The stand-in server's life: start-up order, frames, settling a line, level changes, shutdown, and the
// two factories through which the plugin finds the engine's and the game's interfaces.
#include "standin.h"

#include <algorithm>
#include <cstring>

#include "tier0.h"

CStandIn* g_standIn = nullptr;
volatile std::sig_atomic_t CStandIn::s_interruptRequested = 0;

namespace {

// Engine event declarations, read at start-up as the engine reads its own.
constexpr const char* kEngineEventFiles[] = {"../hl2/resource/gameevents.res", "../hl2/resource/serverevents.res",
                                             "resource/modevents.res"};

IServerPluginCallbacks* CurrentPlugin() { return g_standIn ? g_standIn->Plugin() : nullptr; }

// Clients hear of changes to FCVAR_NOTIFY variables through the event server_cvar.
void AnnounceVarChange(ConVar* var) {
  if (!g_standIn) return;
  CGameEventManager& events = g_standIn->Events();
  if (IGameEvent* e = events.CreateEvent("server_cvar", false)) {
    e->SetString("cvarname", var->GetName());
    e->SetString("cvarvalue", var->GetString());
    events.FireEvent(e);
  }
}

}  // namespace

CStandIn::CStandIn(const StandInConfig& config)
    : m_config(config),
      m_cbuf(config.cbufCapacity),
      m_clock(config.tickrate),
      m_files(config.gameDir),
      m_events(&m_files),
      m_engine(*this),
      m_world(CreateServerWorld()),
      m_commands(STANDIN_MAX_EXECUTE_DEPTH + 1),
      m_commandTexts(STANDIN_MAX_EXECUTE_DEPTH + 1) {
  m_previous = g_standIn;
  g_standIn = this;
  m_config.maxPlayers = std::clamp(m_config.maxPlayers, STANDIN_MIN_MAXPLAYERS, STANDIN_MAX_MAXPLAYERS);
  SetDeveloperLevel(0);
  ConVar_SetCvarInterface(&m_console);
  m_console.SetNotifyHook(&AnnounceVarChange);
  m_console.SetCurrentCommand(&m_current);
  RegisterServerConsole(m_console);
  LoadEngineEvents();
  m_world->Init(WorldSetup{m_clock.Globals(), &m_engine, &m_console, &m_events, &m_files, !config.listen,
                           &CurrentPlugin});
}

CStandIn::~CStandIn() {
  Shutdown();
  if (g_standIn != this) return;
  g_standIn = m_previous;
  ConVar_SetCvarInterface(m_previous ? &m_previous->m_console : nullptr);
  ConVar* developer = m_previous ? m_previous->m_console.FindVar("developer") : nullptr;
  SetDeveloperLevel(developer ? developer->GetInt() : 0);
}

void CStandIn::LoadEngineEvents() {
  for (const char* file : kEngineEventFiles) m_events.LoadEventsFromFile(file);
}

// ---- start-up and shutdown ----

void CStandIn::Start(CreateInterfaceFn pluginFactory, const char* pluginName) {
  LoadPlugin(pluginFactory, pluginName);
  Settle();
  RunStep("exec autoexec.cfg\n");
  for (const std::string& line : m_config.startupCommands) {
    if (m_quit) return;
    m_cbuf.AddText((line + "\n").c_str());
  }
  Settle();
  if (m_quit) return;
  StartLevel(m_config.map);
  Settle();
  RunStep("exec server.cfg\n");
}

void CStandIn::RunStep(const char* text) {
  if (m_quit) return;
  m_cbuf.AddText(text);
  Settle();
}

void CStandIn::LoadPlugin(CreateInterfaceFn factory, const char* name) {
  if (!factory) return;
  const char* label = name && name[0] ? name : "plugin";
  auto* plugin = static_cast<IServerPluginCallbacks*>(factory(INTERFACEVERSION_ISERVERPLUGINCALLBACKS, nullptr));
  if (!plugin) {
    Warning("Plugin %s has no interface %s; running without it\n", label, INTERFACEVERSION_ISERVERPLUGINCALLBACKS);
    return;
  }
  if (!plugin->Load(&CStandIn::EngineFactory, &CStandIn::GameFactory)) {
    Warning("Plugin %s failed to load; running without it\n", label);
    return;
  }
  m_plugin = plugin;
  // Until a client types something, every command comes from the server itself.
  m_plugin->SetCommandClient(-1);
}

void CStandIn::Shutdown() {
  if (m_shutDown) return;
  m_shutDown = true;
  if (m_levelActive) {
    if (IGameEvent* e = m_events.CreateEvent("server_shutdown", false)) {
      e->SetString("reason", "quit");
      m_events.FireEvent(e);
    }
    EndLevel();
  }
  if (m_plugin) m_plugin->Unload();
  m_plugin = nullptr;
}

void CStandIn::RunLine(const char* line) {
  if (m_quit || !line) return;
  s_interruptRequested = 0;  // a Ctrl-C that came after the last run's end was for no run
  m_lineText.assign(line).push_back('\n');
  bool queued = m_busy ? m_cbuf.InsertText(m_lineText.c_str()) : m_cbuf.AddText(m_lineText.c_str());
  if (!queued) Warning("The command buffer is full; not run: %s\n", line);
  Settle();
}

void CStandIn::Interrupt() {
  s_interruptRequested = 0;
  size_t dropped = m_cbuf.PendingBytes();
  m_cbuf.Clear();
  m_skipFrames = 0;
  m_stopRun = true;
  m_busy = false;
  Warning("Interrupted: the command buffer is emptied (%zu bytes dropped)\n", dropped);
}

// ---- levels ----

void CStandIn::StartLevel(const std::string& map) {
  m_mapName = map;
  m_world->LevelStart(m_mapName.c_str(), m_config.maxPlayers);
  m_clock.StartLevel(m_mapName.c_str(), m_world->MaxClients(), m_world->MaxEntities());
  m_levelActive = true;
  if (m_plugin) {
    m_plugin->LevelInit(m_mapName.c_str());
    m_plugin->ServerActivate(m_world->EdictList(), m_world->MaxEntities(), m_world->MaxClients());
  }
  if (IGameEvent* e = m_events.CreateEvent("server_spawn", false)) {
    ConVar* hostname = m_console.FindVar("hostname");
    e->SetString("hostname", hostname ? hostname->GetString() : "");
    e->SetString("address", "127.0.0.1");
    e->SetInt("port", 27015);
    e->SetString("game", m_files.ModDir().c_str());
    e->SetString("mapname", m_mapName.c_str());
    e->SetInt("maxplayers", m_world->MaxClients());
    e->SetString("os", "Linux");
    e->SetBool("dedicated", !m_config.listen);
    e->SetBool("password", false);
    m_events.FireEvent(e);
  }
  Msg("Level \"%s\" started\n", m_mapName.c_str());
}

void CStandIn::EndLevel() {
  if (!m_levelActive) return;
  if (m_plugin) m_plugin->LevelShutdown();
  m_world->LevelEnd();
  m_levelActive = false;
}

// ---- frames ----

void CStandIn::Frame() {
  m_frameCommands = 0;
  if (m_skipFrames > 0) {
    --m_skipFrames;
  } else {
    Execute();
  }
  if (m_levelActive) {
    if (m_plugin) m_plugin->GameFrame(true);
    m_world->Frame();
  }
  m_clock.AdvanceFrame();
  if (!m_pendingMap.empty() && !m_quit) {
    std::string map;
    map.swap(m_pendingMap);
    EndLevel();
    StartLevel(map);
  }
}

void CStandIn::Settle() {
  int busyFrames = 0;  // frames that ran the buffer; frames asked for by wait and sim_* don't count
  m_settleCommands = 0;
  while (!m_quit && (!m_cbuf.IsEmpty() || m_skipFrames > 0 || m_world->Busy())) {
    if (s_interruptRequested) {
      Interrupt();
      return;
    }
    if (busyFrames >= STANDIN_MAX_SETTLE_FRAMES || m_settleCommands >= STANDIN_MAX_SETTLE_COMMANDS) {
      ReportBusy(busyFrames);
      return;
    }
    if (m_skipFrames == 0) ++busyFrames;
    Frame();
  }
  m_busy = false;
}

void CStandIn::ReportBusy(int frames) {
  m_busy = true;
  Warning("Still busy after %d frames and %lld commands; going on with %zu bytes queued, next: %s\n", frames,
          m_settleCommands, m_cbuf.PendingBytes(), m_cbuf.PeekCommand(STANDIN_BUSY_PREVIEW).c_str());
  Warning("The next console line runs before them: tw_unload or tw_disable stops a runaway script, "
          "Ctrl-C at the prompt empties the buffer.\n");
}

void CStandIn::StopRun(int frames) {
  m_stopRun = true;
  m_skipFrames = std::max(m_skipFrames, frames);
}

// ---- running commands ----

void CStandIn::Execute() {
  if (m_executeDepth >= STANDIN_MAX_EXECUTE_DEPTH) {
    Warning("ServerExecute nested %d deep; ignored\n", m_executeDepth);
    return;
  }
  if (m_executeDepth == 0) {
    m_stopRun = false;
    m_aliasExpansions = 0;
  }
  const ConsoleCommand* outer = m_current;
  ++m_executeDepth;
  ConsoleCommand& cmd = CommandSlot();
  std::string& text = m_commandTexts[size_t(m_executeDepth)];
  while (!m_stopRun && !m_quit && !s_interruptRequested && m_frameCommands < STANDIN_MAX_COMMANDS_PER_FRAME &&
         m_cbuf.NextCommand(text)) {
    ++m_frameCommands;
    ++m_settleCommands;
    if (!m_cbuf.LastFromAlias()) m_aliasExpansions = 0;
    cmd.Tokenize(text.c_str());
    m_current = &cmd;
    Dispatch(cmd);
  }
  --m_executeDepth;
  m_current = outer;
}

ConsoleCommand& CStandIn::CommandSlot() {
  std::unique_ptr<ConsoleCommand>& slot = m_commands[size_t(m_executeDepth)];
  if (!slot) slot = std::make_unique<ConsoleCommand>();
  return *slot;
}

namespace {

void PrintVar(ConVar* var) {
  Msg("\"%s\" = \"%s\"\n", var->GetName(), var->GetString());
  const char* help = var->GetHelpText();
  if (help && help[0]) Msg(" - %s\n", help);
}

}  // namespace

void CStandIn::Dispatch(const ConsoleCommand& cmd) {
  if (cmd.Argc() == 0) return;
  const char* name = cmd.Argv(0);
  if (const std::string* alias = FindAlias(name)) {
    ExpandAlias(name, *alias);
    return;
  }
  ConCommandBase* base = m_console.FindCommandBase(name);
  if (!base) {
    m_console.PrintUnknown(name);
    return;
  }
  if (CheatRefused(base, cmd.Argc())) return;
  m_world->SetCommandClient(-1);
  if (base->IsCommand()) {
    static_cast<ConCommand*>(base)->Dispatch();
  } else if (cmd.Argc() == 1) {
    PrintVar(static_cast<ConVar*>(base));
  } else {
    static_cast<ConVar*>(base)->SetValue(cmd.Argv(1));
  }
}

bool CStandIn::CheatRefused(ConCommandBase* base, int argc) {
  if (!base->IsBitSet(FCVAR_CHEAT) || m_console.CheatsAllowed()) return false;
  if (!base->IsCommand() && argc <= 1) return false;
  Msg("Can't use cheat %s %s unless sv_cheats is 1\n", base->IsCommand() ? "command" : "variable", base->GetName());
  return true;
}

// ---- client commands ----

void CStandIn::RunClientCommand(edict_t* edict, const char* text) {
  int index = m_world->IndexOfEdict(edict);
  if (index < 1 || index > m_world->MaxClients() || !text) return;
  if (m_executeDepth >= STANDIN_MAX_EXECUTE_DEPTH) {
    Warning("Client command nested %d deep; ignored\n", m_executeDepth);
    return;
  }
  const ConsoleCommand* outer = m_current;
  ++m_executeDepth;
  ConsoleCommand& cmd = CommandSlot();
  cmd.Tokenize(text);
  m_current = &cmd;
  if (cmd.Argc() > 0) DispatchClientCommand(edict, index - 1);
  // Lines that follow come from the server again, and the plugin hears so.
  if (m_plugin && cmd.Argc() > 0) m_plugin->SetCommandClient(-1);
  --m_executeDepth;
  m_current = outer;
}

// Clients reach only the game's commands (FCVAR_GAMEDLL); the server's own commands and variables are
// not theirs to run, so those names go to the game like any command it doesn't know.
void CStandIn::DispatchClientCommand(edict_t* edict, int client) {
  if (m_plugin) {
    m_plugin->SetCommandClient(client);
    if (m_plugin->ClientCommand(edict) != PLUGIN_CONTINUE) return;
  }
  ConCommandBase* base = m_console.FindCommandBase(m_current->Argv(0));
  if (!base || !base->IsCommand() || !base->IsBitSet(FCVAR_GAMEDLL)) {
    m_world->GameClientCommand(edict);
    return;
  }
  if (CheatRefused(base, m_current->Argc())) return;
  m_world->SetCommandClient(client);
  static_cast<ConCommand*>(base)->Dispatch();
  m_world->SetCommandClient(-1);
}

// ---- aliases ----

void CStandIn::ExpandAlias(const char* name, const std::string& text) {
  if (++m_aliasExpansions > STANDIN_MAX_ALIAS_EXPANSIONS) {
    m_cbuf.DropAliasText();
    m_aliasExpansions = 0;
    Warning("alias \"%s\": more than %d alias expansions in one command; stopped\n", name,
            STANDIN_MAX_ALIAS_EXPANSIONS);
    return;
  }
  m_cbuf.InsertAliasText(text.c_str());
}

const std::string* CStandIn::FindAlias(std::string_view name) const {
  if (m_aliases.empty()) return nullptr;
  auto it = m_aliases.find(name);
  return it == m_aliases.end() ? nullptr : &it->second;
}

void CStandIn::SetAlias(const char* name, std::string text) { m_aliases.insert_or_assign(name, std::move(text)); }

std::vector<std::string> CStandIn::AliasNames() const {
  std::vector<std::string> names;
  for (const auto& [name, text] : m_aliases) names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

// ---- factories ----

bool CStandIn::Withheld(const char* name) const {
  return std::find(m_config.without.begin(), m_config.without.end(), name) != m_config.without.end();
}

void* CStandIn::EngineFactory(const char* name, int* returnCode) {
  void* found = nullptr;
  CStandIn* s = g_standIn;
  if (s && name && !s->Withheld(name)) {
    if (strcmp(name, INTERFACEVERSION_VENGINESERVER) == 0) found = static_cast<IVEngineServer*>(&s->m_engine);
    else if (strcmp(name, INTERFACEVERSION_GAMEEVENTSMANAGER2) == 0) found = static_cast<IGameEventManager2*>(&s->m_events);
    else if (strcmp(name, FILESYSTEM_INTERFACE_VERSION) == 0) found = static_cast<IFileSystem*>(&s->m_files);
    else if (strcmp(name, VENGINE_CVAR_INTERFACE_VERSION) == 0) found = static_cast<ICvar*>(&s->m_console);
    else found = s->m_world->FindEngineInterface(name);
  }
  if (returnCode) *returnCode = found ? IFACE_OK : IFACE_FAILED;
  return found;
}

void* CStandIn::GameFactory(const char* name, int* returnCode) {
  CStandIn* s = g_standIn;
  void* found = s && name && !s->Withheld(name) ? s->m_world->FindGameInterface(name) : nullptr;
  if (returnCode) *returnCode = found ? IFACE_OK : IFACE_FAILED;
  return found;
}
