// Console objects whose layout the engine and plugins share: ConCommandBase, ConCommand, ConVar and the
// accessor through which a module hands its objects to the engine. The code lives in tier1/convar.cpp,
// a static library that the engine and every plugin link, each with its own list of objects not yet handed over.
#pragma once

#include <cstdint>

class ConCommandBase;
class ConVar;
class ICvar;

// Flag bits of a console object.
enum : int {
  FCVAR_NONE = 0,
  FCVAR_UNREGISTERED = 1 << 0,    // Create does not put the object in the module's list
  FCVAR_LAUNCHER = 1 << 1,
  FCVAR_GAMEDLL = 1 << 2,
  FCVAR_CLIENTDLL = 1 << 3,
  FCVAR_MATERIAL_SYSTEM = 1 << 4,
  FCVAR_PROTECTED = 1 << 5,       // the value is never shown or expanded
  FCVAR_SPONLY = 1 << 6,
  FCVAR_ARCHIVE = 1 << 7,
  FCVAR_NOTIFY = 1 << 8,          // changes are announced to every client
  FCVAR_USERINFO = 1 << 9,
  FCVAR_PRINTABLEONLY = 1 << 10,
  FCVAR_UNLOGGED = 1 << 11,
  FCVAR_NEVER_AS_STRING = 1 << 12,
  FCVAR_REPLICATED = 1 << 13,
  FCVAR_CHEAT = 1 << 14,          // only with sv_cheats
  FCVAR_STUDIORENDER = 1 << 15,
  FCVAR_DEMO = 1 << 16,
  FCVAR_DONTRECORD = 1 << 17,
  FCVAR_PLUGIN = 1 << 18,         // added to every object that a plugin registers
};

// Tab completion: a callback fills at most this many answers of at most this many characters.
enum { COMMAND_COMPLETION_MAXITEMS = 64, COMMAND_COMPLETION_ITEM_LENGTH = 64 };

typedef void (*FnCommandCallback)();
typedef int (*FnCommandCompletionCallback)(const char* partial,
                                           char answers[COMMAND_COMPLETION_MAXITEMS][COMMAND_COMPLETION_ITEM_LENGTH]);
typedef void (*FnChangeCallback)(ConVar* var, const char* oldString);

// Hands a console object to the engine. Exactly one accessor is connected in a module.
class IConCommandBaseAccessor {
public:
  virtual bool RegisterConCommandBase(ConCommandBase* base) = 0;
};

class ConCommandBase {
public:
  ConCommandBase();
  ConCommandBase(const char* name, const char* help = nullptr, int flags = 0);
  virtual ~ConCommandBase();

  virtual bool IsCommand() const;
  virtual bool IsBitSet(int flag) const;
  virtual void AddFlags(int flags);
  virtual const char* GetName() const;
  virtual const char* GetHelpText() const;
  virtual bool IsRegistered() const;
  virtual void Create(const char* name, const char* help = nullptr, int flags = 0);
  virtual void Init();

  // The chain link. The engine and the plugin walk and relink chains through it.
  ConCommandBase* GetNext() const { return m_pNext; }
  void SetNext(ConCommandBase* next) { m_pNext = next; }
  // Flags as stored on this object itself, without going through a parent.
  int GetFlagsRaw() const { return m_nFlags; }
  void SetFlagsRaw(int flags) { m_nFlags = flags; }
  // Set by whoever registers the object with the engine.
  void MarkRegistered() { m_bRegistered = true; }

  // The module's list of objects that wait for an accessor, and the accessor once connected.
  static ConCommandBase* s_pConCommandBases;
  static IConCommandBaseAccessor* s_pAccessor;

protected:
  ConCommandBase* m_pNext = nullptr;
  bool m_bRegistered = false;
  const char* m_pszName = nullptr;
  const char* m_pszHelpString = "";
  int m_nFlags = 0;
};

class ConCommand : public ConCommandBase {
public:
  ConCommand();
  ConCommand(const char* name, FnCommandCallback callback, const char* help = nullptr, int flags = 0,
             FnCommandCompletionCallback completion = nullptr);
  ~ConCommand() override;

