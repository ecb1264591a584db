// The registry: event chains across scripts with removals in every position, duplicate names, case rules,
// block handles that never name another block after a removal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "script_fixture.h"

namespace {

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
  std::vector<std::string> Chain(const char* event) {
    std::vector<std::string> names;
    CBlock* previous = nullptr;
    for (CBlock* b = registry.GetEventHead(event); b; b = b->nextEvent) {
      EXPECT_EQ(b->prevEvent, previous);
      names.push_back(b->script->name);
      previous = b;
    }
    return names;
  }
  void AddThree() {
    for (const char* name : {"A", "B", "C"}) Add(name, "event spawn\n{\ntw_msg x\n}\nblock b\n{\n}\n");
  }
};

using Names = std::vector<std::string>;

TEST_F(RegistryTest, ChainFollowsLoadOrder) {
  AddThree();
  EXPECT_EQ(Chain("spawn"), (Names{"A", "B", "C"}));
}

TEST_F(RegistryTest, RemovingTheMiddleLinksItsNeighbours) {
  AddThree();
  EXPECT_TRUE(registry.RemoveScript("B"));
  EXPECT_EQ(Chain("spawn"), (Names{"A", "C"}));
}

TEST_F(RegistryTest, RemovingTheHeadMovesTheHead) {
  AddThree();
  registry.RemoveScript("A");
  EXPECT_EQ(Chain("spawn"), (Names{"B", "C"}));
  EXPECT_STREQ(registry.GetEventHead("spawn")->script->name, "B");
}

TEST_F(RegistryTest, RemovingTheTailEndsTheChainEarlier) {
  AddThree();
  registry.RemoveScript("C");
  EXPECT_EQ(Chain("spawn"), (Names{"A", "B"}));
}

TEST_F(RegistryTest, RemovingAllInAnyOrderLeavesNoEntry) {
  AddThree();
  registry.RemoveScript("B");
  registry.RemoveScript("A");
  EXPECT_EQ(Chain("spawn"), (Names{"C"}));
  registry.RemoveScript("C");
  EXPECT_FALSE(registry.HasEvent("spawn"));
  EXPECT_EQ(registry.GetBlock("C/b"), nullptr);
}

TEST_F(RegistryTest, ReloadGoesToTheTail) {
  Add("A", "event e\n{\n}\n");
  Add("B", "event e\n{\n}\n");
  registry.RemoveScript("A");
  Add("A", "event e\n{\n}\n");
  EXPECT_EQ(Chain("e"), (Names{"B", "A"}));
}

TEST_F(RegistryTest, AllEventScriptEmptiesTheBlockTable) {
  Add("ev", "event one\n{\n}\nevent two\n{\n}\n");
  ASSERT_NE(registry.GetBlock("ev/one"), nullptr);
  registry.RemoveScript("ev");
  EXPECT_EQ(registry.GetBlock("ev/one"), nullptr);
  EXPECT_EQ(registry.GetBlock("ev/two"), nullptr);
  EXPECT_FALSE(registry.HasEvent("one"));
}

TEST_F(RegistryTest, ScriptNamesIgnoreCaseBlockNamesDont) {
  Add("foo", "block Bar\n{\n}\nblock bar\n{\n}\n");
  EXPECT_EQ(Add("FOO", "block x\n{\n}\n"), nullptr);
  EXPECT_NE(registry.FindScript("FoO"), nullptr);
  CBlock* upper = registry.GetBlock("foo/Bar");
  CBlock* lower = registry.GetBlock("foo/bar");
  ASSERT_TRUE(upper && lower);
  EXPECT_NE(upper, lower);
  EXPECT_EQ(registry.GetBlock("FOO/bar"), nullptr);
}

TEST_F(RegistryTest, DuplicateNamesKeepTheFirst) {
  CScript* script = Add("dup", "block x\n{\ntw_msg first\n}\nblock x\n{\ntw_msg second\n}\n");
  CBlock* first = script->firstBlock;
  ASSERT_NE(first->next, nullptr);
  EXPECT_EQ(registry.GetBlock("dup/x"), first);
}

TEST_F(RegistryTest, DuplicateEventRunsTheFirstSectionTwice) {
  CScript* script = Add("dup", "event e\n{\n}\nevent e\n{\n}\n");
  char* commands = registry.BuildEventCommands("e");
  char expected[128];
  snprintf(expected, sizeof expected, "tw__de %llx;tw__de %llx;\n",
           static_cast<unsigned long long>(script->firstBlock->handle),
           static_cast<unsigned long long>(script->firstBlock->handle));
  EXPECT_STREQ(commands, expected);
  free(commands);
  registry.RemoveScript("dup");
  EXPECT_FALSE(registry.HasEvent("e"));
}

