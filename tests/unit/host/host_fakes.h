// Small stand-ins for the engine's interfaces, enough to drive the plugin shell: a console chain, an engine
// that records what the plugin hands it, a game event manager that declares events from resource files,
// and two factories whose interfaces a test can take away or add.
#pragma once

#include "filesystem.h"

#include <gtest/gtest.h>
#include <strings.h>

#include <deque>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "convar.h"
#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "icvar.h"
#include "igameevents.h"
#include "iplayerinfo.h"

// ---- console chain ----

class FakeCvar : public ICvar {
public:
  ConCommandBase* head = nullptr;
  int findVarCalls = 0;
  int registrations = 0;

  void RegisterConCommandBase(ConCommandBase* base) override {
    base->SetNext(head);
    head = base;
    ++registrations;
  }
  ConVar* FindVar(const char* name) override {
    ++findVarCalls;
    for (ConCommandBase* b = head; b; b = b->GetNext())
      if (!b->IsCommand() && strcasecmp(b->GetName(), name) == 0) return static_cast<ConVar*>(b);
    return nullptr;
  }
  ConCommandBase* GetCommands() override { return head; }
  void CallGlobalChangeCallback(ConVar*, const char*) override {}

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (ConCommandBase* b = head; b; b = b->GetNext()) names.push_back(b->GetName());
    return names;
  }
  bool Holds(const ConCommandBase* object) const {
    for (ConCommandBase* b = head; b; b = b->GetNext())
      if (b == object) return true;
    return false;
  }
};

// ---- game events ----

class FakeEvent : public IGameEvent {
public:
  explicit FakeEvent(std::string name) : m_name(std::move(name)) {}
  std::map<std::string, std::string> values;

  const char* GetName() const override { return m_name.c_str(); }
  bool IsEmpty(const char* key) override { return key ? !values.count(key) : values.empty(); }
  bool GetBool(const char* key, bool d) override { return values.count(key) ? values[key] != "0" : d; }
  int GetInt(const char* key, int d) override { return values.count(key) ? atoi(values[key].c_str()) : d; }
  float GetFloat(const char* key, float d) override { return values.count(key) ? float(atof(values[key].c_str())) : d; }
  const char* GetString(const char* key, const char* d) override {
    return values.count(key) ? values[key].c_str() : d;
  }
  void SetBool(const char* key, bool v) override { values[key] = v ? "1" : "0"; }
  void SetInt(const char* key, int v) override { values[key] = std::to_string(v); }
  void SetFloat(const char* key, float v) override { values[key] = std::to_string(v); }
  void SetString(const char* key, const char* v) override { values[key] = v; }

private:
  std::string m_name;
};

