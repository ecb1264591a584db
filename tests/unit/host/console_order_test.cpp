// Reordering the engine's console chain: the busiest commands move behind the head in table order; a head
// match stays, names nobody bears still advance the walk, variables never move, and a second run is a no-op.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/plugin.h"
#include "host_fakes.h"
#include "output_capture.h"

namespace {

const std::vector<std::string> kTable = {
    "tw__ip",          "tw__sb",         "tw__eb",          "tw__db",          "tw_xgetargv",
    "tw",              "twnq",           "tw_xsetinfo",     "tw_setinfo",      "tw_xset",
    "tw_set",          "tw_xif",         "tw_xdoblock",     "else",            "if",
    "tw_xgetargs",     "tw_xformatv",    "ifx",             "tw__ep",          "_foreachval",
    "_foreachkey",     "tw_xgetargc",    "tw_getcmduserid", "tw_doblock",      "tw_xfire",
    "tw_fire",         "tw_xdbgmsg",     "tw_dbgmsg",       "tw_xdelayed",     "stack",
    "tw_xkeysetvalue", "tw_keysetvalue", "tw_xkeygetvalue", "tw_keygetvalue",  "tw_xsetindexprop",
    "tw_xsetplayerprop", "tw_xcreateentitylist", "tw_xcreateplayerlist",
};

// A chain of its own, built of objects that register into it; the process-wide chain is left alone.
class ConsoleOrderTest : public ::testing::Test {
protected:
  void SetUp() override {
    ConnectFakeWorld();
    cvar = &chain;
  }
  void TearDown() override { cvar = &FakeWorld::instance().cvar; }

  // Builds the chain in the given order; a name starting with '$' is a variable of the rest of the name.
  void Build(const std::vector<std::string>& names) {
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
      m_names.push_back(std::make_unique<std::string>(it->substr((*it)[0] == '$' ? 1 : 0)));
      const char* name = m_names.back()->c_str();
      if ((*it)[0] == '$')
        m_objects.push_back(std::make_unique<ConVar>(name, "0", 0, "v"));
      else
        m_objects.push_back(std::make_unique<ConCommand>(name, nullptr, "c"));
    }
  }
  std::vector<std::string> Order() const { return chain.Names(); }

  FakeCvar chain;

private:
  std::vector<std::unique_ptr<std::string>> m_names;
  std::vector<std::unique_ptr<ConCommandBase>> m_objects;
};

TEST_F(ConsoleOrderTest, TableCommandsMoveBehindTheHeadInTableOrder) {
  Build({"head", "x", "tw__eb", "y", "tw__ip", "tw__sb"});
  ReorderConsoleChain();
  EXPECT_EQ(Order(), (std::vector<std::string>{"head", "tw__ip", "tw__sb", "tw__eb", "x", "y"}));
}

TEST_F(ConsoleOrderTest, MatchAtTheHeadStays) {
  Build({"tw__sb", "a", "tw__ip"});
  ReorderConsoleChain();
  EXPECT_EQ(Order(), (std::vector<std::string>{"tw__sb", "tw__ip", "a"}));
}

TEST_F(ConsoleOrderTest, MissingNamesStillAdvanceTheWalk) {
  Build({"h", "a", "b", "c", "tw_set"});
  ReorderConsoleChain();
  // Four names nobody bears walk past the four nodes behind the head before tw_set's turn comes.
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "a", "b", "c", "tw_set"}));
}

TEST_F(ConsoleOrderTest, FullTableEndsInTableOrderAndSecondRunMovesNothing) {
  std::vector<std::string> names = {"engine_head", "status"};
  for (auto it = kTable.rbegin(); it != kTable.rend(); ++it) {
    names.push_back(*it);
    names.push_back("filler_" + *it);
  }
  Build(names);
  ReorderConsoleChain();
  std::vector<std::string> order = Order();
  ASSERT_EQ(order.size(), names.size());
  EXPECT_EQ(order[0], "engine_head");
  EXPECT_EQ(std::vector<std::string>(order.begin() + 1, order.begin() + 1 + long(kTable.size())), kTable);

  ReorderConsoleChain();
  EXPECT_EQ(Order(), order);
}

TEST_F(ConsoleOrderTest, VariablesOfATableNameStayWhereTheyAre) {
  Build({"h", "x", "$tw__ip", "tw__ip"});
  ReorderConsoleChain();
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "tw__ip", "x", "tw__ip"}));
  EXPECT_TRUE(chain.head->GetNext()->IsCommand());
}

TEST_F(ConsoleOrderTest, AnyObjectOfTheNameBehindTheNodeCountsAsInPlace) {
  Build({"h", "$tw__ip", "z", "tw__ip"});
  ReorderConsoleChain();
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "tw__ip", "z", "tw__ip"}));
  EXPECT_FALSE(chain.head->GetNext()->IsCommand());
}

TEST_F(ConsoleOrderTest, NamesCompareIgnoringCase) {
  Build({"h", "x", "TW__IP"});
  ReorderConsoleChain();
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "TW__IP", "x"}));
}

TEST_F(ConsoleOrderTest, EmptyChainIsLeftAlone) {
  ReorderConsoleChain();
  EXPECT_EQ(chain.head, nullptr);
  MoveCommandAfter("tw__ip", nullptr);
}

TEST_F(ConsoleOrderTest, MoveCommandAfterLeavesACommandAlreadyInPlace) {
  Build({"h", "tw__ip", "x"});
  MoveCommandAfter("tw__ip", chain.head);
  MoveCommandAfter("h", chain.head);  // the node itself: a command can't stand behind itself
  MoveCommandAfter("nobody", chain.head);
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "tw__ip", "x"}));
}

TEST_F(ConsoleOrderTest, CommandBeforeTheNodeMovesBehindIt) {
  Build({"h", "tw__sb", "a", "b"});
  ConCommandBase* b = chain.head->GetNext()->GetNext()->GetNext();
  MoveCommandAfter("tw__sb", b);
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "a", "b", "tw__sb"}));
}

TEST_F(ConsoleOrderTest, LevelInitReordersOnlyWhenEifaceIsExactlyOne) {
  FakeWorld& world = FakeWorld::instance();
  world.Reset();
  {
    OutputCapture quiet;
    cvar = &world.cvar;
    ASSERT_TRUE(g_TidewrightPlugin.Load(&FakeWorld::EngineFactory, &FakeWorld::GameFactory));
  }
  cvar = &chain;
  Build({"h", "x", "tw__ip"});
  VarRestorer restore(tidewright_eiface);
  // The chain has no say or changelevel for LevelInit to wrap.
  VarRestorer restoreChat(tidewright_chatevent), restoreMapHandler(tidewright_maphandler);
  tidewright_chatevent.SetValue(0);
  tidewright_maphandler.SetValue(0);
  OutputCapture quiet;
  tidewright_eiface.SetValue(2);
  g_TidewrightPlugin.LevelInit("m");
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "x", "tw__ip"}));
  tidewright_eiface.SetValue(1);
  g_TidewrightPlugin.LevelInit("m");
  EXPECT_EQ(Order(), (std::vector<std::string>{"h", "tw__ip", "x"}));
}

}  // namespace
