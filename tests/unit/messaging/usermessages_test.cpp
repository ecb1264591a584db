// The pieces every sender shares: the worked payloads of the fixed layouts byte for byte, the filter's two
// ways of filling, the id lookup bounded by tidewright_maxmsg, the escapes, and tw_usermsg: every writer's
// width in one payload, the order of its tests and the store that outlives a send.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host/engine_surface.h"
#include "host/server_state.h"
#include "language/textbuf.h"
#include "messaging/usermessages.h"
#include "messaging_fixture.h"

namespace {

TEST_F(MessagingTest, TheWorkedPayloadsGoOutByteForByte) {
  int alice = Connect("Alice");
  int bob = Connect("Bob");
  AddBot("Robo");
  const std::string humans = std::to_string(alice) + "," + std::to_string(bob);
  const struct {
    std::string line;
    int id;
    std::string to;
    std::string bytes;
  } cases[] = {
      {"tw_msg hi", 3, humans, "03 68 69 0A 00"},                     // plain line: SayText
      {"tw_msg #green hi", 5, humans, "03 04 68 69 0A 00"},           // coloured line: TextMsg
      {"tw_centermsg hi", 5, humans, "04 68 69 00 00 00 00 00"},      // centred text: id 5
      {"tw_menu 0 " + std::to_string(alice) + " x", 10, std::to_string(alice), "FF 03 FF 00 78 00"},
  };
  for (const auto& c : cases) {
    Run(c.line);
    std::vector<SentUserMessage> got = Take();
    ASSERT_EQ(got.size(), 1u) << c.line;
    EXPECT_EQ(got[0].id, c.id) << c.line;
    EXPECT_EQ(Userids(got[0]), c.to) << c.line;
    EXPECT_EQ(Hex(got[0].bytes), c.bytes) << c.line;
  }
}

TEST_F(MessagingTest, EveryWriterCutsItsValueToItsWidthInOnePayload) {
  int alice = Connect("Alice");
  Run("tw_usermsg create all HudMsg\n"
      "tw_usermsg write byte all 300\n"        // 0x12C: the low byte
      "tw_usermsg write char all -1\n"
      "tw_usermsg write short all 70000\n"     // 0x11170: the low 16 bits
      "tw_usermsg write long all -2\n"
      "tw_usermsg write float all 1.5\n"
      "tw_usermsg write word all 9\n"          // stored, writes nothing
      "tw_usermsg write STRING all a\\tb\\q\n"  // \t expanded, \q kept
      "tw_usermsg write byte all 7");
  Run("tw_usermsg send all " + std::to_string(alice));
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].id, 6);
  EXPECT_EQ(Hex(got[0].bytes), "2C FF 70 11 FE FF FF FF 00 00 C0 3F 61 09 62 5C 71 00 07");
}

TEST_F(MessagingTest, AStoredMessageOutlivesItsSendsUntilDeleted) {
  int alice = Connect("Alice");
  int bob = Connect("Bob");
  Run("tw_usermsg create again SayText\ntw_usermsg write byte again 1\ntw_usermsg write byte again 2");
  Run("tw_usermsg send again " + std::to_string(alice) + "\ntw_usermsg send again " + std::to_string(bob));
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(Hex(got[0].bytes), "01 02");  // two writes of one type stay two fields, in order
  EXPECT_EQ(Userids(got[1]), std::to_string(bob));
  // A create of an existing name keeps its fields and changes only its type.
  Run("tw_usermsg create again HintText\ntw_usermsg send again " + std::to_string(alice));
  got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].id, 23);
  EXPECT_EQ(Hex(got[0].bytes), "01 02");
  Set("tidewright_debug", "1");
  EXPECT_EQ(Run("tw_usermsg delete again"), "Key deleted: again\n");
  EXPECT_EQ(Run("tw_usermsg delete again"), "");  // no such key: silent
  EXPECT_EQ(Run("tw_usermsg send again 2"), "Key does not exist, please create it: again");
  EXPECT_TRUE(Take().empty());
}

