// The console chain and its index: names ignoring case, the most recent registration winning, relinking.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "console.h"
#include "output_capture.h"

namespace {

void Nothing() {}

// Console objects made the way a plugin's are once its accessor is known: unchained, then registered.
std::unique_ptr<ConCommand> MakeCommand(const char* name) {
  return std::make_unique<ConCommand>(name, &Nothing, "help", FCVAR_UNREGISTERED);
}

std::unique_ptr<ConVar> MakeVar(const char* name, const char* value, int flags = 0) {
  return std::make_unique<ConVar>(name, value, flags | FCVAR_UNREGISTERED, "help");
}

TEST(ConsoleIndex, FindsNamesIgnoringCase) {
  CCvar console;
  auto cmd = MakeCommand("tw_Thing");
  auto var = MakeVar("My_Var", "1");
  console.RegisterConCommandBase(cmd.get());
  console.RegisterConCommandBase(var.get());
  EXPECT_EQ(console.FindCommandBase("TW_THING"), cmd.get());
  EXPECT_EQ(console.FindVar("my_var"), var.get());
  EXPECT_TRUE(cmd->IsRegistered());
  EXPECT_EQ(console.FindCommandBase("missing"), nullptr);
}

TEST(ConsoleIndex, FindVarIgnoresCommands) {
  CCvar console;
  auto cmd = MakeCommand("both");
  console.RegisterConCommandBase(cmd.get());
  EXPECT_EQ(console.FindVar("both"), nullptr);
  EXPECT_EQ(console.FindVar(nullptr), nullptr);
}

TEST(ConsoleIndex, MostRecentRegistrationWins) {
  CCvar console;
  auto first = MakeCommand("say");
  auto second = MakeCommand("SAY");
  console.RegisterConCommandBase(first.get());
  console.RegisterConCommandBase(second.get());
  EXPECT_EQ(console.FindCommandBase("say"), second.get());
  EXPECT_EQ(console.GetCommands(), second.get());
  EXPECT_EQ(second->GetNext(), first.get());
}

TEST(ConsoleIndex, RelinkingTheChainKeepsLookups) {
  CCvar console;
  auto a = MakeCommand("a");
  auto b = MakeCommand("b");
  auto c = MakeCommand("c");
  for (auto* x : {a.get(), b.get(), c.get()}) console.RegisterConCommandBase(x);
  // Chain is c, b, a. Move a behind the head, as a plugin does with its busiest commands.
  b->SetNext(nullptr);
  c->SetNext(a.get());
  a->SetNext(b.get());
  EXPECT_EQ(console.FindCommandBase("a"), a.get());
  EXPECT_EQ(console.FindCommandBase("b"), b.get());
  int n = 0;
  for (ConCommandBase* x = console.GetCommands(); x; x = x->GetNext()) ++n;
  EXPECT_EQ(n, 3);
}

TEST(ConsoleIndex, RefusesAnObjectWithoutName) {
  CCvar console;
  OutputCapture out;
  ConCommand unnamed;
  console.RegisterConCommandBase(&unnamed);
  console.RegisterConCommandBase(nullptr);
  EXPECT_EQ(console.GetCommands(), nullptr);
  EXPECT_TRUE(out.Contains("refused"));
}

TEST(ConsoleOwned, TableObjectsAreRegisteredHereOnly) {
  // A connected accessor of some module must not see the server's objects.
  struct Spy : IConCommandBaseAccessor {
    int calls = 0;
    bool RegisterConCommandBase(ConCommandBase*) override { return ++calls, true; }
  } spy;
  IConCommandBaseAccessor* before = ConCommandBase::s_pAccessor;
  ConCommandBase* waiting = ConCommandBase::s_pConCommandBases;
  ConCommandBase::s_pAccessor = &spy;
  CCvar console;
  const ConsoleCommandDef cmds[] = {{"t_cmd", &Nothing, "a test command", FCVAR_CHEAT}};
  const ConsoleVarDef vars[] = {{"t_var", "5", FCVAR_NOTIFY, "a test variable", nullptr}};
  console.AddCommands(cmds, 1);
  console.AddVars(vars, 1);
  ConCommandBase::s_pAccessor = before;
  EXPECT_EQ(spy.calls, 0);
  EXPECT_EQ(ConCommandBase::s_pConCommandBases, waiting);
  ConCommandBase* cmd = console.FindCommandBase("t_cmd");
  ASSERT_NE(cmd, nullptr);
  EXPECT_TRUE(cmd->IsRegistered());
  EXPECT_TRUE(cmd->IsBitSet(FCVAR_CHEAT));
  EXPECT_FALSE(cmd->IsBitSet(FCVAR_UNREGISTERED));
  EXPECT_EQ(console.FindVar("t_var")->GetInt(), 5);
}

TEST(ConsoleOwned, CreatedVariablesOwnTheirTexts) {
  CCvar console;
  std::string name = "made_later";
  ConVar* v = console.CreateVar(name.c_str(), "abc", 0, "");
  name = "changed";
  EXPECT_STREQ(v->GetName(), "made_later");
  EXPECT_STREQ(v->GetString(), "abc");
  EXPECT_EQ(console.FindVar("MADE_LATER"), v);
}

TEST(ConsoleNotify, AnnouncesRealChangesOfNotifyVariables) {
  CCvar console;
  ConVar_SetCvarInterface(&console);
  const ConsoleVarDef vars[] = {{"n_var", "1", FCVAR_NOTIFY, "", nullptr}, {"q_var", "1", 0, "", nullptr}};
  console.AddVars(vars, 2);
  static int hooked = 0;
  hooked = 0;
  console.SetNotifyHook([](ConVar*) { ++hooked; });
  OutputCapture out;
  console.FindVar("n_var")->SetValue("2");
  console.FindVar("n_var")->SetValue("2");
  console.FindVar("q_var")->SetValue("2");
  ConVar_SetCvarInterface(nullptr);
  EXPECT_EQ(out.Text(), "Server cvar \"n_var\" changed to 2\n");
  EXPECT_EQ(hooked, 1);
}

}  // namespace
