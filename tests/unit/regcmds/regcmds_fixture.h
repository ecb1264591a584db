// The fixture of the wrapper and registered command tests: the shared stand-in with the real plugin, two
// players connected once for the binary, and a listener that records the plugin's chat and client command
// events as they fire.
#pragma once

#include <string>
#include <vector>

#include "../script/script_fixture.h"
#include "eiface.h"
#include "host/engine_surface.h"
#include "host/plugin.h"
#include "igameevents.h"
#include "world/sim_world.h"

// Each event as one line: "<name> <key>=<value>..." with the keys that the plugin sets.
class EventRecorder final : public IGameEventListener2 {
public:
  std::vector<std::string> seen;

  void FireGameEvent(IGameEvent* event) override {
    std::string line = event->GetName();
    if (strcmp(event->GetName(), "tw_player_chat") == 0) {
      line += " userid=" + std::to_string(event->GetInt("userid")) +
              " teamonly=" + std::to_string(event->GetBool("teamonly")) + " text=" + event->GetString("text");
    } else {
      line += " userid=" + std::to_string(event->GetInt("userid")) + " command=" + event->GetString("command") +
              " commandstring=" + event->GetString("commandstring");
    }
    seen.push_back(line);
  }
};

class RegCmdsTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    gameeventmanager->AddListener(&m_events, "tw_player_chat", true);
    gameeventmanager->AddListener(&m_events, "tw_client_command", true);
    tidewright_cmdprefixes.SetValue("!");
    g_TidewrightPlugin.SetCommandClient(-1);  // lines come from the server console
    Run("sim_messages on");
  }
  void TearDown() override {
    gameeventmanager->RemoveListener(&m_events);
    g_TidewrightPlugin.SetCommandClient(-1);
    ScriptTest::TearDown();
  }

  // A player of the shared server, connected at the first call for the name.
  static CClient& Player(const char* name) {
    for (CClient* client : SimWorld().Clients())
      if (client->name == name) return *client;
    Run(std::string("sim_connect ") + name);
    for (CClient* client : SimWorld().Clients())
      if (client->name == name) return *client;
    ADD_FAILURE() << "could not connect " << name;
    return *SimWorld().Clients().front();
  }
  static std::string Userid(const CClient& client) { return std::to_string(client.userid); }

  // The recorded events, one per line, and forgets them.
  std::string Events() {
    std::string text;
    for (const std::string& line : m_events.seen) text += line + "\n";
    m_events.seen.clear();
    return text;
  }

  // A script whose block `args` stores what a registered command gave it: its userid, argc, argv 0 and 1
  // and args, in rc_who, rc_argc, rc_argv0, rc_argv1, rc_args.
  static void LoadArgsScript() {
    Load("rc", "block load\n{\n  tw_xset rc_who 0\n  tw_xset rc_argc 0\n  tw_xset rc_argv0 \"\"\n"
               "  tw_xset rc_argv1 \"\"\n  tw_xset rc_args \"\"\n}\n"
               "block args\n{\n  tw_xgetcmduserid rc_who\n  tw_xgetargc rc_argc\n  tw_xgetargv rc_argv0 0\n"
               "  tw_xgetargv rc_argv1 1\n  tw_xgetargs rc_args\n}\n");
  }
  static std::string BlockSaw() {
    return "who=" + Var("rc_who") + " argc=" + Var("rc_argc") + " argv0=" + Var("rc_argv0") +
           " argv1=" + Var("rc_argv1") + " args=" + Var("rc_args");
  }

private:
  EventRecorder m_events;
};
