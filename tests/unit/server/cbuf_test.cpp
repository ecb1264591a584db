// The command buffer on its own: order of appended and inserted texts, where commands split, capacity.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cbuf.h"
#include "output_capture.h"

namespace {

using Commands = std::vector<std::string>;

Commands Drain(CommandBuffer& b) {
  Commands out;
  for (std::string cmd; b.NextCommand(cmd);) out.push_back(cmd);
  return out;
}

// Steps: "A<text>" appends, "I<text>" inserts, "L<text>" inserts line by line, "N" takes one command.
// What the steps take and what is left at the end come out in order.
Commands Play(const Commands& steps) {
  CommandBuffer b;
  Commands out;
  for (const std::string& s : steps) {
    const char* text = s.c_str() + 1;
    if (s[0] == 'A') b.AddText(text);
    if (s[0] == 'I') b.InsertText(text);
    if (s[0] == 'L') b.InsertLines(text);
    if (std::string cmd; s[0] == 'N' && b.NextCommand(cmd)) out.push_back(cmd);
  }
  for (const std::string& c : Drain(b)) out.push_back(c);
  return out;
}

TEST(CommandBuffer, OrderAndSplitting) {
  const struct {
    Commands steps, expected;
  } cases[] = {
      // Appended texts run in order; inserted ones before them, the last inserted first.
      {{"Atail\n", "Atail2\n", "Isecond\n", "Ifirst\n"}, {"first", "second", "tail", "tail2"}},
      // An insert while a text is half read goes in front of its rest.
      {{"Aa;b;c\n", "Alater\n", "N", "Ix;y\n"}, {"a", "x", "y", "b", "c", "later"}},
      // A script's line and its pending next line: nested inserts unwind like a call stack.
      {{"Itw__ip 2\n", "Icall\n", "N", "Itw__ip 11\n", "Iinner\n"}, {"call", "inner", "tw__ip 11", "tw__ip 2"}},
      // Appended during a run waits behind everything inserted.
      {{"Ione\n", "N", "Aevent\n", "Itwo\n"}, {"one", "two", "event"}},
      {{"Aecho \"a;b\";echo \"x\ny\"\n"}, {"echo \"a;b\"", "echo \"x\ny\""}},
      // The end of each text ends a command, even inside quotes.
      {{"Aecho \"open", "Anext", "Ino_line_feed"}, {"no_line_feed", "echo \"open", "next"}},
      {{"Aa;;b\nc\n"}, {"a", "", "b", "c"}},
      {{"A// note; not a command\necho a // x; y\nurl a//b;c\n"},
       {"// note; not a command", "echo a // x; y", "url a//b", "c"}},
      {{"Aafter\n", "Lone;two\necho \"broken\nthree\n\nlast"},
       {"one", "two", "echo \"broken", "three", "", "last", "after"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Play(c.steps), c.expected) << c.steps[0];
}

TEST(CommandBuffer, OverflowDropsTheWholeTextWithOneMessageUntilDrained) {
  CommandBuffer b(10);
  OutputCapture out;
  EXPECT_TRUE(b.AddText("12345\n"));
  EXPECT_FALSE(b.AddText("abcdef\n"));
  EXPECT_FALSE(b.InsertText("more text\n"));
  EXPECT_FALSE(b.InsertLines("aa\nbb\ncc\n"));
  EXPECT_EQ(b.PendingBytes(), 6u);
  std::string text = out.Take();
  EXPECT_NE(text.find("Command buffer overflow"), std::string::npos);
  EXPECT_EQ(text.find("overflow"), text.rfind("overflow"));
  EXPECT_EQ(Drain(b), (Commands{"12345"}));
  b.AddText("toolong toolong\n");
  EXPECT_TRUE(out.Contains("overflow"));
  b.AddText("a\n");
  b.InsertText("b\n");
  b.Clear();
  EXPECT_TRUE(b.IsEmpty());
  EXPECT_EQ(Drain(b), Commands{});
}

TEST(CommandBuffer, HundredThousandPendingLinesFitTheDefaultAndLongQueuesKeepOrder) {
  CommandBuffer b;
  const int depth = 100000;
  std::string cmd;
  for (int i = 0; i < depth; ++i) {
    ASSERT_TRUE(b.InsertText(("tw__ip " + std::to_string(1000000 + i) + "\n").c_str()));
    ASSERT_TRUE(b.InsertText("nest\n"));
    ASSERT_TRUE(b.NextCommand(cmd));
  }
  EXPECT_EQ(b.PendingBytes(), size_t(depth) * 15);
  size_t count = 0;
  while (b.NextCommand(cmd)) ++count;
  EXPECT_EQ(count, size_t(depth));
  EXPECT_EQ(cmd, "tw__ip 1000000");
  // A long queue keeps its order across compaction.
  int next = 0;
  for (int i = 0; i < 300000; ++i) {
    b.AddText(("c" + std::to_string(i) + "\n").c_str());
    if (i % 3 == 0 && b.NextCommand(cmd)) {
      ASSERT_EQ(cmd, "c" + std::to_string(next++));
    }
  }
  while (b.NextCommand(cmd)) ASSERT_EQ(cmd, "c" + std::to_string(next++));
  EXPECT_EQ(next, 300000);
}

}  // namespace
