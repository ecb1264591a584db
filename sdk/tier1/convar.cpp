// Console objects shared by the engine and plugins. Each module that links this code has its own list of
// objects waiting for an accessor, so a plugin's objects made during static initialisation reach the engine
// only when the plugin connects its accessor.
#include "convar.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "icvar.h"

ConCommandBase* ConCommandBase::s_pConCommandBases = nullptr;
IConCommandBaseAccessor* ConCommandBase::s_pAccessor = nullptr;

namespace {

ICvar* g_pCvar = nullptr;

// Float to int, cut toward zero, without leaving the int range (NaN gives 0).
int TruncateToInt(float f) {
  if (std::isnan(f)) return 0;
  if (f >= 2147483647.0f) return std::numeric_limits<int>::max();
  if (f <= -2147483648.0f) return std::numeric_limits<int>::min();
  return static_cast<int>(f);
}

float ParseFloat(const char* text) { return text ? static_cast<float>(strtod(text, nullptr)) : 0.0f; }

char* CopyText(const char* text) {
  size_t n = strlen(text) + 1;
  char* copy = static_cast<char*>(malloc(n));
  memcpy(copy, text, n);
  return copy;
}

}  // namespace

void ConCommandBaseMgr_OneTimeInit(IConCommandBaseAccessor* accessor) {
  ConCommandBase::s_pAccessor = accessor;
  ConCommandBase* node = ConCommandBase::s_pConCommandBases;
  ConCommandBase::s_pConCommandBases = nullptr;
  while (node) {
    ConCommandBase* next = node->GetNext();  // registration relinks the node into the engine's chain
    node->Init();
    node = next;
  }
}

void ConVar_SetCvarInterface(ICvar* cvar) { g_pCvar = cvar; }
ICvar* ConVar_GetCvarInterface() { return g_pCvar; }

// ---- ConCommandBase ----

ConCommandBase::ConCommandBase() = default;

ConCommandBase::ConCommandBase(const char* name, const char* help, int flags) { Create(name, help, flags); }

ConCommandBase::~ConCommandBase() = default;

bool ConCommandBase::IsCommand() const { return true; }
bool ConCommandBase::IsBitSet(int flag) const { return (m_nFlags & flag) != 0; }
void ConCommandBase::AddFlags(int flags) { m_nFlags |= flags; }
const char* ConCommandBase::GetName() const { return m_pszName; }
const char* ConCommandBase::GetHelpText() const { return m_pszHelpString; }
bool ConCommandBase::IsRegistered() const { return m_bRegistered; }

void ConCommandBase::Create(const char* name, const char* help, int flags) {
  m_bRegistered = false;
  m_pszName = name;
  m_pszHelpString = help ? help : "";
  m_nFlags = flags;
  if (!(flags & FCVAR_UNREGISTERED)) {
    m_pNext = s_pConCommandBases;
    s_pConCommandBases = this;
  } else {
    m_pNext = nullptr;
  }
  if (s_pAccessor) Init();
}

void ConCommandBase::Init() {
  if (s_pAccessor && !m_bRegistered) {
    // Handed over: the object no longer waits in the module's list, whose head would otherwise lead a later
    // connect into the engine's chain.
    if (s_pConCommandBases == this) s_pConCommandBases = m_pNext;
    s_pAccessor->RegisterConCommandBase(this);
    m_bRegistered = true;
  }
}

// ---- ConCommand ----

namespace {
int NoCompletion(const char*, char[COMMAND_COMPLETION_MAXITEMS][COMMAND_COMPLETION_ITEM_LENGTH]) { return 0; }
}  // namespace

ConCommand::ConCommand() = default;

ConCommand::ConCommand(const char* name, FnCommandCallback callback, const char* help, int flags,
                       FnCommandCompletionCallback completion) {
  Create(name, callback, help, flags, completion);
}

ConCommand::~ConCommand() = default;

bool ConCommand::IsCommand() const { return true; }

int ConCommand::AutoCompleteSuggest(const char* partial,
                                    char answers[COMMAND_COMPLETION_MAXITEMS][COMMAND_COMPLETION_ITEM_LENGTH]) {
  return m_fnCompletionCallback ? m_fnCompletionCallback(partial, answers) : 0;
}

bool ConCommand::CanAutoComplete() { return m_bHasCompletionCallback; }

void ConCommand::Dispatch() {
  if (m_fnCommandCallback) m_fnCommandCallback();
}

void ConCommand::Create(const char* name, FnCommandCallback callback, const char* help, int flags,
                        FnCommandCompletionCallback completion) {
  m_fnCommandCallback = callback;
  m_bHasCompletionCallback = completion != nullptr;
  m_fnCompletionCallback = completion ? completion : NoCompletion;
  ConCommandBase::Create(name, help, flags);
}

// ---- ConVar ----

ConVar::ConVar(const char* name, const char* defaultValue, int flags) {
  Create(name, defaultValue, flags, nullptr, false, 0, false, 0, nullptr);
}

