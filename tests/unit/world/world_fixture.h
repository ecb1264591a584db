// A plugin for world tests that records the callbacks about clients, and a stand-in server running it.
#pragma once

#include <cstring>
#include <string>
#include <utility>

#include "eiface.h"
#include "iplayerinfo.h"
#include "iserverplugin.h"
#include "output_capture.h"
#include "test_server.h"
#include "world/sim_world.h"

class RecordingPlugin final : public IServerPluginCallbacks {
public:
  static RecordingPlugin& Get() { static RecordingPlugin plugin; return plugin; }
  static void* Factory(const char* name, int* rc) {
    bool ok = strcmp(name, INTERFACEVERSION_ISERVERPLUGINCALLBACKS) == 0;
    if (rc) *rc = ok ? IFACE_OK : IFACE_FAILED;
    return ok ? static_cast<IServerPluginCallbacks*>(&Get()) : nullptr;
  }
  // The calls since the last Take, one a line.
  std::string Take() { return std::exchange(calls, ""); }

  std::string calls;
  IVEngineServer* engine = nullptr;
  PLUGIN_RESULT commandResult = PLUGIN_CONTINUE;
  bool allowConnect = true;

  bool Load(CreateInterfaceFn engineFactory, CreateInterfaceFn) override {
    calls += "Load\n";
    engine = static_cast<IVEngineServer*>(engineFactory(INTERFACEVERSION_VENGINESERVER, nullptr));
    return engine != nullptr;
  }
  void Unload() override { calls += "Unload\n"; }
  void Pause() override {}
  void UnPause() override {}
  const char* GetPluginDescription() override { return "recording"; }
  void LevelInit(const char* map) override { calls += std::string("LevelInit ") + map + "\n"; }
  void ServerActivate(edict_t*, int count, int maxClients) override {
    calls += "ServerActivate " + std::to_string(count) + " " + std::to_string(maxClients) + "\n";
  }
  void GameFrame(bool) override {}
  void LevelShutdown() override { calls += "LevelShutdown\n"; }
  void ClientActive(edict_t* e) override { Add("ClientActive", e); }
  void ClientDisconnect(edict_t* e) override { Add("ClientDisconnect", e); }
  void ClientPutInServer(edict_t* e, const char* name) override { Add(std::string("ClientPutInServer ") + name, e); }
  void SetCommandClient(int index) override { calls += "SetCommandClient " + std::to_string(index) + "\n"; }
  void ClientSettingsChanged(edict_t* e) override { Add("ClientSettingsChanged", e); }
  PLUGIN_RESULT ClientConnect(bool* allow, edict_t* e, const char* name, const char*, char* reject, int) override {
    Add(std::string("ClientConnect ") + name, e);
    *allow = allowConnect;
    if (!allowConnect) strcpy(reject, "banned");
    return PLUGIN_CONTINUE;
  }
  PLUGIN_RESULT ClientCommand(edict_t* e) override {
    Add(std::string("ClientCommand ") + engine->Cmd_Argv(0) + " [" + engine->Cmd_Args() + "]", e);
    return commandResult;
  }
  PLUGIN_RESULT NetworkIDValidated(const char* name, const char* id) override {
    calls += std::string("NetworkIDValidated ") + name + " " + id + "\n";
    return PLUGIN_CONTINUE;
  }
  void OnQueryCvarValueFinished(QueryCvarCookie_t cookie, edict_t* e, EQueryCvarValueStatus status, const char* name,
                                const char* value) override {
    Add("Query " + std::to_string(cookie) + " " + std::to_string(int(status)) + " " + name + "=" + value, e);
  }

private:
  void Add(std::string what, edict_t* e) { calls += what + " @" + std::to_string(engine->IndexOfEdict(e)) + '\n'; }
};

// A server with the recording plugin and four player slots; what the plugin heard at start-up is kept apart.
class WorldTest : public ::testing::Test {
protected:
  static TestServer::Options Options() {
    RecordingPlugin::Get() = RecordingPlugin();
    TestServer::Options o;
    o.plugin = &RecordingPlugin::Factory;
    o.args = {"--maxplayers", "4"};
    return o;
  }
  WorldTest() : server(Options()), startup(Plugin().Take()) {}

  CSimWorld& World() { return static_cast<CSimWorld&>(server.Server().World()); }
  IVEngineServer& Engine() { return server.Server().Engine(); }
  RecordingPlugin& Plugin() { return RecordingPlugin::Get(); }
  edict_t* Edict(int index) { return Engine().PEntityOfEntIndex(index); }
  IPlayerInfo* Info(int i) { return Iface<IPlayerInfoManager>("PlayerInfoManager002")->GetPlayerInfo(Edict(i)); }
  // An interface of the game's factory or, failing that, of the engine's.
  template <class T>
  T* Iface(const char* name) {
    void* game = CStandIn::GameFactory(name, nullptr);
    return static_cast<T*>(game ? game : CStandIn::EngineFactory(name, nullptr));
  }

  TestServer server;
  std::string startup;
};
