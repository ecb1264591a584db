// A plugin for world tests that records the callbacks about clients, and a stand-in server running it.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "dt_send.h"
#include "eiface.h"
#include "iserverplugin.h"
#include "output_capture.h"
#include "test_server.h"
#include "world/sim_world.h"

class RecordingPlugin final : public IServerPluginCallbacks {
public:
  static RecordingPlugin& Get() {
    static RecordingPlugin plugin;
    return plugin;
  }
  static void* Factory(const char* name, int* rc) {
    bool ok = strcmp(name, INTERFACEVERSION_ISERVERPLUGINCALLBACKS) == 0;
    if (rc) *rc = ok ? IFACE_OK : IFACE_FAILED;
    return ok ? static_cast<IServerPluginCallbacks*>(&Get()) : nullptr;
  }

  std::vector<std::string> calls;
  IVEngineServer* engine = nullptr;
  PLUGIN_RESULT commandResult = PLUGIN_CONTINUE;
  bool allowConnect = true;

  void Reset() {
    calls.clear();
    commandResult = PLUGIN_CONTINUE;
    allowConnect = true;
  }
  std::string Take() {
    std::string text;
    for (const std::string& c : calls) text += c + "\n";
    calls.clear();
    return text;
  }

  bool Load(CreateInterfaceFn engineFactory, CreateInterfaceFn) override {
    engine = static_cast<IVEngineServer*>(engineFactory(INTERFACEVERSION_VENGINESERVER, nullptr));
    return engine != nullptr;
  }
  void Unload() override {}
  void Pause() override {}
  void UnPause() override {}
  const char* GetPluginDescription() override { return "recording"; }
  void LevelInit(const char*) override {}
  void ServerActivate(edict_t*, int, int) override {}
  void GameFrame(bool) override {}
  void LevelShutdown() override {}
  void ClientActive(edict_t* e) override { Add("ClientActive", e); }
  void ClientDisconnect(edict_t* e) override { Add("ClientDisconnect", e); }
  void ClientPutInServer(edict_t* e, const char* name) override { Add(std::string("ClientPutInServer ") + name, e); }
  void SetCommandClient(int index) override { calls.push_back("SetCommandClient " + std::to_string(index)); }
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
    calls.push_back(std::string("NetworkIDValidated ") + name + " " + id);
    return PLUGIN_CONTINUE;
  }
  void OnQueryCvarValueFinished(QueryCvarCookie_t cookie, edict_t* e, EQueryCvarValueStatus status, const char* name,
                                const char* value) override {
    Add("Query " + std::to_string(cookie) + " " + std::to_string(int(status)) + " " + name + "=" + value, e);
  }

private:
  void Add(const std::string& what, edict_t* e) {
    calls.push_back(what + " @" + std::to_string(engine ? engine->IndexOfEdict(e) : -1));
  }
};

// A server with the recording plugin, four player slots and the world at hand.
class WorldTest : public ::testing::Test {
protected:
  static TestServer::Options Options() {
    RecordingPlugin::Get().Reset();
    TestServer::Options o;
    o.plugin = &RecordingPlugin::Factory;
    o.args = {"--maxplayers", "4"};
    return o;
  }
  // What the plugin heard while the server started is not what the tests look at.
  WorldTest() : server(Options()) { Plugin().Take(); }

  CSimWorld& World() { return static_cast<CSimWorld&>(server.Server().World()); }
  IVEngineServer& Engine() { return server.Server().Engine(); }
  RecordingPlugin& Plugin() { return RecordingPlugin::Get(); }
  template <class T>
  T* GameInterface(const char* name) {
    return static_cast<T*>(CStandIn::GameFactory(name, nullptr));
  }
  template <class T>
  T* EngineInterface(const char* name) {
    return static_cast<T*>(CStandIn::EngineFactory(name, nullptr));
  }

  TestServer server;
};

// The offset of a dotted property path, walked through the server classes as a plugin walks them; -1 when
// the path isn't found.
inline int PropertyOffset(IServerGameDLL* dll, const char* path) {
  std::string rest = path;
  size_t dot = rest.find('.');
  std::string head = rest.substr(0, dot);
  rest = dot == std::string::npos ? "" : rest.substr(dot + 1);
  SendTable* table = nullptr;
  for (ServerClass* c = dll->GetAllServerClasses(); c; c = c->m_pNext)
    if (strcasecmp(c->GetName(), head.c_str()) == 0) table = c->m_pTable;
  int offset = 0;
  while (table) {
    dot = rest.find('.');
    head = rest.substr(0, dot);
    rest = dot == std::string::npos ? "" : rest.substr(dot + 1);
    SendProp* found = nullptr;
    for (int i = 0; i < table->GetNumProps(); ++i)
      if (table->GetProp(i)->GetName() && strcasecmp(table->GetProp(i)->GetName(), head.c_str()) == 0)
        found = table->GetProp(i);
    if (!found) return -1;
    offset += found->GetOffset();
    if (found->GetType() != DPT_DataTable) return offset;
    table = found->GetDataTable();
  }
  return -1;
}
