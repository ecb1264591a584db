// The clients' answers: an open "ShowMenu" menu that sim_menu presses a key on, the last dialog that
// sim_dialog answers, and sim_stringtable adding past the lock that holds plugins back.
#include <gtest/gtest.h>

#include <string>

#include "KeyValues.h"
#include "irecipientfilter.h"
#include "world_fixture.h"

namespace {

class ToOne final : public IRecipientFilter {
public:
  explicit ToOne(int index) : m_index(index) {}
  bool IsReliable() const override { return false; }
  bool IsInitMessage() const override { return false; }
  int GetRecipientCount() const override { return 1; }
  int GetRecipientIndex(int slot) const override { return slot == 0 ? m_index : -1; }

private:
  int m_index;
};

// Alice (userid 2, index 1) and Bob (3, 2).
class AnswerTest : public WorldTest {
protected:
  AnswerTest() {
    server.Run("sim_connect Alice\nsim_connect Bob");
    Plugin().Take();
  }
  void Menu(int index, int keys, int time, bool more, const char* text) {
    ToOne filter(index);
    bf_write* m = Engine().UserMessageBegin(&filter, 10);
    m->WriteShort(keys), m->WriteChar(time), m->WriteByte(more ? 1 : 0), m->WriteString(text);
    Engine().MessageEnd();
  }
  void Dialog(int index, int type, KeyValues* record) {
    Iface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001")->CreateMessage(Edict(index), DIALOG_TYPE(type), record,
                                                                           nullptr);
    record->deleteThis();
  }
  std::string Quiet(const std::string& lines) {
    World().ShowDeliveries(false);
    std::string out = server.Run(lines);
    World().ShowDeliveries(true);
    return out;
  }
};

TEST_F(AnswerTest, AKeyTheMenuTakesSendsMenuselectAndClosesIt) {
  Menu(1, 0x3, -1, true, "first piece ");
  EXPECT_EQ(Quiet("sim_menu 2 1"), "sim_menu: userid 2 has no menu open\n");  // pieces wait for more = 0
  Menu(1, 0x3, -1, false, "last piece");
  EXPECT_EQ(World().ClientByUserid(2)->menu.text, "first piece last piece");
  EXPECT_EQ(Quiet("sim_menu 2 3"), "sim_menu: the menu of userid 2 doesn't take key 3\n");
  EXPECT_EQ(Quiet("sim_menu 3 1"), "sim_menu: userid 3 has no menu open\n");  // Bob has none
  EXPECT_EQ(Plugin().Take(), "");
  EXPECT_EQ(Quiet("sim_menu 2 2"), "");
  EXPECT_EQ(Plugin().Take(), "SetCommandClient 0\nClientCommand menuselect [2] @1\nSetCommandClient -1\n");
  EXPECT_EQ(Quiet("sim_menu 2 2"), "sim_menu: userid 2 has no menu open\n");
}

TEST_F(AnswerTest, KeyZeroIsTheTenthBitAndBadArgumentsGetTheUsage) {
  Menu(1, 0x200, -1, false, "0. Exit");
  const std::string usage = "Usage: sim_menu <userid> <key 0-9>: the player presses a number key on the open menu\n";
  EXPECT_EQ(Quiet("sim_menu 2"), usage);
  EXPECT_EQ(Quiet("sim_menu 2 10"), usage);
  EXPECT_EQ(Quiet("sim_menu 2 x"), usage);
  EXPECT_EQ(Quiet("sim_menu 9 1"), "sim_menu: no client has userid \"9\"\n");
  EXPECT_EQ(Quiet("sim_menu 2 1"), "sim_menu: the menu of userid 2 doesn't take key 1\n");
  EXPECT_EQ(Quiet("sim_menu 2 0"), "");
  EXPECT_NE(Plugin().Take().find("ClientCommand menuselect [0] @1"), std::string::npos);
}

