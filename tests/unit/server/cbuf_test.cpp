// The command buffer on its own: order of appended and inserted texts, where commands split, capacity.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cbuf.h"
#include "output_capture.h"

namespace {

std::vector<std::string> Drain(CommandBuffer& b) {
  std::vector<std::string> out;
  std::string cmd;
  while (b.NextCommand(cmd)) out.push_back(cmd);
  return out;
}

using Commands = std::vector<std::string>;

TEST(CommandBufferOrder, AppendedTextsRunInOrder) {
  CommandBuffer b;
  b.AddText("a\n");
  b.AddText("b\n");
  EXPECT_EQ(Drain(b), (Commands{"a", "b"}));
}

TEST(CommandBufferOrder, InsertedTextsRunBeforeAppendedOnesLastInFirst) {
  CommandBuffer b;
  b.AddText("tail\n");
  b.InsertText("second\n");
  b.InsertText("first\n");
  EXPECT_EQ(Drain(b), (Commands{"first", "second", "tail"}));
}

TEST(CommandBufferOrder, InsertWhileATextIsHalfReadGoesInFrontOfItsRest) {
  CommandBuffer b;
  b.AddText("a;b;c\n");
  b.AddText("later\n");
  std::string cmd;
  ASSERT_TRUE(b.NextCommand(cmd));
  EXPECT_EQ(cmd, "a");
  b.InsertText("x;y\n");
  EXPECT_EQ(Drain(b), (Commands{"x", "y", "b", "c", "later"}));
}

TEST(CommandBufferOrder, NestedInsertsUnwindLikeACallStack) {
  // What a script does: a line, then its pending next line; the line inserts its own pair.
  CommandBuffer b;
  b.InsertText("tw__ip 2\n");
  b.InsertText("call\n");
  std::string cmd;
  ASSERT_TRUE(b.NextCommand(cmd));
  EXPECT_EQ(cmd, "call");
  b.InsertText("tw__ip 11\n");
  b.InsertText("inner\n");
  EXPECT_EQ(Drain(b), (Commands{"inner", "tw__ip 11", "tw__ip 2"}));
}

TEST(CommandBufferOrder, AppendDuringRunWaitsBehindEverythingInserted) {
  CommandBuffer b;
  b.InsertText("one\n");
  std::string cmd;
  b.NextCommand(cmd);
  b.AddText("event\n");
  b.InsertText("two\n");
  EXPECT_EQ(Drain(b), (Commands{"two", "event"}));
}

TEST(CommandBufferSplit, SemicolonsAndLineFeedsEndCommands) {
  CommandBuffer b;
  b.AddText("a;b\nc\n");
  EXPECT_EQ(Drain(b), (Commands{"a", "b", "c"}));
}

TEST(CommandBufferSplit, QuotesProtectSeparators) {
  CommandBuffer b;
  b.AddText("echo \"a;b\";echo \"x\ny\"\n");
  EXPECT_EQ(Drain(b), (Commands{"echo \"a;b\"", "echo \"x\ny\""}));
}

TEST(CommandBufferSplit, EndOfEachTextEndsACommand) {
  CommandBuffer b;
  b.AddText("echo \"open");
  b.AddText("next");
  b.InsertText("no_line_feed");
  EXPECT_EQ(Drain(b), (Commands{"no_line_feed", "echo \"open", "next"}));
}

TEST(CommandBufferSplit, EmptyCommandsComeOutEmpty) {
  CommandBuffer b;
  b.AddText("a;;b\n");
  EXPECT_EQ(Drain(b), (Commands{"a", "", "b"}));
}

TEST(CommandBufferSplit, SemicolonInCommentEndsNothingButTheLineDoes) {
  CommandBuffer b;
  b.AddText("// note; not a command\necho a // x; y\nurl a//b;c\n");
  EXPECT_EQ(Drain(b), (Commands{"// note; not a command", "echo a // x; y", "url a//b", "c"}));
}

TEST(CommandBufferSplit, InsertedLinesEachEndTheirCommand) {
  CommandBuffer b;
  b.AddText("after\n");
  b.InsertLines("one;two\necho \"broken\nthree\n\nlast");
  EXPECT_EQ(Drain(b), (Commands{"one", "two", "echo \"broken", "three", "", "last", "after"}));
  EXPECT_TRUE(b.InsertLines(""));
  EXPECT_TRUE(b.IsEmpty());
}

TEST(CommandBufferCapacity, InsertedLinesGoInWholeOrNotAtAll) {
  CommandBuffer b(12);
  OutputCapture out;
  EXPECT_FALSE(b.InsertLines("aaaa\nbbbb\ncccc\n"));
  EXPECT_TRUE(b.IsEmpty());
  EXPECT_TRUE(out.Contains("overflow"));
}

TEST(CommandBufferCapacity, OverflowDropsTheWholeTextWithOneMessage) {
  CommandBuffer b(10);
  OutputCapture out;
  EXPECT_TRUE(b.AddText("12345\n"));
  EXPECT_FALSE(b.AddText("abcdef\n"));
  EXPECT_FALSE(b.InsertText("more text\n"));
  EXPECT_EQ(b.PendingBytes(), 6u);
  EXPECT_TRUE(out.Contains("Command buffer overflow"));
  EXPECT_EQ(out.Text().find("overflow"), out.Text().rfind("overflow"));
  EXPECT_EQ(Drain(b), (Commands{"12345"}));
}

TEST(CommandBufferCapacity, ReportsAgainAfterTheBufferDrained) {
  CommandBuffer b(4);
  OutputCapture out;
  b.AddText("toolong\n");
  Drain(b);
  b.AddText("toolong\n");
  std::string text = out.Take();
  EXPECT_NE(text.find("overflow"), text.rfind("overflow"));
}

TEST(CommandBufferCapacity, HundredThousandPendingLinesFitTheDefault) {
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
  EXPECT_TRUE(b.IsEmpty());
}

TEST(CommandBufferCapacity, LongQueuesKeepTheirOrderAcrossCompaction) {
  CommandBuffer b;
  std::string cmd;
  int next = 0;
  for (int i = 0; i < 300000; ++i) {
    b.AddText(("c" + std::to_string(i) + "\n").c_str());
    if (i % 3 == 0) {
      ASSERT_TRUE(b.NextCommand(cmd));
      ASSERT_EQ(cmd, "c" + std::to_string(next++));
    }
  }
  while (b.NextCommand(cmd)) ASSERT_EQ(cmd, "c" + std::to_string(next++));
  EXPECT_EQ(next, 300000);
}

TEST(CommandBufferCapacity, ClearEmptiesBoth) {
  CommandBuffer b;
  b.AddText("a\n");
  b.InsertText("b\n");
  b.Clear();
  EXPECT_TRUE(b.IsEmpty());
  std::string cmd;
  EXPECT_FALSE(b.NextCommand(cmd));
}

}  // namespace
