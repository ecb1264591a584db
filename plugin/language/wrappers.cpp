// The engine command wrappers: the twelve of Load that run a game command for a chosen player with the cheat
// gate open for one call, the changelevel wrapper of LevelInit, and the making of all wrappers. The say
// wrappers' Dispatch (the say path) belongs to the registered commands, in regcmds.cpp.
#include "language/wrappers.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

#include "edict.h"
#include "eiface.h"
#include "icvar.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "language/textbuf.h"
#include "tier1/strtools.h"

namespace {

constexpr const char* kInternalHelp = "Tidewright internal command.";

ConVar* s_svCheats = nullptr;
CCmdWrap* s_wrappers[WRAP_COUNT] = {};
CSayWrap* s_sayWrap = nullptr;
CSayWrap* s_sayTeamWrap = nullptr;
CChangeLevelWrap* s_changeLevelWrap = nullptr;

struct WrapperRow {
  const char* ownName;
  const char* wrappedName;
  bool recordsWhatAppears;  // a CGiveWrap
};
const WrapperRow kWrapperRows[WRAP_COUNT] = {
    {"tw__entsetname", "ent_setname", false},
    {"tw__fire", "ent_fire", false},
    {"tw__dispatcheffect", "test_dispatcheffect", false},
    {"tw__entblock", "test_entity_blocker", false},
    {"tw__createentity", "Test_CreateEntity", true},
    {"tw__give", "give", true},
    {"tw__createentity2", "ent_create", true},
    {"tw__prop_physics_create", "prop_physics_create", true},
    {"tw__prop_dynamic_create", "prop_dynamic_create", true},
    {"tw__setpos", "setpos", false},
    {"tw__setang", "setang", false},
    {"tw__remove", "ent_remove", false},
};

// Every wrapper ever made stays for the whole process, also those whose pointer a later Load forgot.
template <class Wrapper>
Wrapper* Keep(Wrapper* wrapper) {
  KeepCommand(wrapper);
  return wrapper;
}

// The object that holds sv_cheats's values: writes to it run no callback and tell no client.
ConVar* CheatsValues() { return s_svCheats ? s_svCheats->GetParent() : nullptr; }

int CheatsInt() {
  ConVar* values = CheatsValues();
  return values ? values->m_nValue : 0;
}

// Finding the wrapped command, the same for every wrapper class: report when the game has none.
ConCommand* FindOrReport(const char* wrappedName, const ConCommandBase* self) {
  ConCommand* found = FindWrappedCommand(wrappedName, self);
  if (!found) {
    ReportScriptError(0, "CmdWrap Error! BREAK\n");
    SetLastErrorText("Internal Error");
  }
  return found;
}

// ---- the class name table around a give ----

// The class name of a live entity (it exists, isn't free, has a networkable); null for any other index.
const char* LiveClassName(int index) {
  edict_t* edict = engine ? engine->PEntityOfEntIndex(index) : nullptr;
  if (!edict || edict->IsFree() || !edict->GetNetworkable()) return nullptr;
  const char* name = edict->GetNetworkable()->GetClassName();
  return name ? name : "";
}

int MaxEntities() { return gpGlobals && gpGlobals->maxEntities > 0 ? gpGlobals->maxEntities : 0; }

// Looks at every entity before a give. The table stays allocated for the level; only a level whose size
// differs (or none yet) gets a new one.
void SnapshotClassNames() {
  if (!g_classNames || g_classNameCount != MaxEntities()) {
    RebuildClassNameTable();
    return;
  }
  for (int i = 0; i < g_classNameCount; ++i) {
    const char* name = LiveClassName(i);
    snprintf(g_classNames[i], kClassNameSlotSize, "%s", name ? name : "");
  }
}

// The lowest live index whose class name differs from its slot after a give; 0 when none. That slot takes
// the new name.
int FirstChangedEntity() {
  for (int i = 0; i < g_classNameCount; ++i) {
    const char* name = LiveClassName(i);
    if (!name || strcasecmp(name, g_classNames[i]) == 0) continue;
    snprintf(g_classNames[i], kClassNameSlotSize, "%s", name);
    return i;
  }
  return 0;
}

}  // namespace

ConCommand* FindWrappedCommand(const char* wrappedName, const ConCommandBase* self) {
  if (!cvar || !wrappedName) return nullptr;
  for (ConCommandBase* base = cvar->GetCommands(); base; base = base->GetNext()) {
    if (base == self || !base->IsCommand() || !base->GetName()) continue;
    if (strcmp(base->GetName(), wrappedName) == 0) return static_cast<ConCommand*>(base);
  }
  return nullptr;
}

// ---- CCmdWrap ----

CCmdWrap::CCmdWrap(const char* ownName, const char* help, const char* wrappedName)
    : m_wrappedName(CopyText(wrappedName)), m_ownName(CopyText(ownName)), m_help(CopyText(help)) {
  ConCommand::Create(m_ownName, nullptr, m_help, FCVAR_GAMEDLL);
}

CCmdWrap::~CCmdWrap() {
  free(m_wrappedName);
  free(m_ownName);
  free(m_help);
}

void CCmdWrap::Init() {
  m_wrapped = FindOrReport(m_wrappedName, this);
  ConCommandBase::Init();
}

