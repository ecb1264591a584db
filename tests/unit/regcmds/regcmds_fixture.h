// The fixture of the wrapper and registered command tests: the shared stand-in with the real plugin, lines
// coming from the server console, deliveries to clients shown, and players connected once for the binary.
#pragma once

#include <string>

#include "../script/script_fixture.h"
#include "eiface.h"
#include "host/engine_surface.h"
#include "plugin.h"
#include "world/sim_world.h"

class RegCmdsTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    g_TidewrightPlugin.SetCommandClient(-1);
    Run("sim_messages on");
  }
  void TearDown() override {
    g_TidewrightPlugin.SetCommandClient(-1);
    ScriptTest::TearDown();
  }

  // A player of the shared server, connected at the first call for the name.
  static CClient& Player(const char* name) {
    for (int attempt = 0; attempt < 2; ++attempt) {
      for (CClient* client : SimWorld().Clients())
        if (client->name == name) return *client;
      Run(std::string("sim_connect ") + name);
    }
    ADD_FAILURE() << "could not connect " << name;
    return *SimWorld().Clients().front();
  }
};
