// The fixture of the world access tests: the shared stand-in with the real plugin, a server emptied of
// players before every test, and helpers that connect people and bots straight through the world.
#pragma once

#include <string>

#include "../script/script_fixture.h"
#include "edict.h"
#include "eiface.h"
#include "host/engine_surface.h"
#include "plugin.h"
#include "world/sim_world.h"

class WorldAccessTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    DisconnectAll();
    Set("tidewright_deadflag", "1");
  }
  void TearDown() override {
    DisconnectAll();
    Set("tidewright_deadflag", "1");
    ScriptTest::TearDown();
  }

  static void DisconnectAll() {
    OutputCapture quiet;
    for (CClient* client : SimWorld().Clients()) SimWorld().Disconnect(*client, "test over");
  }
  // A person connects; gives the userid.
  static int Connect(const char* name, const char* networkId = "") {
    OutputCapture quiet;
    CClient* client = SimWorld().Connect(name, networkId, false);
    EXPECT_NE(client, nullptr) << name;
    return client ? client->userid : 0;
  }
  static int AddBot(const char* name) {
    OutputCapture quiet;
    CClient* client = SimWorld().Connect(name, "BOT", true);
    EXPECT_NE(client, nullptr) << name;
    return client ? client->userid : 0;
  }
  static CClient& Client(int userid) { return *SimWorld().ClientByUserid(userid); }
  static edict_t* EdictOf(int userid) { return engine->PEntityOfEntIndex(Client(userid).slot); }
  static std::string LastError() { return Var("tidewright_lasterror"); }
};