void CCmdWrap::Arm(int entityIndex, const char* args) {
  TextBuf line(m_ownName);
  if (args && *args) {
    line.Append(' ');
    line.Append(args);
  }
  if (!line.Append('\n') || line.Overflowed()) {
    ReportScriptError(0, "%s: The command line is too long.\n", m_ownName);
    SetLastErrorText("Resulting string too long.");
    return;
  }
  m_pending = true;
  m_entityIndex = entityIndex;
  ImmediateExecuteCommand(line.c_str());
}

void CCmdWrap::BeginRun() {
  if (ConVar* values = CheatsValues()) {
    m_savedCheatsFloat = values->m_fValue;
    m_savedCheatsInt = values->m_nValue;
  }
  if (!m_pending) return;
  if (gameclients) gameclients->SetCommandClient(m_entityIndex - 1);
  if (ConVar* values = CheatsValues()) {
    values->m_fValue = 1.0f;
    values->m_nValue = 1;
  }
  m_pending = false;
}

bool CCmdWrap::CheatRefused() const {
  if (!m_wrapped || !m_wrapped->IsBitSet(FCVAR_CHEAT) || CheatsInt() >= 1) return false;
  DbgMsg(0, "Cannot execute a cheat command while sv_cheats = 0.\n");
  return true;
}

void CCmdWrap::RunWrapped() {
  if (m_wrapped)
    m_wrapped->Dispatch();
  else
    DbgMsg(0, "%s: the game has no command %s to run.\n", m_ownName, m_wrappedName);
}

void CCmdWrap::EndRun() {
  if (ConVar* values = CheatsValues()) {
    values->m_fValue = m_savedCheatsFloat;
    values->m_nValue = m_savedCheatsInt;
  }
}

void CCmdWrap::Dispatch() {
  DbgMsg(7, "Dispatching(): %s\n", m_ownName);
  BeginRun();
  if (!CheatRefused()) RunWrapped();
  EndRun();
}

// ---- CGiveWrap ----

void CGiveWrap::Dispatch() {
  BeginRun();
  if (!CheatRefused()) {
    SnapshotClassNames();
    tidewright_lastgive.SetValue(0);
    RunWrapped();
    if (int index = FirstChangedEntity()) tidewright_lastgive.SetValue(index);
  }
  EndRun();
}

// ---- CChangeLevelWrap ----

// The override goes out as a new changelevel line, which reaches this wrapper again with the override
// already cleared and so passes to the engine.
void CChangeLevelWrap::Dispatch() {
  int client = g_commandIndex;
  if (client >= 1) {
    DbgMsg(0, "changelevel: userid %d tried to change the map via an old exploit.\n", client + 1);
    return;
  }
  const std::string override = tidewright_nextmapoverride.GetString();
  if (!override.empty() && override != "0" && engine->Cmd_Argc() > 1) {
    tidewright_nextmapoverride.SetValue("");
    char line[TEXT_BUFFER_SIZE];
    snprintf(line, sizeof line, "%s %s\n", m_wrappedName, override.c_str());
    ImmediateExecuteCommand(line);
    DbgMsg(0, "[Tidewright] Next map changed from %s to %s.\n", engine->Cmd_Argv(1), override.c_str());
    return;
  }
  RunWrapped();
}

// ---- making the wrappers ----

namespace {

void ClearSayWrappers() {
  s_sayWrap = nullptr;
  s_sayTeamWrap = nullptr;
}

void MakeCommandWrappers() {
  for (int i = 0; i < WRAP_COUNT; ++i) {
    if (s_wrappers[i]) continue;
    const WrapperRow& row = kWrapperRows[i];
    CCmdWrap* wrapper = row.recordsWhatAppears ? new CGiveWrap(row.ownName, kInternalHelp, row.wrappedName)
                                               : new CCmdWrap(row.ownName, kInternalHelp, row.wrappedName);
    s_wrappers[i] = Keep(wrapper);
  }
  DbgMsg(1, "[Tidewright] Wrapped useful commands.\n");
}

void LookUpCheatsVar() { s_svCheats = FindServerVar("sv_cheats"); }

void WrapSayCommands() {
  if (s_sayWrap || tidewright_chatevent.GetInt() <= 0) return;
  s_sayWrap = Keep(new CSayWrap("say", "say messages", "say"));
  s_sayTeamWrap = Keep(new CSayWrap("say_team", "say team message", "say_team"));
  DbgMsg(1, "[Tidewright] ** Say commands wrapped.\n");
}

void WrapChangeLevel() {
  if (s_changeLevelWrap || tidewright_maphandler.GetInt() <= 0) return;
  s_changeLevelWrap = Keep(new CChangeLevelWrap("changelevel", "proxy change level", "changelevel"));
  DbgMsg(1, "[Tidewright] ** Changelevel command wrapped.\n");
}

}  // namespace

void Wrappers_OnLoad() {
  ClearSayWrappers();
  MakeCommandWrappers();
  LookUpCheatsVar();
}

void Wrappers_OnLevelInit() {
  WrapSayCommands();
  WrapChangeLevel();
}

CCmdWrap* GetCommandWrapper(CommandWrapper which) {
  return which >= 0 && which < WRAP_COUNT ? s_wrappers[which] : nullptr;
}

CSayWrap* GetSayWrapper(bool teamOnly) { return teamOnly ? s_sayTeamWrap : s_sayWrap; }

CChangeLevelWrap* GetChangeLevelWrapper() { return s_changeLevelWrap; }