// Reads a file of the source tree whole; empty when it can't be read.
inline std::string ReadSourceFile(const std::string& relative) {
  std::ifstream in(std::string(TW_SOURCE_DIR) + "/" + relative, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

class FakeEventManager : public IGameEventManager2 {
public:
  struct Fired {
    std::string name;
    std::map<std::string, std::string> values;
  };
  std::set<std::string> declared;
  std::vector<std::string> loadedFiles;
  std::vector<Fired> fired;
  int removeListenerCalls = 0;
  IGameEventListener2* lastRemoved = nullptr;

  // The plugin's own resource file is read from the source tree, so that what it declares is what the
  // plugin can create.
  int LoadEventsFromFile(const char* filename) override {
    loadedFiles.push_back(filename);
    if (std::string(filename) != "addons/brannock_tidewright.res") return 0;
    std::string text = ReadSourceFile("plugin/data/brannock_tidewright.res");
    KeyValues* top = new KeyValues("events");
    int count = 0;
    if (top->LoadFromBuffer(filename, text.c_str()))
      for (KeyValues* e = top->GetFirstSubKey(); e; e = e->GetNextKey(), ++count) declared.insert(e->GetName());
    top->deleteThis();
    return count;
  }
  bool AddListener(IGameEventListener2*, const char*, bool) override { return true; }
  bool FindListener(IGameEventListener2*, const char*) override { return false; }
  void RemoveListener(IGameEventListener2* listener) override {
    ++removeListenerCalls;
    lastRemoved = listener;
  }
  IGameEvent* CreateEvent(const char* name, bool) override {
    return declared.count(name) ? new FakeEvent(name) : nullptr;
  }
  bool FireEvent(IGameEvent* event, bool) override {
    auto* e = static_cast<FakeEvent*>(event);
    fired.push_back({e->GetName(), e->values});
    delete e;
    return true;
  }
  IGameEvent* DuplicateEvent(IGameEvent* event) override {
    auto* copy = new FakeEvent(event->GetName());
    copy->values = static_cast<FakeEvent*>(event)->values;
    return copy;
  }
  void FreeEvent(IGameEvent* event) override { delete static_cast<FakeEvent*>(event); }
};

// ---- entities ----

class FakeNetworkable : public IServerNetworkable, public IServerUnknown {
public:
  explicit FakeNetworkable(const char* className) : m_className(className) {}
  IHandleEntity* GetEntityHandle() override { return this; }
  ServerClass* GetServerClass() override { return nullptr; }
  edict_t* GetEdict() const override { return nullptr; }
  const char* GetClassName() const override { return m_className.c_str(); }
  void Release() override {}
  void SetRefEHandle(const CBaseHandle& handle) override { m_handle = handle; }
  const CBaseHandle& GetRefEHandle() const override { return m_handle; }
  IServerNetworkable* GetNetworkable() override { return this; }
  CBaseEntity* GetBaseEntity() override { return nullptr; }

private:
  std::string m_className;
  CBaseHandle m_handle;
};

class FakePlayerInfoManager : public IPlayerInfoManager {
public:
  CGlobalVars globals;
  IPlayerInfo* GetPlayerInfo(edict_t*) override { return nullptr; }
  CGlobalVars* GetGlobalVars() override { return &globals; }
};

// ---- the engine ----

class FakeEngine : public IVEngineServer {
public:
  std::vector<std::string> appended, inserted, logged;
  std::deque<float> clock;  // Time() hands these out in order, then repeats the last
  int timeCalls = 0;
  bool dedicated = true;
  std::string gameDir = "/srv/tidewright/game";
  std::vector<edict_t*> edicts;  // by entity index
  std::map<const edict_t*, int> userids;

  void ServerCommand(const char* text) override { appended.push_back(text); }
  void InsertServerCommand(const char* text) override { inserted.push_back(text); }
  void ServerExecute() override {}
  int Cmd_Argc() override { return 0; }
  const char* Cmd_Argv(int) override { return ""; }
  const char* Cmd_Args() override { return ""; }
  void LogPrint(const char* text) override { logged.push_back(text); }
  void GetGameDir(char* out, int maxlen) override { snprintf(out, size_t(maxlen), "%s", gameDir.c_str()); }
  float Time() override {
    ++timeCalls;
    if (clock.empty()) return m_lastTime;
    m_lastTime = clock.front();
    clock.pop_front();
    return m_lastTime;
  }
  bool IsDedicatedServer() override { return dedicated; }
  bool IsMapValid(const char*) override { return true; }
  int PrecacheModel(const char*, bool) override { return 0; }
  int PrecacheDecal(const char*, bool) override { return 0; }
  int GetPlayerUserId(const edict_t* edict) override { return userids.count(edict) ? userids[edict] : -1; }
  const char* GetPlayerNetworkIDString(const edict_t*) override { return ""; }
  int GetEntityCount() override { return int(edicts.size()); }
  int IndexOfEdict(const edict_t*) override { return 0; }
  edict_t* PEntityOfEntIndex(int index) override {
    return index >= 0 && size_t(index) < edicts.size() ? edicts[size_t(index)] : nullptr;
  }
  INetChannelInfo* GetPlayerNetInfo(int) override { return nullptr; }
  const char* GetClientConVarValue(int, const char*) override { return ""; }
  void SetFakeClientConVarValue(edict_t*, const char*, const char*) override {}
  edict_t* CreateFakeClient(const char*) override { return nullptr; }
  void SetView(const edict_t*, const edict_t*) override {}
  void ClientCommand(edict_t*, const char*, ...) override {}
  void FadeClientVolume(const edict_t*, float, float, float, float) override {}
  void LightStyle(int, const char*) override {}
  bf_write* UserMessageBegin(IRecipientFilter*, int) override { return nullptr; }
  void MessageEnd() override {}
  bool LockNetworkStringTables(bool) override { return false; }

private:
  float m_lastTime = 0;
};

// A file system with no files: scripts and event files are never found.
class FakeFileSystem : public IFileSystem {
public:
  int Read(void*, int, FileHandle_t) override { return 0; }
  int Write(const void*, int, FileHandle_t) override { return 0; }
  FileHandle_t Open(const char*, const char*, const char*) override { return nullptr; }
  void Close(FileHandle_t) override {}
  unsigned int Size(FileHandle_t) override { return 0; }
  bool FileExists(const char*, const char*) override { return false; }
  long GetFileTime(const char*, const char*) override { return 0; }
  bool EndOfFile(FileHandle_t) override { return true; }
  char* ReadLine(char*, int, FileHandle_t) override { return nullptr; }
};

// ---- process-wide fakes and factories ----

struct FakeWorld {
  FakeCvar cvar;
  FakeEngine engine;
  FakeEventManager events;
  FakePlayerInfoManager playerInfo;
  FakeFileSystem files;
  // Interfaces that the plugin only stores: distinct addresses that are never called.
  char opaque[16] = {};
  // What each factory knows, and every name either was asked, in order.
  std::map<std::string, void*> engineInterfaces, gameInterfaces;
  std::vector<std::string> asked;

  FakeWorld() { Reset(); }

  void Reset() {
    engineInterfaces = {
        {"VoiceServer001", &opaque[0]},          {"VEngineServer021", &engine},
        {"GAMEEVENTSMANAGER002", &events},       {"VFileSystem012", &files},
        {"ISERVERPLUGINHELPERS001", &opaque[2]}, {"EngineTraceServer003", &opaque[3]},
        {"IEngineSoundServer003", &opaque[4]},   {"VEngineServerStringTable001", &opaque[5]},
        {"VEngineRandom001", &opaque[6]},        {"VPhysics030", &opaque[7]},
        {"VEngineCvar002", &cvar},
    };
    gameInterfaces = {
        {"PlayerInfoManager002", &playerInfo}, {"IEffects001", &opaque[8]},
        {"ServerGameEnts001", &opaque[9]},     {"ServerGameDLL005", &opaque[10]},
        {"ServerGameClients004", &opaque[11]},
    };
    asked.clear();
  }

  static void* Lookup(std::map<std::string, void*>& known, const char* name, int* code) {
    instance().asked.push_back(name);
    auto it = known.find(name);
    if (code) *code = it == known.end() ? IFACE_FAILED : IFACE_OK;
    return it == known.end() ? nullptr : it->second;
  }
  static void* EngineFactory(const char* name, int* code) { return Lookup(instance().engineInterfaces, name, code); }
  static void* GameFactory(const char* name, int* code) { return Lookup(instance().gameInterfaces, name, code); }

  static FakeWorld& instance() {
    static FakeWorld world;
    return world;
  }
};

// Connects the plugin's console to the process-wide fake chain, once, and points the engine globals at the
// fakes. Every test that makes console objects runs this first, so that they land in a chain and never
// wait in the plugin's list.
inline FakeWorld& ConnectFakeWorld() {
  FakeWorld& world = FakeWorld::instance();
  static bool connected = false;
  if (!connected) {
    ConnectConsole(&FakeWorld::EngineFactory);
    connected = true;
  }
  engine = &world.engine;
  gameeventmanager = &world.events;
  cvar = &world.cvar;
  return world;
}

// Restores a configuration variable's text when a test ends.
class VarRestorer {
public:
  explicit VarRestorer(ConVar& var) : m_var(var), m_text(var.GetString()) {}
  ~VarRestorer() { m_var.SetValue(m_text.c_str()); }

private:
  ConVar& m_var;
  std::string m_text;
};
