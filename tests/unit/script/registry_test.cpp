// The registry: event chains across scripts with removals in every position, duplicate names, case rules,
// block handles that never name another block after a removal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "script_fixture.h"

namespace {

using Names = std::vector<std::string>;

class RegistryTest : public ScriptTest {
protected:
  CScriptRegistry& registry = g_scriptMachine.registry;

  CScript* Add(const std::string& name, const std::string& text) {
    CScript* script = new CScript(name.c_str());
    script->ParseBuffer(text.c_str(), text.size() + 1);
    if (!registry.AddScript(script)) {
      delete script;
      return nullptr;
    }
    return script;
  }
  // The scripts of an event's chain, head to tail, checked in both directions.
  Names Chain(const char* event) {
    Names names;
    CBlock* previous = nullptr;
    for (CBlock* b = registry.GetEventHead(event); b; b = b->nextEvent) {
      EXPECT_EQ(b->prevEvent, previous);
      names.push_back(b->script->name);
      previous = b;
    }
    return names;
  }
  static std::string De(BlockHandle handle) {
    char text[32];
    snprintf(text, sizeof text, "tw__de %llx;", static_cast<unsigned long long>(handle));
    return text;
  }
};

TEST_F(RegistryTest, RemovalsInEveryPositionKeepTheChainLinked) {
  // Steps on the chain of A, B and C: a name removes that script (in any case), "+name" loads it again.
  const struct {
    Names steps;
    Names left;
  } cases[] = {{{"B"}, {"A", "C"}},      {{"A"}, {"B", "C"}},      {{"C"}, {"A", "B"}},
               {{"b", "A"}, {"C"}},      {{"C", "A"}, {"B"}},      {{"B", "A", "C"}, {}},
               {{"A", "C", "B"}, {}},    {{"A", "+A"}, {"B", "C", "A"}}};
  const char* const kText = "event spawn\n{\n}\nblock b\n{\n}\n";
  for (const auto& c : cases) {
    ResetScriptMachine();
    for (const char* name : {"A", "B", "C"}) Add(name, kText);
    for (const std::string& step : c.steps)
      if (step[0] == '+')
        Add(step.substr(1), kText);
      else
        EXPECT_TRUE(registry.RemoveScript(step.c_str())) << step;
    EXPECT_EQ(Chain("spawn"), c.left) << c.steps.size();
    EXPECT_EQ(registry.HasEvent("spawn"), !c.left.empty());
    for (std::string name : {"A", "B", "C"}) {
      bool kept = std::find(c.left.begin(), c.left.end(), name) != c.left.end();
      EXPECT_EQ(registry.GetBlock((name + "/b").c_str()) != nullptr, kept) << name;
      EXPECT_EQ(registry.GetBlock((name + "/spawn").c_str()) != nullptr, kept) << name;
    }
  }
}

TEST_F(RegistryTest, NamesAndDuplicates) {
  // Script names ignore case, block names don't.
  Add("foo", "block Bar\n{\n}\nblock bar\n{\n}\nblock bar/x\n{\n}\n");
  EXPECT_EQ(Add("FOO", "block x\n{\n}\n"), nullptr);
  EXPECT_NE(registry.FindScript("FoO"), nullptr);
  CBlock* upper = registry.GetBlock("foo/Bar");
  CBlock* lower = registry.GetBlock("foo/bar");
  ASSERT_TRUE(upper && lower);
  EXPECT_NE(upper, lower);
  EXPECT_EQ(registry.GetBlock("FOO/bar"), nullptr);
  // Script "foo" section "bar/x" and script "foo/bar" section "x" both make "foo/bar/x": it stays with "foo".
  CBlock* owner = registry.GetBlock("foo/bar/x");
  ASSERT_NE(owner, nullptr);
  Add("foo/bar", "block x\n{\n}\n");
  EXPECT_EQ(registry.GetBlock("foo/bar/x"), owner);
  registry.RemoveScript("foo/bar");
  EXPECT_EQ(registry.GetBlock("foo/bar/x"), owner);
  // Two sections of one name: the first is found, and an event chain runs the first one twice.
  CScript* blocks = Add("dup", "block x\n{\n}\nblock x\n{\n}\n");
  ASSERT_NE(blocks->firstBlock->next, nullptr);
  EXPECT_EQ(registry.GetBlock("dup/x"), blocks->firstBlock);
  CScript* events = Add("dupe", "event e\n{\n}\nevent e\n{\n}\n");
  EXPECT_EQ(EventCommands("e"), De(events->firstBlock->handle) + De(events->firstBlock->handle) + "\n");
  registry.RemoveScript("dupe");
  EXPECT_FALSE(registry.HasEvent("e"));
}

TEST_F(RegistryTest, EventCommandsOfEnabledScriptsOnly) {
  for (const char* name : {"A", "B", "C"}) Add(name, "event spawn\n{\n}\n");
  registry.SetScriptEnabled("b", false);
  EXPECT_EQ(EventCommands("spawn"), De(registry.GetEventHash("A/spawn")) + De(registry.GetEventHash("C/spawn")) + "\n");
  registry.SetScriptEnabled("A", false);
  registry.SetScriptEnabled("C", false);
  EXPECT_TRUE(registry.HasEvent("spawn"));
  EXPECT_EQ(EventCommands("spawn"), "\n");
  EXPECT_EQ(EventCommands("nobody_listens"), "\n");
}

TEST_F(RegistryTest, ManyScriptsOnOneEventSplitIntoConsoleLines) {
  for (int i = 0; i < 300; ++i) Add("s" + std::to_string(i), "event crowded\n{\n}\n");
  std::string text = EventCommands("crowded");
  size_t count = 0, start = 0;
  for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    EXPECT_LE(end - start, 2047u);
    for (size_t p = start; (p = text.find("tw__de ", p)) != std::string::npos && p < end; ++p) ++count;
  }
  EXPECT_EQ(count, 300u);
}

TEST_F(RegistryTest, HandlesOfRemovedBlocksNameNothing) {
  EXPECT_EQ(registry.GetEventHash("no/such"), 0u);
  EXPECT_EQ(registry.GetEvent(0), nullptr);
  EXPECT_EQ(registry.GetEvent(0xFFFFFFFFFFFFull), nullptr);
  // "AB" and "B!" hash alike (times 33 plus the byte), so "AB/e" and "B!/e" share a bucket of the table.
  ASSERT_EQ(NameTable<int>::Hash("AB/e"), NameTable<int>::Hash("B!/e"));
  Add("AB", "event e\n{\n}\n");
  Add("B!", "event e\n{\n}\n");
  BlockHandle first = registry.GetEventHash("AB/e");
  BlockHandle second = registry.GetEventHash("B!/e");
  ASSERT_NE(first, 0u);
  registry.RemoveScript("AB");
  EXPECT_EQ(registry.GetEvent(first), nullptr);
  ASSERT_NE(registry.GetEvent(second), nullptr);
  EXPECT_STREQ(registry.GetEvent(second)->name, "B!/e");
  EXPECT_EQ(registry.GetEventHash("B!/e"), second);
}

}  // namespace