TEST_F(RegistryTest, EventCommandsSkipDisabledScripts) {
  AddThree();
  registry.SetScriptEnabled("b", false);
  char* commands = registry.BuildEventCommands("spawn");
  char expected[128];
  snprintf(expected, sizeof expected, "tw__de %llx;tw__de %llx;\n",
           static_cast<unsigned long long>(registry.GetEventHash("A/spawn")),
           static_cast<unsigned long long>(registry.GetEventHash("C/spawn")));
  EXPECT_STREQ(commands, expected);
  free(commands);
}

TEST_F(RegistryTest, AllDisabledStillHasTheEventButQueuesNothing) {
  AddThree();
  for (const char* name : {"A", "B", "C"}) registry.SetScriptEnabled(name, false);
  EXPECT_TRUE(registry.HasEvent("spawn"));
  char* commands = registry.BuildEventCommands("spawn");
  EXPECT_STREQ(commands, "\n");
  free(commands);
  char* none = registry.BuildEventCommands("nobody_listens");
  EXPECT_STREQ(none, "\n");
  free(none);
}

TEST_F(RegistryTest, ManyScriptsOnOneEventSplitIntoConsoleLines) {
  for (int i = 0; i < 300; ++i) Add("s" + std::to_string(i), "event crowded\n{\n}\n");
  char* commands = registry.BuildEventCommands("crowded");
  std::string text = commands;
  free(commands);
  size_t count = 0, start = 0;
  for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    EXPECT_LE(end - start, 2047u);
    for (size_t p = start; (p = text.find("tw__de ", p)) != std::string::npos && p < end; ++p) ++count;
  }
  EXPECT_EQ(count, 300u);
}

TEST_F(RegistryTest, HandlesOfRemovedBlocksNameNothing) {
  Add("A", "event e\n{\n}\n");
  Add("B", "event e\n{\n}\n");
  BlockHandle a = registry.GetEventHash("A/e");
  BlockHandle b = registry.GetEventHash("B/e");
  ASSERT_NE(a, 0u);
  registry.RemoveScript("A");
  EXPECT_EQ(registry.GetEvent(a), nullptr);
  ASSERT_NE(registry.GetEvent(b), nullptr);
  EXPECT_STREQ(registry.GetEvent(b)->name, "B/e");
}

TEST_F(RegistryTest, RemovalThatShiftsABucketLeavesHandlesTrue) {
  // "AB" and "B!" hash alike (times 33 plus the byte), so "AB/e" and "B!/e" share a bucket of the table.
  ASSERT_EQ(NameTable<int>::Hash("AB/e"), NameTable<int>::Hash("B!/e"));
  Add("AB", "event e\n{\n}\n");
  Add("B!", "event e\n{\n}\n");
  BlockHandle first = registry.GetEventHash("AB/e");
  BlockHandle second = registry.GetEventHash("B!/e");
  registry.RemoveScript("AB");
  EXPECT_EQ(registry.GetEvent(first), nullptr);
  ASSERT_NE(registry.GetEvent(second), nullptr);
  EXPECT_STREQ(registry.GetEvent(second)->name, "B!/e");
  EXPECT_EQ(registry.GetEventHash("B!/e"), second);
}

TEST_F(RegistryTest, GetEventHashOfUnknownNameIsZero) {
  EXPECT_EQ(registry.GetEventHash("no/such"), 0u);
  EXPECT_EQ(registry.GetEvent(0), nullptr);
  EXPECT_EQ(registry.GetEvent(0xFFFFFFFFFFFFull), nullptr);
}

TEST_F(RegistryTest, SameFullNameFromTwoScriptsStaysWithItsOwner) {
  // Script "foo" section "bar/x" and script "foo/bar" section "x" both make "foo/bar/x".
  Add("foo", "block bar/x\n{\n}\n");
  CScript* second = Add("foo/bar", "block x\n{\n}\n");
  CBlock* owner = registry.GetBlock("foo/bar/x");
  ASSERT_NE(owner, nullptr);
  EXPECT_STREQ(owner->script->name, "foo");
  registry.RemoveScript("foo/bar");
  (void)second;
  ASSERT_NE(registry.GetBlock("foo/bar/x"), nullptr);
  EXPECT_EQ(registry.GetBlock("foo/bar/x"), owner);
}

}  // namespace
