// Menus and dialogs: the key mask, the pieces a long menu text goes in, the time field, and the dialog
// records with their bounds, buttons and entry command.
#include <gtest/gtest.h>

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

// One "ShowMenu" piece read back: keys, time, more and the length of its text.
struct Piece {
  int keys;
  int time;
  int more;
  size_t length;
};

Piece ReadPiece(const SentUserMessage& m) {
  Piece p{m.bytes[0] | m.bytes[1] << 8, int(static_cast<signed char>(m.bytes[2])), m.bytes[3], 0};
  while (4 + p.length < m.bytes.size() && m.bytes[4 + p.length]) ++p.length;
  return p;
}

TEST_F(MessagingTest, AMenuGoesInPiecesOf250WhileAtLeast250Remain) {
  int alice = Connect("Alice");
  const struct {
    size_t length;
    std::vector<size_t> pieces;
  } cases[] = {
      {249, {249}}, {250, {250, 0}}, {251, {250, 1}}, {500, {250, 250, 0}}, {1000, {250, 250, 250, 250, 0}}, {0, {0}},
  };
  for (const auto& c : cases) {
    ShowMenu(alice, 0, std::string(c.length, 'm').c_str(), nullptr);
    std::vector<SentUserMessage> got = Take();
    ASSERT_EQ(got.size(), c.pieces.size()) << c.length;
    for (size_t i = 0; i < got.size(); ++i) {
      Piece p = ReadPiece(got[i]);
      EXPECT_EQ(got[i].id, 10);
      EXPECT_EQ(Userids(got[i]), std::to_string(alice));
      EXPECT_EQ(p.length, c.pieces[i]) << c.length << " piece " << i;
      EXPECT_EQ(p.more, i + 1 < got.size() ? 1 : 0) << c.length << " piece " << i;
      EXPECT_EQ(p.keys, 1023);
      EXPECT_EQ(p.time, -1);
    }
  }
}

TEST_F(MessagingTest, TheTimeFieldIsOneSignedByte) {
  int alice = Connect("Alice");
  const struct {
    int time;
    int field;
  } cases[] = {{0, -1}, {5, 5}, {127, 127}, {200, -56}, {-3, -3}, {256, 0}};
  for (const auto& c : cases) {
    ShowMenu(alice, c.time, "x", "12");
    std::vector<SentUserMessage> got = Take();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(ReadPiece(got[0]).time, c.field) << c.time;
    EXPECT_EQ(ReadPiece(got[0]).keys, 3);
  }
  ShowMenu(0, 0, "x", nullptr);  // a userid of 0 or below: nothing
  ShowMenu(-1, 0, "x", nullptr);
  EXPECT_TRUE(Take().empty());
}

TEST_F(MessagingTest, TwMenuExpandsEscapesAndTakesOptionsOnlyAsAFourthArgument) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  EXPECT_EQ(Run("tw_menu 0 " + a + " \"1. Yes\\n2. No\" 12"),
            "> ShowMenu to " + a + ": keys=0x003 time=-1 more=0 text=\"1. Yes\\n2. No\"\n");
  EXPECT_EQ(Run("tw_menu 30 " + a + " x"), "> ShowMenu to " + a + ": keys=0x3ff time=30 more=0 text=\"x\"\n");
  EXPECT_EQ(Run("tw_menu 30 " + a + " x none"), "> ShowMenu to " + a + ": keys=0x000 time=30 more=0 text=\"x\"\n");
  // The count includes the command: a menu without text is sent, one without a userid is refused.
  EXPECT_EQ(Run("tw_xmenu 30 " + a), "> ShowMenu to " + a + ": keys=0x3ff time=30 more=0 text=\"\"\n");
  EXPECT_EQ(Run("tw_xmenu 30"), "Syntax: tw_xmenu <duration> <userid> <menu-text> [options]\n");
  EXPECT_EQ(LastError(), "Syntax error");
}

