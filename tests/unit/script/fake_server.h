// A small engine for the script engine's tests and benchmarks: a server command buffer with insert at the
// head and append at the tail, the console chain, an in-memory file system, a log and a physics
// environment. One instance per process; Server() connects the plugin's console objects on first use.
#pragma once

#include <cstdarg>
#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <strings.h>
#include <unordered_map>
#include <vector>

#include "convar.h"
#include "edict.h"
#include "eiface.h"
#include "filesystem.h"
#include "host/console.h"
#include "host/engine_surface.h"
#include "icvar.h"
#include "tier0.h"
#include "tier1/tokenize.h"
#include "vphysics.h"

class FakeServer : public IVEngineServer, public ICvar, public IFileSystem {
public:
  // ---- the command buffer ----
  void ServerCommand(const char* text) override {
    m_buffer.push_back(Chunk{text, 0});
    Grow(m_buffer.back().text.size());
  }
  void InsertServerCommand(const char* text) override {
    m_buffer.push_front(Chunk{text, 0});
    Grow(m_buffer.front().text.size());
  }
  void ServerExecute() override { Execute(); }

  // Runs commands from the head until the buffer is empty; gives the number run.
  long Execute(long limit = 50000000) {
    long count = 0;
    std::string command;
    while (count < limit && TakeCommand(command)) {
      if (command.find_first_not_of(" \t\r") == std::string::npos) continue;
      ++count;
      RunCommand(command.c_str());
    }
    return count;
  }
  // Appends a text and runs the buffer.
  long Run(const std::string& text) {
    ServerCommand((text + "\n").c_str());
    return Execute();
  }
  void ClearBuffer() {
    m_buffer.clear();
    m_pending = 0;
  }
  // Bytes waiting in the buffer, and the most that ever waited since the last reset.
  size_t PendingBytes() const { return m_pending; }
  size_t PeakPendingBytes() const { return m_peak; }
  void ResetPeak() { m_peak = m_pending; }

  int Cmd_Argc() override { return m_current ? int(m_current->argv.size()) : 0; }
  const char* Cmd_Argv(int index) override {
    if (!m_current || index < 0 || index >= int(m_current->argv.size())) return "";
    return m_current->argv[size_t(index)].c_str();
  }
  const char* Cmd_Args() override { return m_current ? m_current->args.c_str() : ""; }

  void LogPrint(const char* text) override { log += text; }
  void GetGameDir(char* out, int maxlen) override { snprintf(out, size_t(maxlen), "/tmp/game"); }
  float Time() override { return 0; }
  bool IsDedicatedServer() override { return true; }
  bool IsMapValid(const char*) override { return false; }
  int PrecacheModel(const char*, bool) override { return 0; }
  int PrecacheDecal(const char*, bool) override { return 0; }
  int GetPlayerUserId(const edict_t*) override { return -1; }
  const char* GetPlayerNetworkIDString(const edict_t*) override { return ""; }
  int GetEntityCount() override { return 0; }
  int IndexOfEdict(const edict_t*) override { return 0; }
  edict_t* PEntityOfEntIndex(int) override { return nullptr; }
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
  bool LockNetworkStringTables(bool lock) override { return lock; }

  // ---- the console chain ----
  void RegisterConCommandBase(ConCommandBase* base) override {
    base->SetNext(m_head);
    m_head = base;
    m_byName[Lower(base->GetName())] = base;
  }
  ConVar* FindVar(const char* name) override {
    auto it = m_byName.find(Lower(name));
    return it == m_byName.end() || it->second->IsCommand() ? nullptr : static_cast<ConVar*>(it->second);
  }
  ConCommandBase* GetCommands() override { return m_head; }
  void CallGlobalChangeCallback(ConVar*, const char*) override {}
  ConCommandBase* FindCommand(const char* name) {
    auto it = m_byName.find(Lower(name));
    return it == m_byName.end() ? nullptr : it->second;
  }

  // ---- files ----
  std::map<std::string, std::string> files;

  int Read(void* output, int size, FileHandle_t file) override {
    OpenFile* f = static_cast<OpenFile*>(file);
    int n = std::min<int>(size, int(f->data.size() - f->pos));
    memcpy(output, f->data.data() + f->pos, size_t(n));
    f->pos += size_t(n);
    return n;
  }
  int Write(const void*, int, FileHandle_t) override { return 0; }
  FileHandle_t Open(const char* name, const char* options, const char*) override {
    auto it = files.find(name);
    if (strchr(options, 'w') || it == files.end()) return nullptr;
    return new OpenFile{it->second, 0};
  }
  void Close(FileHandle_t file) override { delete static_cast<OpenFile*>(file); }
  unsigned int Size(FileHandle_t file) override { return unsigned(static_cast<OpenFile*>(file)->data.size()); }
  bool FileExists(const char* name, const char*) override { return files.count(name) != 0; }
  long GetFileTime(const char*, const char*) override { return 0; }
  bool EndOfFile(FileHandle_t file) override {
    OpenFile* f = static_cast<OpenFile*>(file);
    return f->pos >= f->data.size();
  }
  char* ReadLine(char*, int, FileHandle_t) override { return nullptr; }