ConVar::ConVar(const char* name, const char* defaultValue, int flags, const char* help) {
  Create(name, defaultValue, flags, help, false, 0, false, 0, nullptr);
}

ConVar::ConVar(const char* name, const char* defaultValue, int flags, const char* help, FnChangeCallback callback) {
  Create(name, defaultValue, flags, help, false, 0, false, 0, callback);
}

ConVar::ConVar(const char* name, const char* defaultValue, int flags, const char* help, bool hasMin, float min,
               bool hasMax, float max, FnChangeCallback callback) {
  Create(name, defaultValue, flags, help, hasMin, min, hasMax, max, callback);
}

ConVar::~ConVar() { free(m_pszString); }

bool ConVar::IsCommand() const { return false; }
bool ConVar::IsBitSet(int flag) const { return (m_pParent->m_nFlags & flag) != 0; }
void ConVar::AddFlags(int flags) { m_pParent->m_nFlags |= flags; }
const char* ConVar::GetName() const { return m_pParent->m_pszName; }
const char* ConVar::GetHelpText() const { return m_pParent->m_pszHelpString; }
bool ConVar::IsRegistered() const { return m_pParent->m_bRegistered; }

const char* ConVar::GetString() const {
  if (m_nFlags & FCVAR_NEVER_AS_STRING) return "FCVAR_NEVER_AS_STRING";
  return m_pParent->m_pszString ? m_pParent->m_pszString : "";
}

void ConVar::SetValue(int value) { m_pParent->InternalSetIntValue(value); }
void ConVar::SetValue(float value) { m_pParent->InternalSetFloatValue(value); }
void ConVar::SetValue(const char* value) { m_pParent->InternalSetValue(value); }

void ConVar::InternalSetValue(const char* value) {
  if (!value) value = "";
  float f = ParseFloat(value);
  char clamped[32];
  if (ClampValue(f)) {
    snprintf(clamped, sizeof clamped, "%f", f);
    value = clamped;
  }
  m_fValue = f;
  m_nValue = TruncateToInt(f);
  if (!(m_nFlags & FCVAR_NEVER_AS_STRING)) ChangeStringValue(value);
}

void ConVar::InternalSetFloatValue(float value) {
  if (value == m_fValue) return;
  ClampValue(value);
  m_fValue = value;
  m_nValue = TruncateToInt(value);
  if (!(m_nFlags & FCVAR_NEVER_AS_STRING)) {
    char text[32];
    snprintf(text, sizeof text, "%lf", double(value));
    ChangeStringValue(text);
  }
}

void ConVar::InternalSetIntValue(int value) {
  if (value == m_nValue) return;
  float f = float(value);
  if (ClampValue(f)) value = TruncateToInt(f);
  m_fValue = f;
  m_nValue = value;
  if (!(m_nFlags & FCVAR_NEVER_AS_STRING)) {
    char text[32];
    snprintf(text, sizeof text, "%d", value);
    ChangeStringValue(text);
  }
}

bool ConVar::ClampValue(float& value) {
  if (m_bHasMin && value < m_fMinVal) {
    value = m_fMinVal;
    return true;
  }
  if (m_bHasMax && value > m_fMaxVal) {
    value = m_fMaxVal;
    return true;
  }
  return false;
}

void ConVar::ChangeStringValue(const char* value) {
  // The old text is kept only for those who are told of the change: the variable's callback, and the
  // engine for variables whose changes it announces.
  const bool notify = (m_nFlags & FCVAR_NOTIFY) && g_pCvar && m_bRegistered;
  const bool keepOld = m_fnChangeCallback || notify;
  char small[256];
  char* old = nullptr;
  if (keepOld) {
    const char* current = m_pszString ? m_pszString : "";
    size_t n = strlen(current) + 1;
    old = n <= sizeof small ? small : static_cast<char*>(malloc(n));
    memcpy(old, current, n);
  }

  int needed = int(strlen(value)) + 1;
  if (needed > m_StringLength) {
    free(m_pszString);
    m_pszString = static_cast<char*>(malloc(size_t(needed)));
    m_StringLength = needed;
  }
  memmove(m_pszString, value, size_t(needed));  // the text may be this variable's own string

  if (m_fnChangeCallback) m_fnChangeCallback(this, old);
  if (notify) g_pCvar->CallGlobalChangeCallback(this, old);
  if (old && old != small) free(old);
}

void ConVar::Create(const char* name, const char* defaultValue, int flags, const char* help, bool hasMin,
                    float min, bool hasMax, float max, FnChangeCallback callback) {
  m_pParent = this;
  m_pszDefaultValue = defaultValue ? defaultValue : "";
  m_StringLength = int(strlen(m_pszDefaultValue)) + 1;
  m_pszString = CopyText(m_pszDefaultValue);
  m_bHasMin = hasMin;
  m_fMinVal = min;
  m_bHasMax = hasMax;
  m_fMaxVal = max;
  m_fnChangeCallback = callback;
  m_fValue = ParseFloat(m_pszDefaultValue);
  m_nValue = TruncateToInt(m_fValue);
  ConCommandBase::Create(name, help, flags);
}
