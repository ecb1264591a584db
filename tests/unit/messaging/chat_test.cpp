// Chat and HUD text: how a chat command's text is made from the raw argument string, its colour word and
// "#multi" with their limits, the dialog colours, and the top text's parsing.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "language/textbuf.h"
#include "messaging/chat.h"
#include "messaging_fixture.h"

namespace {

// The text of a chat or centred message: its payload behind the destination byte, up to its zero byte.
std::string TextOf(const SentUserMessage& m) {
  std::string text;
  for (size_t i = 1; i < m.bytes.size() && m.bytes[i]; ++i) text += char(m.bytes[i]);
  return text;
}

// The chat scenario shows colours, quotes and who receives what; here the raw spacing of the argument string
// and the userids below 1 that centre for every person.
TEST_F(MessagingTest, AChatLineKeepsTheRawSpacingAndCentredTextReachesEveryPersonForUseridZero) {
  int alice = Connect("Alice");
  int robo = AddBot("Robo");
  Run("tw_xmsg hello   \"big\"   world\ntw_centertell 0 hi\ntw_centertell " + std::to_string(robo) + " hi");
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 3u);
  EXPECT_EQ(TextOf(got[0]), "hello   big   world\n");
  EXPECT_EQ(Userids(got[1]), std::to_string(alice));
  EXPECT_EQ(Userids(got[2]), std::to_string(robo));
}

// The chat scenario shows colour words replaced and quotes stripped; here the edges of a line.
TEST(ChatText, ALineHoldsAt2047CharactersAndGetsOneLineFeed) {
  char out[TEXT_BUFFER_SIZE];
  const std::pair<const char*, const char*> lines[] = {{"a\nb", "a\nb"}, {"", "\n"}, {"\"\"", "\n"}};
  for (const auto& [raw, line] : lines) {
    MakeChatLine(out, raw);
    EXPECT_STREQ(out, line) << raw;
  }
  MakeChatLine(out, std::string(3000, 'x').c_str());
  EXPECT_EQ(strlen(out), 2047u);
  EXPECT_EQ(out[2046], '\n');
  // 2047 characters fit alone; the leading default colour of "#multi" makes 2048, which doesn't.
  std::string full(2047, 'm');
  EXPECT_TRUE(ReplaceChatColors(out, full.c_str(), false));
  EXPECT_FALSE(ReplaceChatColors(out, full.c_str(), true));
}

// The chat scenario shows a colour word without a message refused; here what the message is made of.
TEST(ChatText, TopTextTakesTheMessageBehindTheFirstTwoArguments) {
  const struct {
    const char* raw;
    const char* message;
    Color color;
  } cases[] = {
      {"2 10 #BLUE \"quoted\" text", "quoted text", Color(0, 0, 255)},
      {"2 10 #gray x", "x", Color(120, 120, 120)},  // colour names in any case, grey either way
      {"2 10 #nope x", "#nope x", Color(255, 255, 255)},
      {"2 10 \"#red hi\"", "#red hi", Color(255, 255, 255)},  // the quote is part of the word
      {"2 10", "", Color(255, 255, 255)},  // nothing behind the arguments
  };
  for (const auto& c : cases) {
    TopText top;
    EXPECT_TRUE(ParseTopText(c.raw, 5, top)) << c.raw;
    EXPECT_STREQ(top.message, c.message) << c.raw;
    EXPECT_TRUE(top.color == c.color) << c.raw;
  }
}

TEST(ChatText, TopTextCountsAt255CharactersAndAColourWordAt32) {
  TopText top;
  std::string raw = "2 10 #green " + std::string(400, 'y');
  ASSERT_TRUE(ParseTopText(raw.c_str(), 5, top));
  EXPECT_EQ(std::string(top.message), std::string(255 - 7, 'y'));  // the word counts in the 255
  std::string longWord = "2 10 #" + std::string(40, 'r') + " x";
  ASSERT_TRUE(ParseTopText(longWord.c_str(), 5, top));
  EXPECT_EQ(std::string(top.message), "#" + std::string(40, 'r') + " x");
}

TEST_F(MessagingTest, TopTextChecksTheDurationBeforeTheUserid) {
  EXPECT_EQ(Run("tw_toptext 0 0 hi"), "tw_toptext: The duration of your message was set too low\n");
  EXPECT_EQ(Run("tw_xtoptext 999 -5 hi"), "tw_xtoptext: The duration of your message was set too low\n");
  EXPECT_EQ(Run("tw_toptext 0 10 hi"), "");  // no userid: silent
}

}  // namespace
