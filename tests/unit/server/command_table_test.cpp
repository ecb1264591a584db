// The stand-in's command tables: the dispatch checks a row's cheat flag and minimum count before its
// handler runs, whichever way the command is reached, and a handler can print its own row's usage.
#include <gtest/gtest.h>

#include <string>

#include "eiface.h"
#include "output_capture.h"
#include "test_server.h"
#include "tier0.h"

namespace {

IVEngineServer& Engine() { return g_standIn->Engine(); }

void Two_f() { Msg("two %s\n", Engine().Cmd_Argv(1)); }
// Accepts only a number; anything else is a value of the wrong kind.
void Number_f() {
  if (Engine().Cmd_Argv(1)[0] < '0' || Engine().Cmd_Argv(1)[0] > '9') PrintConsoleUsage();
  else Msg("number %s\n", Engine().Cmd_Argv(1));
}
// Reaches other table commands directly, as a plugin's wrapper does, then reports a bad value of its own.
void DispatchDirectly(const char* name) { static_cast<ConCommand*>(g_standIn->Console().FindCommandBase(name))->Dispatch(); }
void Outer_f() {
  DispatchDirectly("t_number");
  DispatchDirectly("t_three");
  PrintConsoleUsage();
}
void Three_f() { Msg("three\n"); }

const ConsoleCommandDef kRows[] = {
    {"t_two", Two_f, "", 0, 2, "Usage: t_two <x>\n"},
    {"t_cheat", Two_f, "", FCVAR_CHEAT, 2, "Usage: t_cheat <x>\n"},
    {"t_number", Number_f, "", 0, 2, "Usage: t_number <digits>\n"},
    {"t_outer", Outer_f, "", 0, 2, "Usage: t_outer <x>\n"},
    {"t_three", Three_f, "", 0, 3, "Usage: t_three <a> <b>\n"},
    {"t_plain", Three_f, "", 0},
};

TEST(CommandTable, TheDispatchChecksCheatsThenCountThenRunsTheHandler) {
  TestServer server;
  server.Server().Console().AddCommands(kRows, std::size(kRows));
  struct Case {
    const char* line;
    const char* output;
  } cases[] = {
      {"t_two", "Usage: t_two <x>\n"},
      {"T_TWO a", "two a\n"},
      {"t_plain", "three\n"},
      {"t_cheat", "Can't use cheat command t_cheat unless sv_cheats is 1\n"},
      {"t_cheat a", "Can't use cheat command t_cheat unless sv_cheats is 1\n"},
      {"sv_cheats 1; t_cheat", "Server cvar \"sv_cheats\" changed to 1\nUsage: t_cheat <x>\n"},
      {"t_cheat a", "two a\n"},
      {"t_number x", "Usage: t_number <digits>\n"},
      {"t_number 7", "number 7\n"},
      // Reached directly under "t_outer x": t_number reads x, t_three finds two tokens, and the outer
      // handler's own usage is its own again after both.
      {"t_outer x", "Usage: t_number <digits>\nUsage: t_three <a> <b>\nUsage: t_outer <x>\n"},
      {"t_outer 5 b", "number 5\nthree\nUsage: t_outer <x>\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(server.Run(c.line), c.output) << c.line;
  // Outside any handler there is no row to print.
  OutputCapture out;
  PrintConsoleUsage();
  EXPECT_EQ(out.Take(), "");
}

TEST(CommandTable, EveryServerCommandBelowItsCountPrintsItsRowsUsage) {
  TestServer server;
  server.Run("sv_cheats 1");
  int checked = 0;
  for (ConCommandBase* c = server.Server().Console().GetCommands(); c; c = c->GetNext()) {
    if (!c->IsCommand()) continue;
    const char* usage = static_cast<ConCommand*>(c)->GetUsage();
    // Alone, sim_messages shows its state and help how to find things; their usage answers a bad value.
    if (!usage || std::string(c->GetName()) == "sim_messages" || std::string(c->GetName()) == "help") continue;
    EXPECT_EQ(server.Run(c->GetName()), usage) << c->GetName();
    ++checked;
  }
  EXPECT_GE(checked, 30);  // the 28 handlers that printed their own usage before, and those since
  EXPECT_EQ(server.Run("sim_messages bogus"),
            "Usage: sim_messages on|off: shows or hides what reaches clients\nsim_messages is on\n");
}

}  // namespace
