// Menus and dialogs: the key mask, the pieces a long menu text goes in, the time field, and the dialog
// records' limits. The menu_answer and dialogs scenarios show them answered.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "KeyValues.h"
#include "messaging/menus.h"
#include "messaging_fixture.h"

namespace {

TEST(MenuKeys, EachDigitSetsTheBitOfItsKey) {
  const struct {
    const char* options;
    int mask;
  } cases[] = {
      {nullptr, 1023}, {"123", 7},   {"321", 7},      {"1", 0x1},          {"9", 0x100},  {"0", 0x200},
      {"", 0},         {"abc", 0},   {"a1b1", 0x1},   {"1234567890", 1023}, {"-5x", 0x10},
  };
  for (const auto& c : cases) EXPECT_EQ(GetMenuKeyMask(c.options), c.mask) << (c.options ? c.options : "(null)");
}

// The "ShowMenu" pieces of one send read back as "keys time more length", joined by "; ".
std::string Pieces(const std::vector<SentUserMessage>& sent) {
  std::string text;
  for (const SentUserMessage& m : sent) {
    size_t length = 0;
    while (4 + length < m.bytes.size() && m.bytes[4 + length]) ++length;
    char piece[64];
    snprintf(piece, sizeof piece, "%s%03x %d %d %zu", text.empty() ? "" : "; ", m.bytes[0] | m.bytes[1] << 8,
             int(static_cast<signed char>(m.bytes[2])), m.bytes[3], length);
    text += piece;
  }
  return text;
}

TEST_F(MessagingTest, AMenuGoesInPiecesOf250WhileAtLeast250Remain) {
  int alice = Connect("Alice");
  const struct {
    size_t length;
    const char* pieces;
  } cases[] = {
      {249, "3ff -1 0 249"}, {250, "3ff -1 1 250; 3ff -1 0 0"}, {251, "3ff -1 1 250; 3ff -1 0 1"}, {0, "3ff -1 0 0"},
      {500, "3ff -1 1 250; 3ff -1 1 250; 3ff -1 0 0"},
  };
  for (const auto& c : cases) {
    ShowMenu(alice, 0, std::string(c.length, 'm').c_str(), nullptr);
    std::vector<SentUserMessage> got = Take();
    EXPECT_EQ(Pieces(got), c.pieces) << c.length;
    for (const SentUserMessage& m : got)
      EXPECT_EQ(std::to_string(m.id) + " to " + Userids(m), "10 to " + std::to_string(alice));
  }
}

TEST_F(MessagingTest, TheTimeFieldIsOneSignedByte) {
  int alice = Connect("Alice");
  const struct {
    int time;
    const char* piece;
  } cases[] = {{0, "003 -1 0 1"}, {127, "003 127 0 1"}, {200, "003 -56 0 1"}, {-3, "003 -3 0 1"}, {256, "003 0 0 1"}};
  for (const auto& c : cases) {
    ShowMenu(alice, c.time, "x", "12");
    EXPECT_EQ(Pieces(Take()), c.piece) << c.time;
  }
  ShowMenu(0, 0, "x", nullptr);  // a userid of 0 or below: nothing
  ShowMenu(-1, 0, "x", nullptr);
  EXPECT_TRUE(Take().empty());
}

// The count includes the command: a menu without text is sent; "none" takes no key.
TEST_F(MessagingTest, TwMenuSendsAMenuWithoutTextAndOptionsOfNoDigitTakeNoKey) {
  const std::string a = std::to_string(Connect("Alice"));
  EXPECT_EQ(Run("tw_xmenu 30 " + a), "> ShowMenu to " + a + ": keys=0x3ff time=30 more=0 text=\"\"\n");
  EXPECT_EQ(Run("tw_menu 30 " + a + " x none"), "> ShowMenu to " + a + ": keys=0x000 time=30 more=0 text=\"x\"\n");
}

// The dialogs scenario shows the bounds of the time; here the time is checked before a userid of nobody.
TEST_F(MessagingTest, DialogTimesAreCheckedBeforeTheUseridAndLeaveTheLastErrorAlone) {
  Set("tidewright_lasterror", "kept");
  EXPECT_EQ(Run("tw_esctextbox 9 999 T x").rfind("Error: \"9\" is an invalid specifier for <time>.\n", 0), 0u);
  EXPECT_EQ(Run("tw_esctextbox 10 999 T x").rfind("Error: \"999\" is an invalid userid.\n", 0), 0u);
  EXPECT_EQ(LastError(), "kept");
}

// The quoted command of an entry box holds at most 1022 characters.
TEST_F(MessagingTest, AnEntryBoxCutsItsQuotedCommand) {
  int alice = Connect("Alice");
  Run("tw_escinputbox 10 " + std::to_string(alice) + " T x " + std::string(1500, 'c'));
  KeyValues* record = Client(alice).dialog.record.get();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(std::string(record->GetString("command")), "\"" + std::string(1021, 'c'));
}

}  // namespace
