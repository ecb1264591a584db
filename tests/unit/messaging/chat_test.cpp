// Chat and HUD text: how a chat command's text is made from the raw argument string, its colour word and
// "#multi", the dialog colours, the top text's parsing, and who receives what.
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

TEST_F(MessagingTest, AChatLineIsTheRawTextWithoutQuotesAndWithOneLineFeed) {
  int alice = Connect("Alice");
  const struct {
    std::string line;
    int id;
    std::string text;
    std::string printed;
  } cases[] = {
      {"tw_xmsg hello   \"big\"   world", 3, "hello   big   world\n", "hello   big   world\n"},  // raw spacing
      {"tw_msg 100% sure", 3, "100% sure\n", "100% sure\n"},  // a percent sign is a character
      {"tw_msg #GrEeN hi there", 5, "\x04hi there\n", "\x04hi there\n"},
      {"tw_msg #lightgreen \"hi\"", 5, "\x03hi\n", "\x03hi\n"},
      {"tw_msg say #green later", 3, "say #green later\n", "say #green later\n"},  // not the first word
      {"tw_msg #multi a #green b #LIGHTGREEN c #Default d", 5, "\x01" "a \x04 b \x03 c \x01 d\n",
       "\x01" "a \x04 b \x03 c \x01 d\n"},
      {"tw_xtell " + std::to_string(alice) + " hi  there", 3, "hi  there\n", ""},
      {"tw_tell " + std::to_string(alice) + " #green hi", 5, "\x04hi\n", ""},
      {"tw_tell " + std::to_string(alice) + " #multi #green hi", 5, "\x04 hi\n", ""},  // no leading default
      {"tw_xcentermsg \"hi\" there", 5, "\"hi\" there", ""},  // quotes kept, no line feed
      {"tw_xcentertell " + std::to_string(alice) + " \"hi\" there", 5, "hi there\n", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(RunQuiet(c.line), c.printed) << c.line;
    std::vector<SentUserMessage> got = Take();
    ASSERT_EQ(got.size(), 1u) << c.line;
    EXPECT_EQ(got[0].id, c.id) << c.line;
    EXPECT_EQ(TextOf(got[0]), c.text) << c.line;
  }
}

TEST_F(MessagingTest, AColourWordWithNothingBehindItSendsNothing) {
  int alice = Connect("Alice");
  Set("tidewright_lasterror", "kept");
  for (const std::string& line : {std::string("tw_msg #green"), std::string("tw_msg #lightgreen"), std::string("tw_msg #multi"),
                           "tw_tell " + std::to_string(alice) + " #GREEN"}) {
    EXPECT_EQ(RunQuiet(line), "") << line;
    EXPECT_TRUE(Take().empty()) << line;
  }
  EXPECT_EQ(LastError(), "kept");
}

TEST_F(MessagingTest, BroadcastsReachPeopleAndTellsReachBots) {
  int alice = Connect("Alice");
  int robo = AddBot("Robo");
  Run("tw_msg hi\ntw_centermsg hi\ntw_tell " + std::to_string(robo) + " hi\ntw_centertell 0 hi\n"
      "tw_tell 999 hi\ntw_centertell " + std::to_string(robo) + " hi");
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 6u);
  const std::string a = std::to_string(alice), r = std::to_string(robo);
  EXPECT_EQ(Userids(got[0]), a);
  EXPECT_EQ(Userids(got[1]), a);
  EXPECT_EQ(Userids(got[2]), r);
  EXPECT_EQ(Userids(got[3]), a);  // a userid below 1 centres for every person
  EXPECT_EQ(Userids(got[4]), "");  // nobody has it: sent to nobody, silently
  EXPECT_EQ(Userids(got[5]), r);
}

TEST(ChatText, MultiReplacesInOrderAndRefusesWhatDoesntFit) {
  char out[TEXT_BUFFER_SIZE];
  EXPECT_TRUE(ReplaceChatColors(out, "#GREEN x #lightgreen y #default", true));
  EXPECT_STREQ(out, "\x01\x04 x \x03 y \x01");
  EXPECT_TRUE(ReplaceChatColors(out, "plain", false));
  EXPECT_STREQ(out, "plain");
  // 2047 characters fit alone; the leading default colour makes 2048, which doesn't.
  std::string full(2047, 'm');
  EXPECT_TRUE(ReplaceChatColors(out, full.c_str(), false));
  EXPECT_FALSE(ReplaceChatColors(out, full.c_str(), true));
}