  // A script file where LoadAddonFile looks for the script `name`.
  void AddScript(const std::string& name, const std::string& text) {
    std::string base = name.substr(name.find_last_of('/') + 1);
    files["addons/tidewright/" + name + "/tw_" + base + ".txt"] = text;
  }

  std::string log;

private:
  struct Chunk {
    std::string text;
    size_t pos;
  };
  struct Tokens {
    std::vector<std::string> argv;
    std::string args;
  };
  struct OpenFile {
    std::string data;
    size_t pos;
  };

  static std::string Lower(const char* name) {
    std::string s(name ? name : "");
    for (char& c : s) c = char(tolower(static_cast<unsigned char>(c)));
    return s;
  }

  // The next command: up to a line feed, or a ';' outside double quotes. Text without a separator at the
  // end of a chunk goes on into the next one, as in one contiguous buffer.
  bool TakeCommand(std::string& command) {
    command.clear();
    bool quoted = false;
    bool any = false;
    while (!m_buffer.empty()) {
      Chunk& chunk = m_buffer.front();
      while (chunk.pos < chunk.text.size()) {
        char c = chunk.text[chunk.pos++];
        --m_pending;
        any = true;
        if (c == '"') quoted = !quoted;
        if (c == '\n' || (c == ';' && !quoted)) {
          if (chunk.pos == chunk.text.size()) m_buffer.pop_front();
          return true;
        }
        command += c;
      }
      m_buffer.pop_front();
    }
    return any;
  }

  void Grow(size_t bytes) {
    m_pending += bytes;
    if (m_pending > m_peak) m_peak = m_pending;
  }

  void RunCommand(const char* text) {
    Tokens tokens;
    char token[MAX_TOKEN_CHARS];
    for (const char* p = text; (p = ParseToken(p, token, sizeof token));) tokens.argv.push_back(token);
    if (tokens.argv.empty()) return;
    tokens.args = ArgsAfterName(text);
    Tokens* outer = m_current;
    m_current = &tokens;
    Dispatch(tokens);
    m_current = outer;
  }

  static std::string ArgsAfterName(const char* text) {
    char token[MAX_TOKEN_CHARS];
    const char* p = ParseToken(text, token, sizeof token);
    while (*p == ' ' || *p == '\t') ++p;
    std::string args(p);
    while (!args.empty() && (args.back() == ' ' || args.back() == '\t' || args.back() == '\r')) args.pop_back();
    return args;
  }

  void Dispatch(const Tokens& tokens) {
    const char* name = tokens.argv[0].c_str();
    if (strcasecmp(name, "echo") == 0) {
      Msg("%s\n", tokens.args.c_str());
      return;
    }
    ConCommandBase* base = FindCommand(name);
    if (!base) {
      Msg("Unknown command \"%s\"\n", name);
      return;
    }
    if (base->IsCommand()) {
      static_cast<ConCommand*>(base)->Dispatch();
      return;
    }
    ConVar* var = static_cast<ConVar*>(base);
    if (tokens.argv.size() < 2)
      Msg("\"%s\" = \"%s\"\n", var->GetName(), var->GetString());
    else
      var->SetValue(tokens.argv[1].c_str());
  }

  std::deque<Chunk> m_buffer;
  size_t m_pending = 0;
  size_t m_peak = 0;
  Tokens* m_current = nullptr;
  ConCommandBase* m_head = nullptr;
  std::unordered_map<std::string, ConCommandBase*> m_byName;
};

class FakeGame : public IServerGameDLL {
public:
  ServerClass* GetAllServerClasses() override { return nullptr; }
  const char* GetGameDescription() override { return "Tidewright Test Game"; }
  bool GetUserMessageInfo(int, char*, int, int&) override { return false; }
};

class FakePhysicsEnvironment : public IPhysicsEnvironment {
public:
  Vector gravity{0, 0, -600};
  void SetGravity(const Vector& g) override { gravity = g; }
  void GetGravity(Vector* g) const override { *g = gravity; }
  void SetAirDensity(float) override {}
  float GetAirDensity() const override { return 0; }
  void SetObjectEventHandler(IPhysicsObjectEvent*) override {}
  int GetActiveObjectCount() const override { return 0; }
  void GetActiveObjects(IPhysicsObject**) const override {}
};

class FakePhysics : public IPhysics {
public:
  FakePhysicsEnvironment environment;
  IPhysicsEnvironment* GetActiveEnvironmentByIndex(int index) override { return index == 0 ? &environment : nullptr; }
};

struct FakeWorld {
  FakeServer server;
  FakeGame game;
  FakePhysics physics;
  CGlobalVars globals;

  static void* Factory(const char* name, int* code) {
    bool known = strcmp(name, VENGINE_CVAR_INTERFACE_VERSION) == 0;
    if (code) *code = known ? IFACE_OK : IFACE_FAILED;
    return known ? static_cast<ICvar*>(&s_world->server) : nullptr;
  }

  static FakeWorld& Get() {
    if (!s_world) {
      s_world = new FakeWorld;
      engine = &s_world->server;
      filesystem = &s_world->server;
      gamedll = &s_world->game;
      ::physics = &s_world->physics;
      gpGlobals = &s_world->globals;
      ConnectConsole(&FakeWorld::Factory);
    }
    return *s_world;
  }

private:
  static inline FakeWorld* s_world = nullptr;
};

inline FakeServer& Server() { return FakeWorld::Get().server; }
