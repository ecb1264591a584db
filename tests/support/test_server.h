// A whole stand-in server inside a test. TestServer copies the demo tree as built (build/demo: the tracked
// files of demo/ and the plugin's event file, never what a run left in demo/) to a fresh temporary folder,
// starts the server there with a plugin (or none), runs console lines to their end and hands back what
// they printed.
//
//   TestServer server;                                   // no plugin
//   EXPECT_EQ(server.Run("echo hi"), "hi\n");
//
//   TestServer::Options o;
//   o.plugin = &MyFakePlugin::CreateInterface;           // a test's own plugin
//   o.args = {"--map", "de_test", "--without", "VPhysics030"};
//   o.files = {{"cfg/mine.cfg", "echo mine\n"}};         // written under game/ before start-up
//   TestServer server(o);
//   server.StartupOutput();                              // what start-up printed (Load, autoexec, ...)
//
// The real plugin (TestServer::RealPlugin(), the CreateInterface linked into every test binary) keeps
// process-wide state, so a test binary loads it once: use TestServer::Shared(), one server with the real
// plugin that lives until the binary ends. Other TestServers may come and go meanwhile; while one lives,
// console handlers and the interface factories belong to it, and the shared one is current again after.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "basetypes.h"
#include "standin.h"

class TestServer {
public:
  struct Options {
    CreateInterfaceFn plugin = nullptr;          // null runs without a plugin
    std::vector<std::string> args;               // as tidewright-server takes them; --game is set here
    std::map<std::string, std::string> files;    // path under game/ -> content
  };

  TestServer();
  explicit TestServer(const Options& options);
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  // Runs each line of `lines` (split at line feeds) as an input line, each to its end, and gives the
  // output printed meanwhile.
  std::string Run(const std::string& lines);
  const std::string& StartupOutput() const { return m_startup; }

  CStandIn& Server() { return *m_server; }
  // The temporary server root (holding hl2/ and game/) and the mod directory in it.
  const std::string& Root() const { return m_root; }
  std::string GameDir() const { return m_root + "/game"; }

  static CreateInterfaceFn RealPlugin();
  // The one server with the real plugin, started at the first call.
  static TestServer& Shared();

private:
  std::string m_root;
  std::string m_startup;
  CStandIn* m_server = nullptr;
};

// Writes `text` to `path`, making the folders on the way.
void WriteTestFile(const std::filesystem::path& path, const std::string& text);
// `text` with every `from` replaced by `to`.
std::string Replaced(std::string text, const std::string& from, const std::string& to);
