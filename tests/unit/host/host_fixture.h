// The host tests run against the shared stand-in server with the real plugin. Load can be driven again
// through the stand-in's factories with names withheld, each name asked recorded as "engine:" or "game:".
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "keygroups/keygroups.h"
#include "output_capture.h"
#include "plugin.h"
#include "standin.h"
#include "test_server.h"

// Gives a variable its text back when a test ends.
class VarRestorer {
public:
  explicit VarRestorer(ConVar& var) : m_var(var), m_text(var.GetString()) {}
  ~VarRestorer() { m_var.SetValue(m_text.c_str()); }

private:
  ConVar& m_var;
  std::string m_text;
};

struct FilteredFactories {
  static inline std::set<std::string> withheld;
  static inline std::vector<std::string> asked;

  static void* Ask(const char* side, CreateInterfaceFn real, const char* name, int* code) {
    asked.push_back(std::string(side) + ":" + (name ? name : "(null)"));
    void* found = name && withheld.count(name) ? nullptr : real(name, nullptr);
    if (code) *code = found ? IFACE_OK : IFACE_FAILED;
    return found;
  }
  static void* Engine(const char* name, int* code) { return Ask("engine", &CStandIn::EngineFactory, name, code); }
  static void* Game(const char* name, int* code) { return Ask("game", &CStandIn::GameFactory, name, code); }
};

class HostTest : public ::testing::Test {
protected:
  static CStandIn& Standin() { return TestServer::Shared().Server(); }
  static std::string Run(const std::string& lines) { return TestServer::Shared().Run(lines); }
  // Loads again with the names withheld; what Load printed goes to `printed`.
  static bool Reload(std::set<std::string> withheld = {}, std::string* printed = nullptr) {
    FilteredFactories::withheld = std::move(withheld);
    FilteredFactories::asked.clear();
    OutputCapture capture;
    bool loaded = g_TidewrightPlugin.Load(&FilteredFactories::Engine, &FilteredFactories::Game);
    if (printed) *printed = capture.Take();
    return loaded;
  }
  void SetUp() override {
    Standin().Cbuf().Clear();
    ClearInstruction();
  }
};