TEST_F(AnswerTest, ATimedMenuClosesAndANewMenuReplacesTheOld) {
  Menu(1, 0x1, 2, false, "two seconds");
  server.Run("sim_advance 1");
  EXPECT_TRUE(World().MenuOpen(*World().ClientByUserid(2)));
  server.Run("sim_advance 1.5");
  EXPECT_EQ(Quiet("sim_menu 2 1"), "sim_menu: userid 2 has no menu open\n");
  Menu(1, 0x1, 2, false, "old");
  Menu(1, 0x2, -1, false, "new");
  server.Run("sim_advance 5");
  EXPECT_EQ(Quiet("sim_menu 2 1"), "sim_menu: the menu of userid 2 doesn't take key 1\n");
  EXPECT_EQ(Quiet("sim_menu 2 2"), "");
}

TEST_F(AnswerTest, AMenuDialogRunsTheButtonsCommandOnTheClientsConsole) {
  KeyValues* menu = new KeyValues("menu");
  menu->FindKey("1", true)->SetString("command", "menuselect 1;//\"");
  menu->FindKey("2", true)->SetString("command", "menuselect 2;//\"");
  Dialog(1, DIALOG_MENU, menu);
  EXPECT_EQ(Quiet("sim_dialog 2 3"), "sim_dialog: the menu of userid 2 has no button \"3\"\n");
  EXPECT_EQ(Quiet("sim_dialog 2 2"), "");
  // The comment behind the semicolon runs nothing.
  EXPECT_EQ(Plugin().Take(), "SetCommandClient 0\nClientCommand menuselect [2] @1\nSetCommandClient -1\n");
  EXPECT_EQ(Quiet("sim_dialog 2 1"), "sim_dialog: userid 2 has no dialog to answer\n");  // answered once
}

TEST_F(AnswerTest, AnEntryRunsItsCommandFollowedByTheAnswer) {
  KeyValues* entry = new KeyValues("entryBox");
  entry->SetString("command", "\"my_answer\"");
  Dialog(2, DIALOG_ENTRY, entry);
  EXPECT_EQ(Quiet("sim_dialog 3 \"blue sky\""), "");
  EXPECT_EQ(Plugin().Take(), "SetCommandClient 1\nClientCommand my_answer [blue sky] @2\nSetCommandClient -1\n");
}

TEST_F(AnswerTest, OtherDialogsTakeNoAnswer) {
  Dialog(1, DIALOG_TEXT, new KeyValues("textBox"));
  EXPECT_EQ(Quiet("sim_dialog 2 1"), "sim_dialog: the last dialog of userid 2 is a text dialog, which takes no answer\n");
  Dialog(1, DIALOG_MSG, new KeyValues("msg"));
  EXPECT_EQ(Quiet("sim_dialog 2 1"), "sim_dialog: the last dialog of userid 2 is a msg dialog, which takes no answer\n");
  Dialog(1, 7, new KeyValues("odd"));
  EXPECT_EQ(server.Run("sim_dialog 2 1"), "sim_dialog: the last dialog of userid 2 is of type 7, which takes no answer\n");
  EXPECT_EQ(Plugin().Take(), "");
}

TEST_F(AnswerTest, TheEngineAddsPastTheLockAndKeepsUserDataWithoutItsZeroByte) {
  INetworkStringTableContainer* tables =
      Iface<INetworkStringTableContainer>("VEngineServerStringTable001");
  INetworkStringTable* downloads = tables->GetTable(0);
  ASSERT_NE(downloads, nullptr);
  EXPECT_STREQ(downloads->GetTableName(), "downloadables");
  EXPECT_EQ(downloads->FindStringIndex("maps/extra.txt"), 65535);
  EXPECT_EQ(downloads->AddString("maps/extra.txt", 15, nullptr), INVALID_STRING_INDEX);  // locked
  EXPECT_EQ(server.Run("sim_stringtable DOWNLOADABLES maps/extra.txt abc"),
            "> stringtable downloadables: \"maps/extra.txt\" at 0\n");
  int length = -1;
  const void* data = downloads->GetStringUserData(0, &length);
  ASSERT_EQ(length, 3);
  EXPECT_EQ(std::string(static_cast<const char*>(data), 3), "abc");
  EXPECT_EQ(server.Run("sim_stringtable nosuch x"), "sim_stringtable: no string table \"nosuch\"\n");
  EXPECT_EQ(server.Run("sim_stringtable downloadables"),
            "Usage: sim_stringtable <table> <text> [userdata]: adds a string to a table as the engine does\n");
}

}  // namespace
