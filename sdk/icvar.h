// The engine's console: one chain of commands and variables, registered by the engine and by plugins.
#pragma once

class ConCommandBase;
class ConVar;

#define VENGINE_CVAR_INTERFACE_VERSION "VEngineCvar002"

class ICvar {
public:
  // Links the object at the head of the chain; the most recently registered of a name is found first.
  virtual void RegisterConCommandBase(ConCommandBase* base) = 0;
  // Finds a variable by name, ignoring case. Null when there is none (or the name is a command).
  virtual ConVar* FindVar(const char* name) = 0;
  // Head of the chain of all console objects; walk it by GetNext. Chain order is the search order.
  virtual ConCommandBase* GetCommands() = 0;
  // Told by a variable's ChangeStringValue after its own callback ran.
  virtual void CallGlobalChangeCallback(ConVar* var, const char* oldString) = 0;

protected:
  virtual ~ICvar() = default;
};