TEST(ChatText, MakingALineStripsQuotesAndAddsOneLineFeed) {
  const struct {
    const char* raw;
    const char* line;
  } cases[] = {
      {"\"a\" b", "a b\n"}, {"a\nb", "a\nb"}, {"", "\n"}, {"\"\"", "\n"},
  };
  for (const auto& c : cases) {
    char line[TEXT_BUFFER_SIZE];
    MakeChatLine(line, c.raw);
    EXPECT_STREQ(line, c.line) << c.raw;
  }
  char line[TEXT_BUFFER_SIZE];
  MakeChatLine(line, std::string(3000, 'x').c_str());
  EXPECT_EQ(strlen(line), 2047u);
  EXPECT_EQ(line[2046], '\n');
}

TEST(ChatText, ColourNamesAreFoundIgnoringCaseElseWhite) {
  const struct {
    const char* word;
    bool found;
    Color color;
  } cases[] = {
      {"#red", true, Color(255, 0, 0)},        {"#RED", true, Color(255, 0, 0)},
      {"#Orange", true, Color(255, 130, 0)},   {"#violet", true, Color(144, 0, 226)},
      {"#pink", true, Color(226, 0, 165)},     {"#darkgreen", true, Color(0, 145, 0)},
      {"#grey", true, Color(120, 120, 120)},   {"#GRAY", true, Color(120, 120, 120)},
      {"#black", true, Color(0, 0, 0)},        {"red", false, Color(255, 255, 255)},
      {"#nope", false, Color(255, 255, 255)},  {"", false, Color(255, 255, 255)},
  };
  for (const auto& c : cases) {
    Color color(1, 2, 3, 4);
    EXPECT_EQ(ParseColorName(c.word, color), c.found) << c.word;
    EXPECT_TRUE(color == c.color) << c.word;
    EXPECT_EQ(color.a, 255) << c.word;
  }
}

TEST(ChatText, TopTextTakesTheMessageBehindTheFirstTwoArguments) {
  const struct {
    const char* raw;
    size_t offset;
    bool ok;
    const char* message;
    Color color;
  } cases[] = {
      {"2 10 #red Hello world", 5, true, "Hello world", Color(255, 0, 0)},
      {"2 10 Hello world", 5, true, "Hello world", Color(255, 255, 255)},
      {"2 10 #BLUE \"quoted\" text", 5, true, "quoted text", Color(0, 0, 255)},
      {"2 10 \"#red hi\"", 5, true, "#red hi", Color(255, 255, 255)},  // the quote is part of the word
      {"2 10 #red", 5, false, "", Color(255, 0, 0)},
      {"2 10 #red ", 5, false, "", Color(255, 0, 0)},
      {"2 10 #red x", 5, true, "x", Color(255, 0, 0)},
      {"2 10", 5, true, "", Color(255, 255, 255)},  // nothing behind the arguments
  };
  for (const auto& c : cases) {
    TopText top;
    EXPECT_EQ(ParseTopText(c.raw, c.offset, top), c.ok) << c.raw;
    if (!c.ok) continue;
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
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  const struct {
    std::string line;
    std::string printed;
  } cases[] = {
      {"tw_toptext 0 0 hi", "tw_toptext: The duration of your message was set too low\n"},
      {"tw_xtoptext " + a + " -5 hi", "tw_xtoptext: The duration of your message was set too low\n"},
      {"tw_toptext 0 10 hi", ""},    // no userid: silent
      {"tw_toptext 999 10 hi", ""},  // nobody has it: silent
      {"tw_toptext " + a + " 10 #red", "You must send a message\n"},
      {"tw_toptext " + a + " 1000 #red Hello",
       "> dialog msg to " + a + ": \"msg\" title=\"Hello\" color=255,0,0,255 level=5 time=1000\n"},
      {"tw_toptext " + a + " 1 word", "> dialog msg to " + a + ": \"msg\" title=\"word\" color=255,255,255,255 level=5 time=1\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(Run(c.line), c.printed) << c.line;
}

}  // namespace