  bool IsCommand() const override;
  virtual int AutoCompleteSuggest(const char* partial,
                                  char answers[COMMAND_COMPLETION_MAXITEMS][COMMAND_COMPLETION_ITEM_LENGTH]);
  virtual bool CanAutoComplete();
  virtual void Dispatch();
  virtual void Create(const char* name, FnCommandCallback callback, const char* help = nullptr, int flags = 0,
                      FnCommandCompletionCallback completion = nullptr);
  using ConCommandBase::Create;

  FnCommandCallback GetCallback() const { return m_fnCommandCallback; }
  // What the command prints when it is given too few arguments (line feeds included), for the console's
  // `help`; null when it has no usage text. The text is the owner's and must live as long as the command.
  const char* GetUsage() const { return m_pszUsage; }
  void SetUsage(const char* usage) { m_pszUsage = usage; }

protected:
  FnCommandCallback m_fnCommandCallback = nullptr;
  FnCommandCompletionCallback m_fnCompletionCallback = nullptr;
  bool m_bHasCompletionCallback = false;
  const char* m_pszUsage = nullptr;
};

class ConVar : public ConCommandBase {
public:
  ConVar(const char* name, const char* defaultValue, int flags = 0);
  ConVar(const char* name, const char* defaultValue, int flags, const char* help);
  ConVar(const char* name, const char* defaultValue, int flags, const char* help, FnChangeCallback callback);
  ConVar(const char* name, const char* defaultValue, int flags, const char* help, bool hasMin, float min,
         bool hasMax, float max, FnChangeCallback callback = nullptr);
  ~ConVar() override;

  bool IsCommand() const override;
  bool IsBitSet(int flag) const override;
  void AddFlags(int flags) override;
  const char* GetName() const override;
  const char* GetHelpText() const override;
  bool IsRegistered() const override;

  virtual void SetValue(int value);
  virtual void SetValue(float value);
  virtual void SetValue(const char* value);
  virtual void InternalSetValue(const char* value);
  virtual void InternalSetFloatValue(float value);
  virtual void InternalSetIntValue(int value);
  virtual bool ClampValue(float& value);
  virtual void ChangeStringValue(const char* value);
  virtual void Create(const char* name, const char* defaultValue, int flags, const char* help, bool hasMin,
                      float min, bool hasMax, float max, FnChangeCallback callback);
  using ConCommandBase::Create;

  // Reads are plain and go to the parent, where the values live.
  float GetFloat() const { return m_pParent->m_fValue; }
  int GetInt() const { return m_pParent->m_nValue; }
  bool GetBool() const { return GetInt() != 0; }
  const char* GetString() const;
  const char* GetDefault() const { return m_pParent->m_pszDefaultValue; }
  ConVar* GetParent() const { return m_pParent; }
  bool HasMin() const { return m_pParent->m_bHasMin; }
  bool HasMax() const { return m_pParent->m_bHasMax; }
  float GetMinValue() const { return m_pParent->m_fMinVal; }
  float GetMaxValue() const { return m_pParent->m_fMaxVal; }

  // Fields in layout order. They are public because the plugin writes them directly where no callback
  // may run (sv_cheats for one wrapped call, tw_forcevalue).
  ConVar* m_pParent = nullptr;
  const char* m_pszDefaultValue = "";
  char* m_pszString = nullptr;
  int m_StringLength = 0;
  float m_fValue = 0;
  int m_nValue = 0;
  bool m_bHasMin = false;
  float m_fMinVal = 0;
  bool m_bHasMax = false;
  float m_fMaxVal = 0;
  FnChangeCallback m_fnChangeCallback = nullptr;
};

// Connects a module's accessor: stores it and registers every object waiting in the module's list.
void ConCommandBaseMgr_OneTimeInit(IConCommandBaseAccessor* accessor);

// The engine's console interface as this module knows it. ChangeStringValue reports every registered
// variable's change to it (ICvar::CallGlobalChangeCallback), which is how the engine announces
// FCVAR_NOTIFY changes whoever made them.
void ConVar_SetCvarInterface(ICvar* cvar);
ICvar* ConVar_GetCvarInterface();
