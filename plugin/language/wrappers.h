// Console commands of the plugin that hold an engine command and run it themselves: in a chosen player's
// name with the cheat gate open for one call (CCmdWrap), watching what the call created (CGiveWrap), in
// place of say/say_team (CSayWrap, whose Dispatch is the say path in regcmds.cpp) and of changelevel.
#pragma once

#include "convar.h"

// The twelve wrappers that Load makes, in the order it makes them.
enum CommandWrapper {
  WRAP_ENTSETNAME,
  WRAP_FIRE,
  WRAP_DISPATCHEFFECT,
  WRAP_ENTBLOCK,
  WRAP_CREATEENTITY,
  WRAP_GIVE,
  WRAP_CREATEENTITY2,
  WRAP_PROP_PHYSICS_CREATE,
  WRAP_PROP_DYNAMIC_CREATE,
  WRAP_SETPOS,
  WRAP_SETANG,
  WRAP_REMOVE,
  WRAP_COUNT
};

// Finds the engine command `wrappedName` (exact name, the wrapper itself skipped); null if the game has none.
ConCommand* FindWrappedCommand(const char* wrappedName, const ConCommandBase* self);

class CCmdWrap : public ConCommand {
public:
  // Registers with the engine at once (FCVAR_GAMEDLL, no callback); registration runs Init.
  CCmdWrap(const char* ownName, const char* help, const char* wrappedName);
  ~CCmdWrap() override;
  CCmdWrap(const CCmdWrap&) = delete;
  CCmdWrap& operator=(const CCmdWrap&) = delete;

  void Init() override;
  void Dispatch() override;

  // Sets the next run to act for the player at `entityIndex`, then puts "<own name> <args>" at the head of
  // the command buffer, so the run follows as soon as the caller returns. A line too long for the buffer
  // is reported and nothing is armed.
  void Arm(int entityIndex, const char* args);

  ConCommand* Wrapped() const { return m_wrapped; }
  bool Pending() const { return m_pending; }

protected:
  // An armed run takes the player as the game's command client and opens the cheat gate.
  void BeginRun();
  // The cheat test of the wrapped command: true, after the message, when it may not run now.
  bool CheatRefused() const;
  void RunWrapped();
  // Puts sv_cheats back as BeginRun found it.
  void EndRun();

  ConCommand* m_wrapped = nullptr;
  char* m_wrappedName;
  char* m_ownName;
  char* m_help;
  bool m_pending = false;
  int m_entityIndex = 0;

private:
  float m_savedCheatsFloat = 0;
  int m_savedCheatsInt = 0;
};

// Runs as CCmdWrap does, and records in tidewright_lastgive the lowest entity index whose class name the
// run changed (0 when none).
class CGiveWrap : public CCmdWrap {
public:
  using CCmdWrap::CCmdWrap;
  void Dispatch() override;
};

// Takes the place of say and say_team: the chat event, say commands, then the engine's command.
class CSayWrap : public CCmdWrap {
public:
  using CCmdWrap::CCmdWrap;
  void Dispatch() override;
};

// Takes the place of changelevel: refuses clients above the first slot and applies
// tidewright_nextmapoverride.
class CChangeLevelWrap : public CCmdWrap {
public:
  using CCmdWrap::CCmdWrap;
  void Dispatch() override;
};

// ---- steps of Load and LevelInit ----

// Load: forgets the say wrappers, so the next LevelInit makes them anew; makes the twelve wrappers, once for
// the process; looks up sv_cheats.
void Wrappers_OnLoad();
// LevelInit: say and say_team wrapped while tidewright_chatevent is above 0, then changelevel while
// tidewright_maphandler is above 0; each once for the process.
void Wrappers_OnLevelInit();

// A wrapper that Load made; null before Load.
CCmdWrap* GetCommandWrapper(CommandWrapper which);
CSayWrap* GetSayWrapper(bool teamOnly);
CChangeLevelWrap* GetChangeLevelWrapper();
