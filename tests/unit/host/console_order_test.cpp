// Reordering the engine's console chain: the busiest commands move behind the head in table order; a head
// match stays, names nobody bears still advance the walk, variables never move, and a second run is a no-op.
#include <memory>
#include <utility>
#include <string>
#include <vector>

#include "host_fixture.h"

namespace {

using Names = std::vector<std::string>;

// Chains of their own, built of objects that register into them; the shared server's chain is left alone.
class ConsoleOrderTest : public HostTest {
protected:
  void TearDown() override { cvar = &Standin().Console(); }

  // Makes a fresh chain of the names in the given order, current from now on; a name starting with '$' is a
  // variable of the rest of the name.
  void Build(const Names& names) {
    m_chains.push_back(std::make_unique<CCvar>());
    cvar = m_chains.back().get();
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
      bool variable = (*it)[0] == '$';
      m_names.push_back(std::make_unique<std::string>(it->substr(variable ? 1 : 0)));
      const char* name = m_names.back()->c_str();
      if (variable)
        m_objects.push_back(std::make_unique<ConVar>(name, "0", 0, "v"));
      else
        m_objects.push_back(std::make_unique<ConCommand>(name, nullptr, "c"));
    }
  }
  // The current chain, variables marked with '$'.
  static Names Order() {
    Names names;
    for (ConCommandBase* b = cvar->GetCommands(); b; b = b->GetNext())
      names.push_back((b->IsCommand() ? "" : "$") + std::string(b->GetName()));
    return names;
  }

private:
  std::vector<std::unique_ptr<CCvar>> m_chains;
  std::vector<std::unique_ptr<std::string>> m_names;
  std::vector<std::unique_ptr<ConCommandBase>> m_objects;
};

TEST_F(ConsoleOrderTest, TableCommandsMoveBehindTheHeadInTableOrder) {
  const std::pair<Names, Names> cases[] = {
      {{"head", "x", "tw__eb", "y", "tw__ip", "tw__sb"}, {"head", "tw__ip", "tw__sb", "tw__eb", "x", "y"}},
      {{"tw__sb", "a", "tw__ip"}, {"tw__sb", "tw__ip", "a"}},  // a match at the head stays
      // Four names nobody bears walk past the four nodes behind the head before tw_set's turn comes.
      {{"h", "a", "b", "c", "tw_set"}, {"h", "a", "b", "c", "tw_set"}},
      {{"h", "x", "TW__IP"}, {"h", "TW__IP", "x"}},
      {{"h", "x", "$tw__ip", "tw__ip"}, {"h", "tw__ip", "x", "$tw__ip"}},  // variables never move
      {{"h", "$tw__ip", "z", "tw__ip"}, {"h", "$tw__ip", "z", "tw__ip"}},  // but count as in place
  };
  for (const auto& [chain, reordered] : cases) {
    Build(chain);
    ReorderConsoleChain();
    EXPECT_EQ(Order(), reordered);
    ReorderConsoleChain();  // a second run moves nothing
    EXPECT_EQ(Order(), reordered);
  }
}

TEST_F(ConsoleOrderTest, MoveCommandAfterMovesOnlyACommandNotInPlace) {
  Build({});
  ReorderConsoleChain();  // an empty chain is left alone
  MoveCommandAfter("tw__ip", nullptr);
  EXPECT_EQ(cvar->GetCommands(), nullptr);

  Build({"h", "tw__ip", "x", "tw__sb", "b"});
  ConCommandBase* head = cvar->GetCommands();
  MoveCommandAfter("tw__ip", head);  // already in place
  MoveCommandAfter("h", head);       // the node itself
  MoveCommandAfter("nobody", head);
  EXPECT_EQ(Order(), (Names{"h", "tw__ip", "x", "tw__sb", "b"}));
  MoveCommandAfter("tw__ip", head->GetNext()->GetNext()->GetNext()->GetNext());
  EXPECT_EQ(Order(), (Names{"h", "x", "tw__sb", "b", "tw__ip"}));
}

TEST_F(ConsoleOrderTest, LevelInitReordersOnlyWhenEifaceIsExactlyOne) {
  Build({"h", "x", "tw__ip"});
  VarRestorer restore(tidewright_eiface), restoreChat(tidewright_chatevent);
  tidewright_chatevent.SetValue(0);  // no say wrappers for this chain after a Load
  OutputCapture quiet;
  tidewright_eiface.SetValue(2);
  g_TidewrightPlugin.LevelInit("m");
  EXPECT_EQ(Order(), (Names{"h", "x", "tw__ip"}));
  tidewright_eiface.SetValue(1);
  g_TidewrightPlugin.LevelInit("m");
  EXPECT_EQ(Order(), (Names{"h", "tw__ip", "x"}));
}

}  // namespace