TEST_F(MessagingTest, UserMsgTestsItsWordsThenItsCount) {
  Set("tidewright_lasterror", "");
  const struct {
    const char* line;
    const char* printed;
    const char* lastError;
  } cases[] = {
      {"tw_usermsg", "Syntax: tw_usermsg <operation> [data-type] <msg-name> [value]\n", "Syntax error"},
      {"tw_xusermsg", "Syntax: tw_xusermsg <operation> [data-type] <msg-name> [value]\n", "Syntax error"},
      {"tw_usermsg create lonely", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg write byte lonely", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg frob a b", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg FROB a b c", "Unknown user message command: FROB\n", "Invalid parameter"},
      {"tw_xusermsg create \"\" SayText", "Couldn't create: \n", "Internal error"},
      {"tw_usermsg send", "", ""},  // too few for send, delete: silent
      {"tw_usermsg DELETE", "", ""},
      {"tw_usermsg write byte nothere 1", "Key does not exist, please create it: nothere", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(c.line), c.printed) << c.line;
    EXPECT_EQ(LastError(), c.lastError) << c.line;
    Set("tidewright_lasterror", "");
  }
}

TEST_F(MessagingTest, SendsThatCantGoStopBeforeTheEngineOrGoToNobody) {
  int alice = Connect("Alice");
  Run("tw_usermsg create zero Geiger\ntw_usermsg write byte zero 1");
  EXPECT_EQ(Run("tw_usermsg send zero " + std::to_string(alice)), "Invalid UserMessage type: Geiger\n");
  Run("tw_usermsg create unknown NoSuchMessage");
  EXPECT_EQ(Run("tw_usermsg send unknown " + std::to_string(alice)), "Invalid UserMessage type: NoSuchMessage\n");
  EXPECT_TRUE(Take().empty());
  // A userid without a player: the whole sequence runs to nobody.
  Run("tw_usermsg create nobody SayText");
  Set("tidewright_debug", "3");
  std::string out = Run("tw_usermsg send nobody 999");
  EXPECT_NE(out.find("SendUserMessageData SENT: 999, SayText\n"), std::string::npos) << out;
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_TRUE(got[0].userids.empty());
}

TEST_F(MessagingTest, WritevReadsAVariableOrZero) {
  int alice = Connect("Alice");
  Set("msg_value", "42");
  Run("tw_usermsg create v SayText\ntw_usermsg writev byte v msg_value\ntw_usermsg writev string v no_such_var");
  Run("tw_usermsg send v " + std::to_string(alice));
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(Hex(got[0].bytes), "2A 30 00");
}

TEST_F(MessagingTest, ALowerMaxmsgHidesTheHigherIds) {
  const struct {
    const char* maxmsg;
    const char* name;
    int id;
  } cases[] = {
      {"28", "saytext", 3}, {"28", "ShowMenu", 10}, {"28", "AmmoDenied", 27}, {"28", "Geiger", 0},
      {"28", "Nope", 0},    {"10", "ShowMenu", 0},  {"10", "TextMsg", 5},     {"0", "SayText", 0},
  };
  for (const auto& c : cases) {
    Set("tidewright_maxmsg", c.maxmsg);
    EXPECT_EQ(GetUserMessageID(c.name), c.id) << c.maxmsg << " " << c.name;
  }
  EXPECT_EQ(GetUserMessageID(nullptr), 0);
}

TEST(ExpandEscapes, ReplacesTheTableAndKeepsEverythingElse) {
  const struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"\\\"", "\""}, {"\\\\", "\\"}, {"\\a", "\a"}, {"\\b", "\b"}, {"\\f", "\f"},
      {"\\n", "\n"},  {"\\r", "\r"},  {"\\t", "\t"}, {"\\v", "\v"},
      {"a\\qb", "a\\qb"},          // unknown escape: both characters stay
      {"end\\", "end\\"},          // a trailing backslash stays
      {"\\\\n", "\\n"},            // an escaped backslash doesn't escape the next character
      {"", ""},
  };
  for (const auto& c : cases) {
    char out[TEXT_BUFFER_SIZE];
    ExpandEscapes(out, sizeof out, c.in);
    EXPECT_STREQ(out, c.out) << c.in;
  }
}

TEST(ExpandEscapes, TheResultHoldsAt2047Characters) {
  char out[TEXT_BUFFER_SIZE];
  std::string in(3000, 'x');
  ExpandEscapes(out, sizeof out, in.c_str());
  EXPECT_EQ(strlen(out), 2047u);
  std::string escapes;
  for (int i = 0; i < 1500; ++i) escapes += "\\n";
  ExpandEscapes(out, sizeof out, escapes.c_str());
  EXPECT_EQ(std::string(out), std::string(1500, '\n'));
}

// Alice and Bob are people, Robo a bot.
TEST_F(MessagingTest, FiltersEmptyThemselvesAndBroadcastsSkipBots) {
  int alice = Connect("Alice");
  int robo = AddBot("Robo");
  int bob = Connect("Bob");
  const int aliceIndex = Client(alice).slot, roboIndex = Client(robo).slot, bobIndex = Client(bob).slot;
  MRecipientFilter filter;
  EXPECT_FALSE(filter.IsReliable());
  EXPECT_FALSE(filter.IsInitMessage());
  EXPECT_EQ(filter.GetRecipientCount(), 0);

  filter.AddRecipientByUserid(robo, MaxClients, playerinfomanager);  // a bot is taken by its userid
  ASSERT_EQ(filter.GetRecipientCount(), 1);
  EXPECT_EQ(filter.GetRecipientIndex(0), roboIndex);

  filter.AddAllPlayers(MaxClients, playerinfomanager);  // empties first: the bot is gone
  ASSERT_EQ(filter.GetRecipientCount(), 2);
  EXPECT_EQ(filter.GetRecipientIndex(0), aliceIndex);
  EXPECT_EQ(filter.GetRecipientIndex(1), bobIndex);
  EXPECT_EQ(filter.GetRecipientIndex(-1), -1);
  EXPECT_EQ(filter.GetRecipientIndex(2), -1);

  filter.AddRecipientByUserid(bob, MaxClients, playerinfomanager);
  ASSERT_EQ(filter.GetRecipientCount(), 1);
  EXPECT_EQ(filter.GetRecipientIndex(0), bobIndex);

  filter.AddRecipientByUserid(999, MaxClients, playerinfomanager);  // nobody has it: empty
  EXPECT_EQ(filter.GetRecipientCount(), 0);
  filter.AddAllPlayers(MaxClients, nullptr);  // no player info manager: nobody
  EXPECT_EQ(filter.GetRecipientCount(), 0);
}

}  // namespace
