// The stand-in server: one object that owns the engine's parts (console, command buffer, clock, files,
// game events, the world) and drives a plugin through start-up, frames, level changes and shutdown.
// Console command handlers reach it through g_standIn, the most recently made stand-in; when it goes, the
// one made before it is current again.
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "cbuf.h"
#include "clock.h"
#include "cmdargs.h"
#include "console.h"
#include "engine.h"
#include "files.h"
#include "gameevents.h"
#include "iserverplugin.h"
#include "world.h"

// Nesting of ServerExecute inside running commands; a deeper call returns at once with a warning.
constexpr int STANDIN_MAX_EXECUTE_DEPTH = 64;
// Commands one frame runs at most; the rest waits for the next frame.
constexpr long long STANDIN_MAX_COMMANDS_PER_FRAME = 1000000;
// Bounds of running one input line (or one start-up step) to its end.
constexpr int STANDIN_MAX_SETTLE_FRAMES = 10000;
constexpr long long STANDIN_MAX_SETTLE_COMMANDS = 8000000;
// Alias expansions within one command: an alias expanded while commands of alias text run counts on;
// any other command and every frame start over.
constexpr int STANDIN_MAX_ALIAS_EXPANSIONS = 1000;
// How much of the command at the head of the buffer the busy message shows.
constexpr size_t STANDIN_BUSY_PREVIEW = 80;

constexpr const char* STANDIN_DEFAULT_MAP = "sim_map";
constexpr int STANDIN_DEFAULT_MAXPLAYERS = 16;
constexpr int STANDIN_MIN_MAXPLAYERS = 1;
constexpr int STANDIN_MAX_MAXPLAYERS = 64;

struct StandInConfig {
  std::string gameDir;                        // the mod directory; its parent is the server root
  std::string map = STANDIN_DEFAULT_MAP;
  int maxPlayers = STANDIN_DEFAULT_MAXPLAYERS;
  int tickrate = CLOCK_DEFAULT_TICKRATE;
  size_t cbufCapacity = CBUF_DEFAULT_CAPACITY;
  bool listen = false;                        // IsDedicatedServer answers false
  std::vector<std::string> without;           // interface names neither factory gives out
  std::vector<std::string> startupCommands;   // the +command lines, in order
};

class CStandIn {
public:
  explicit CStandIn(const StandInConfig& config);
  ~CStandIn();
  CStandIn(const CStandIn&) = delete;
  CStandIn& operator=(const CStandIn&) = delete;

  // Loads the plugin (a null factory runs without one), runs autoexec.cfg and the + commands, starts the
  // level, runs server.cfg. Each step runs to its end before the next.
  void Start(CreateInterfaceFn pluginFactory, const char* pluginName);
  // Appends one console line and runs frames until it and all it queued have run. After a line that was
  // still busy at the end of its bounds, the next line goes to the head of the buffer instead, so that an
  // operator can stop a runaway script. A line that doesn't fit in the buffer is reported by its text.
  void RunLine(const char* line);
  // Empties the command buffer and ends any wait, with a message: Ctrl-C at a prompt.
  void Interrupt();
  // Asks the run in progress to stop at its next command as Interrupt does. Safe in a signal handler.
  static void RequestInterrupt() { s_interruptRequested = 1; }
  // Ends the level and unloads the plugin. Called by the destructor if not before.
  void Shutdown();
  bool QuitRequested() const { return m_quit; }

  // ---- frames and the command buffer ----
  void Frame();
  // Frames until the buffer is empty and nothing waits, within the settle bounds.
  void Settle();
  // Runs the buffer now, inside the caller, until it is empty or a command ends the run.
  void Execute();
  // A client's console command: the engine's current command while it runs. The plugin sees it first
  // (SetCommandClient, ClientCommand); if the plugin lets it pass, a game command of that name runs with
  // the game's command client set to this client, and any other goes to the game (IServerWorld).
  void RunClientCommand(edict_t* edict, const char* text);
  // `wait`, `map` and `quit` end the run in progress; `frames` more frames pass before the buffer runs again.
  void StopRun(int frames);
  void RequestLevelChange(const char* map) { m_pendingMap = map; }
  void RequestQuit() { m_quit = true; }

  // ---- the engine's parts ----
  const StandInConfig& Config() const { return m_config; }
  CCvar& Console() { return m_console; }
  CommandBuffer& Cbuf() { return m_cbuf; }
  SimClock& Clock() { return m_clock; }
  CFileSystem& Files() { return m_files; }
  CGameEventManager& Events() { return m_events; }
  CEngineServer& Engine() { return m_engine; }
  IServerWorld& World() { return *m_world; }
  const ConsoleCommand& CurrentCommand() const { return *m_current; }
  // The plugin while it is loaded and running, else null.
  IServerPluginCallbacks* Plugin() const { return m_plugin; }
  const std::string& MapName() const { return m_mapName; }
  bool LevelActive() const { return m_levelActive; }

  // ---- aliases ----
  const std::string* FindAlias(std::string_view name) const;
  void SetAlias(const char* name, std::string text);
  std::vector<std::string> AliasNames() const;

  // The two factories that Load receives.
  static void* EngineFactory(const char* name, int* returnCode);
  static void* GameFactory(const char* name, int* returnCode);

private:
  void LoadPlugin(CreateInterfaceFn factory, const char* name);
  void ReportBusy(int frames);
  void RunStep(const char* text);
  void StartLevel(const std::string& map);
  void EndLevel();
  void Dispatch(const ConsoleCommand& cmd);
  void ExpandAlias(const char* name, const std::string& text);
  void DispatchClientCommand(edict_t* edict, int client);
  bool CheatRefused(ConCommandBase* base, int argc);
  ConsoleCommand& CommandSlot();
  void LoadEngineEvents();
  bool Withheld(const char* name) const;

  StandInConfig m_config;
  CCvar m_console;
  CommandBuffer m_cbuf;
  SimClock m_clock;
  CFileSystem m_files;
  CGameEventManager m_events;
  CEngineServer m_engine;
  std::unique_ptr<IServerWorld> m_world;
  IServerPluginCallbacks* m_plugin = nullptr;

  // The command each level of Execute runs, and the one Cmd_Argv reads now.
  std::vector<std::unique_ptr<ConsoleCommand>> m_commands;
  std::vector<std::string> m_commandTexts;
  ConsoleCommand m_noCommand;
  const ConsoleCommand* m_current = &m_noCommand;
  int m_executeDepth = 0;
  bool m_stopRun = false;
  int m_skipFrames = 0;
  long long m_frameCommands = 0;
  long long m_settleCommands = 0;
  int m_aliasExpansions = 0;

  std::unordered_map<std::string, std::string, CaseFoldHash, CaseFoldEqual> m_aliases;
  std::string m_lineText;  // the input line being added, with its line feed
  std::string m_mapName;
  std::string m_pendingMap;
  bool m_levelActive = false;
  bool m_busy = false;  // what a line queued outlasted the settle bounds and still waits
  bool m_quit = false;
  bool m_shutDown = false;
  CStandIn* m_previous = nullptr;  // current before this one
  static volatile std::sig_atomic_t s_interruptRequested;
};

extern CStandIn* g_standIn;

// The server's built-in console commands and variables (commands.cpp).
void RegisterServerConsole(CCvar& console);