TEST_F(MessagingTest, DialogTimesAreCheckedBeforeTheUserid) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  Set("tidewright_lasterror", "kept");
  const struct {
    std::string line;
    std::string start;  // what the output starts with
  } cases[] = {
      {"tw_esctextbox 9 999 T x", "Error: \"9\" is an invalid specifier for <time>.\n"},
      {"tw_esctextbox 201 " + a + " T x", "Error: \"201\" is an invalid specifier for <time>.\n"},
      {"tw_esctextbox 10 999 T x", "Error: \"999\" is an invalid userid.\n"},
      {"tw_esctextbox 10 " + a + " T x", "> dialog text to " + a + ": \"textBox\" title=\"T\" level=0 "
                                         "color=255,255,255,255 time=10 msg=\"x\"\n"},
      {"tw_esctextbox 200 " + a + " T \"a\\nb\\tc\\\"", "> dialog text to " + a + ": \"textBox\" title=\"T\" level=0 "
                                                        "color=255,255,255,255 time=200 msg=\"a\\nb\\\\tc\\\\\"\n"},
  };
  for (const auto& c : cases) {
    std::string out = Run(c.line);
    EXPECT_EQ(out.substr(0, c.start.size()), c.start) << c.line;
  }
  EXPECT_EQ(LastError(), "kept");  // only the Syntax lines touch it
}

TEST_F(MessagingTest, AnEscapeMenuHasAtMostEightButtons) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  std::string out = Run("tw_escmenu 30 " + a + " Title Text b1 b2 b3 b4 b5 b6 b7 b8 b9");
  EXPECT_NE(out.find("8.msg=\"b8\" 8.command=\"menuselect 8;//\\\"\""), std::string::npos) << out;
  EXPECT_EQ(out.find("b9"), std::string::npos) << out;
  EXPECT_EQ(out.find("9.msg"), std::string::npos) << out;
  out = Run("tw_escmenu 30 " + a + " Title Text only");
  EXPECT_NE(out.find(" 1.msg=\"only\" 1.command=\"menuselect 1;//\\\"\"\n"), std::string::npos) << out;
  EXPECT_EQ(Run("tw_escmenu 30 " + a + " Title Text"),
            "Syntax: tw_escmenu <time> <userid> <title> <text> <button1> [button...] [button8]\n");
}

TEST_F(MessagingTest, AnEntryBoxHandsItsCommandInQuotes) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  EXPECT_EQ(Run("tw_escinputbox 10 " + a + " T x \"say it\""),
            "> dialog entry to " + a + ": \"entryBox\" title=\"T\" level=0 color=255,255,255,255 time=10 msg=\"x\" "
            "command=\"\\\"say it\\\"\"\n");
  // The quoted command holds at most 1022 characters.
  Run("tw_escinputbox 10 " + a + " T x " + std::string(1500, 'c'));
  KeyValues* record = Client(alice).dialog.record.get();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(std::string(record->GetString("command")), "\"" + std::string(1021, 'c'));
}

TEST_F(MessagingTest, KeygroupMessagesReportEachMissingPiece) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  Run("tw_keygroupdelete kgm\ntw_keygroupcreate kgm\ntw_keycreate kgm other");
  const struct {
    std::string line;
    std::string printed;
  } cases[] = {
      {"tw_keygroupmsg " + a + " 0 nokg", "Error: KeyGroup nokg not found.\n"},
      {"tw_keygroupmsg " + a + " 0 kgm", "Error: 'message' subkey was not found inside keygroup kgm\n"},
      {"tw_keygroupmsg 0 0 nokg", "Invalid userid: 0\n"},
  };
  for (const auto& c : cases) {
    std::string out = Run(c.line);
    EXPECT_EQ(out.substr(0, c.printed.size()), c.printed) << c.line;
  }
  Run("tw_keycreate kgm message\ntw_keysetvalue kgm message title Hi");
  EXPECT_EQ(Run("tw_keygroupmsg " + a + " 2 kgm"), "> dialog text to " + a + ": \"message\" title=\"Hi\"\n");
  // An invalid userid gives both lines: the command's and the sender's.
  std::string out = Run("tw_keygroupmsg -1 2 kgm");
  EXPECT_NE(out.find("Invalid userid: -1\n"), std::string::npos) << out;
  EXPECT_NE(out.find("Error: \"-1\" is an invalid userid.\n"), std::string::npos) << out;
  Run("tw_keygroupdelete kgm");
}

}  // namespace
