// The engine's console: the one chain of commands and variables that the server and plugins register,
// its index by name, and the server's own console objects declared in tables.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cmdargs.h"
#include "convar.h"
#include "icvar.h"

// Names compare ignoring ASCII case everywhere on the console.
struct CaseFoldHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const;
};
struct CaseFoldEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

// A row of a table of server commands: registration, help and the argument check come from it. The
// console's dispatch of the command checks the row before the handler runs: a FCVAR_CHEAT command
// without sv_cheats is refused, and below `minArgc` tokens (the name counts) the usage is printed instead.
struct ConsoleCommandDef {
  const char* name;
  FnCommandCallback handler;
  const char* help;
  int flags;
  int minArgc = 0;
  const char* usage = nullptr;  // the whole usage text, line feed included; `help NAME` shows it too
};

// Prints the usage of the table command whose handler runs now, for a handler that finds an argument
// of the right count but the wrong kind.
void PrintConsoleUsage();

// A row of a table of server variables.
struct ConsoleVarDef {
  const char* name;
  const char* defaultValue;
  int flags;
  const char* help;
  FnChangeCallback onChange;
};

// The chain is singly linked through each object's next link, most recently registered first, and plugins
// relink it directly. The index maps a name to the object, not to a place in the chain, so relinking
// never spoils it; a later registration of a name takes the name over.
class CCvar final : public ICvar {
public:
  CCvar() = default;
  ~CCvar() override = default;
  CCvar(const CCvar&) = delete;
  CCvar& operator=(const CCvar&) = delete;

  void RegisterConCommandBase(ConCommandBase* base) override;
  ConVar* FindVar(const char* name) override;
  ConCommandBase* GetCommands() override { return m_head; }
  void CallGlobalChangeCallback(ConVar* var, const char* oldString) override;

  // The object that a console line of this name runs: the most recently registered, command or variable.
  ConCommandBase* FindCommandBase(std::string_view name) const;
  // Says that no command or variable has this name and, when a registered name is close to it, names it.
  void PrintUnknown(std::string_view name) const;
  // The registered name nearest to NAME: fewest edits (at most one for a name of up to four letters,
  // two for a longer one), else the shortest name that NAME begins (three letters at least); ties go
  // to the first in alphabetical order. Internal names (holding "__") are never offered. Empty when
  // nothing is close.
  std::string NearestName(std::string_view name) const;

  // Makes and registers the server's own objects; the console owns them.
  void AddCommands(const ConsoleCommandDef* defs, size_t count);
  void AddVars(const ConsoleVarDef* defs, size_t count);
  // A variable made at run time (setinfo): name and default are copied and owned here.
  ConVar* CreateVar(const char* name, const char* value, int flags, const char* help);

  // The engine's current command, which table commands check their counts against. A console without
  // one (a bare console in a test) counts no arguments.
  void SetCurrentCommand(const ConsoleCommand* const* current) { m_current = current; }
  int CurrentArgc() const { return m_current && *m_current ? (*m_current)->Argc() : 0; }
  bool CheatsAllowed();

  // Told after a FCVAR_NOTIFY variable's value really changed and the change was announced.
  using NotifyHook = void (*)(ConVar* var);
  void SetNotifyHook(NotifyHook hook) { m_notifyHook = hook; }

private:
  // Objects made with FCVAR_UNREGISTERED, so that no module's list of waiting objects sees them, and with
  // any connected accessor held off while they are built, so that only this console registers them.
  template <class Make>
  ConCommandBase* MakeOwned(Make make);

  ConCommandBase* m_head = nullptr;
  const ConsoleCommand* const* m_current = nullptr;
  NotifyHook m_notifyHook = nullptr;
  std::unordered_map<std::string, ConCommandBase*, CaseFoldHash, CaseFoldEqual> m_byName;
  std::unordered_map<std::string, ConVar*, CaseFoldHash, CaseFoldEqual> m_varsByName;
  std::vector<std::unique_ptr<ConCommandBase>> m_owned;
  std::vector<std::unique_ptr<std::string>> m_ownedText;
};
