// The pieces every sender shares: the filter's two ways of filling, the escapes, and tw_usermsg: the order
// of its tests and a create over a stored name; and tw_stringtable leaving the tables' lock as it found it.
// The chat, menu_answer and usermsg scenarios show every layout and every writer's width as delivered, and
// tidewright_maxmsg hiding the higher ids.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "eiface.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iservices.h"
#include "language/textbuf.h"
#include "messaging/usermessages.h"
#include "messaging_fixture.h"

namespace {

// The usermsg scenario shows a stored message sent twice and deleted; a second create keeps its fields.
TEST_F(MessagingTest, ACreateOfAStoredNameKeepsItsFieldsAndChangesItsType) {
  int alice = Connect("Alice");
  Run("tw_usermsg create again SayText\ntw_usermsg write byte again 1\ntw_usermsg write byte again 2\n"
      "tw_usermsg create again HintText\ntw_usermsg send again " + std::to_string(alice));
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].id, 23);
  EXPECT_EQ(Hex(got[0].bytes), "01 02");  // two writes of one type stay two fields, in order
}

TEST_F(MessagingTest, UserMsgTestsItsWordsThenItsCount) {
  Set("tidewright_lasterror", "");
  const struct {
    const char* line;
    const char* printed;
    const char* lastError;
  } cases[] = {
      {"tw_usermsg create lonely", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg write byte lonely", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg frob a b", "Not enough parameters\n", "Not enough parameters"},
      {"tw_usermsg FROB a b c", "Unknown user message command: FROB\n", "Invalid parameter"},
      {"tw_xusermsg create \"\" SayText", "Couldn't create: \n", "Internal error"},
      {"tw_usermsg send", "", ""},  // too few for send, delete: silent
      {"tw_usermsg DELETE", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(c.line), c.printed) << c.line;
    EXPECT_EQ(LastError(), c.lastError) << c.line;
    Set("tidewright_lasterror", "");
  }
}

TEST(ExpandEscapes, ReplacesTheTableAndKeepsEverythingElse) {
  const struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"\\\"", "\""}, {"\\\\", "\\"}, {"\\a", "\a"}, {"\\b", "\b"}, {"\\f", "\f"}, {"\\n", "\n"}, {"\\r", "\r"},
      {"\\t", "\t"}, {"\\v", "\v"}, {"", ""},
      {"a\\qb", "a\\qb"},  // unknown escape: both characters stay
      {"end\\", "end\\"},  // a trailing backslash stays
      {"\\\\n", "\\n"},  // an escaped backslash doesn't escape the next character
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

// The recipients of a filter as "1,3".
std::string Indexes(const MRecipientFilter& filter) {
  std::string text;
  for (int i = 0; i < filter.GetRecipientCount(); ++i)
    text += (i ? "," : "") + std::to_string(filter.GetRecipientIndex(i));
  return text;
}

// Alice and Bob are people, Robo a bot.
TEST_F(MessagingTest, FiltersEmptyThemselvesAndBroadcastsSkipBots) {
  int alice = Connect("Alice");
  int robo = AddBot("Robo");
  int bob = Connect("Bob");
  const std::string aliceIndex = std::to_string(Client(alice).slot), bobIndex = std::to_string(Client(bob).slot);
  MRecipientFilter filter;
  filter.AddRecipientByUserid(robo, MaxClients, playerinfomanager);  // a bot is taken by its userid
  EXPECT_EQ(Indexes(filter), std::to_string(Client(robo).slot));
  filter.AddAllPlayers(MaxClients, playerinfomanager);  // empties first: the bot is gone
  EXPECT_EQ(Indexes(filter), aliceIndex + "," + bobIndex);
  EXPECT_EQ(filter.GetRecipientIndex(-1), -1);
  EXPECT_EQ(filter.GetRecipientIndex(2), -1);
  filter.AddRecipientByUserid(bob, MaxClients, playerinfomanager);
  EXPECT_EQ(Indexes(filter), bobIndex);
  filter.AddRecipientByUserid(999, MaxClients, playerinfomanager);  // nobody has it: empty
  EXPECT_EQ(Indexes(filter), "");
  filter.AddAllPlayers(MaxClients, nullptr);  // no player info manager: nobody
  EXPECT_EQ(Indexes(filter), "");
}

// The stringtables scenario shows adds as a user sees them; the lock is what only the engine can tell.
TEST_F(MessagingTest, AddingAStringLeavesTheLockAsItWas) {
  INetworkStringTable* downloads = networkstringtable->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  const bool levelLock = engine->LockNetworkStringTables(true);
  EXPECT_TRUE(levelLock);  // a level has started
  Run("tw_stringtable downloadables locked/one.txt");
  EXPECT_NE(downloads->FindStringIndex("locked/one.txt"), INVALID_STRING_INDEX);
  EXPECT_TRUE(engine->LockNetworkStringTables(false));  // still locked after the add
  Run("tw_stringtable downloadables open/two.txt");
  EXPECT_NE(downloads->FindStringIndex("open/two.txt"), INVALID_STRING_INDEX);
  EXPECT_FALSE(engine->LockNetworkStringTables(levelLock));  // still open after the add
}

}  // namespace
