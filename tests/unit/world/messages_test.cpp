// What reaches clients: user messages with their layouts and recipients, dialogs, queries answered later,
// sounds, string tables, voice routing and views; and the clients' answers to an open menu.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "KeyValues.h"
#include "irecipientfilter.h"
#include "world_fixture.h"

namespace {

class Recipients final : public IRecipientFilter {
public:
  explicit Recipients(std::vector<int> to) : indexes(std::move(to)) {}
  bool IsReliable() const override { return false; }
  bool IsInitMessage() const override { return false; }
  int GetRecipientCount() const override { return int(indexes.size()); }
  int GetRecipientIndex(int slot) const override { return indexes.at(size_t(slot)); }
  std::vector<int> indexes;
};

// Alice (userid 2, index 1), Bob (3, 2) and the bot Robo (4, 3).
class MessageTest : public WorldTest {
protected:
  MessageTest() { server.Run("sim_connect Alice\nsim_connect Bob\nsim_addbot Robo"); }
  std::string Send(std::vector<int> to, int id, const std::function<void(bf_write&)>& write) {
    Recipients filter(std::move(to));
    OutputCapture out;
    write(*Engine().UserMessageBegin(&filter, id));
    Engine().MessageEnd();
    return out.Take();
  }
  IServerPluginHelpers* Helpers() { return Iface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001"); }
};

// Bit order and the overflow flag belong to the bit buffer, and the scenarios show each layout as delivered
// with the escapes of its text; here, a layout filled to its last byte and one that can't be read.
TEST_F(MessageTest, AMessageFilledToItsLastByteIsDecodedAndOneThatCantBeReadShowsItsBytes) {
  const std::string text(250, 'm');  // with four bytes of header and the zero byte, the buffer is full
  auto full = [&](bf_write& m) { m.WriteShort(1), m.WriteChar(-1), m.WriteByte(1), m.WriteString(text.c_str()); };
  EXPECT_EQ(Send({1}, 10, full), "> ShowMenu to 2: keys=0x001 time=-1 more=1 text=\"" + text + "\"\n");
  // A string without its zero byte can't be read as SayText.
  EXPECT_EQ(Send({1}, 3, [](bf_write& m) { m.WriteByte(3), m.WriteByte('h'); }), "> SayText to 2: bytes=03 68\n");
}

TEST_F(MessageTest, MessagesReachClientsByIndexAndTheGameNamesItsMessages) {
  auto say = [](bf_write& m) { m.WriteByte(3), m.WriteString("x"); };
  EXPECT_EQ(Send({3, 0, 99, -1, 1}, 3, say), "> SayText to 4,2: dest=3 text=\"x\"\n");
  EXPECT_EQ(Send({}, 3, say), "");
  EXPECT_EQ(Send({1}, 99, say), "User message 99 doesn't exist; not delivered\n");
  OutputCapture out;
  Engine().MessageEnd();
  EXPECT_EQ(out.Take(), "MessageEnd without UserMessageBegin; ignored\n");
  auto* dll = Iface<IServerGameDLL>("ServerGameDLL005");
  char name[32] = "";
  int size = 0;
  EXPECT_FALSE(dll->GetUserMessageInfo(28, name, sizeof name, size));
  EXPECT_FALSE(dll->GetUserMessageInfo(-1, name, sizeof name, size));
  EXPECT_TRUE(dll->GetUserMessageInfo(10, name, 5, size));
  EXPECT_STREQ(name, "Show");
  KeyValues* menu = new KeyValues("menu");
  Helpers()->CreateMessage(Edict(9), DIALOG_MENU, menu, nullptr);
  menu->deleteThis();
  EXPECT_EQ(out.Take(), "CreateMessage: not a client; nothing shown\n");
}

TEST_F(MessageTest, QueriesAreAnsweredTwoFramesLaterAndDroppedWhenTheClientLeft) {
  OutputCapture quiet;
  QueryCvarCookie_t found = Helpers()->StartQueryCvarValue(Edict(1), "cl_language");
  QueryCvarCookie_t missing = Helpers()->StartQueryCvarValue(Edict(1), "no_such");
  Helpers()->StartQueryCvarValue(Edict(2), "cl_language");  // Bob leaves before his answer comes
  EXPECT_EQ(Helpers()->StartQueryCvarValue(Edict(9), "x"), InvalidQueryCvarCookie);
  Plugin().Take();
  server.Server().Frame();
  EXPECT_EQ(Plugin().Take(), "");
  server.Run("sim_disconnect 3");  // its frame is the second
  EXPECT_EQ(Plugin().Take(), "ClientDisconnect @2\nQuery " + std::to_string(found) + " 0 cl_language=english @1\n" +
                                 "Query " + std::to_string(missing) + " 1 no_such= @1\n");
}

// The tables are locked to plugins once a level runs; a reconnected slot hears everybody again.
TEST_F(MessageTest, StringsWaitForTheLockVoiceRoutingResetsAndViewsNeedAClient) {
  OutputCapture out;
  INetworkStringTable* downloads =
      Iface<INetworkStringTableContainer>("VEngineServerStringTable001")->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), INVALID_STRING_INDEX);
  EXPECT_TRUE(Engine().LockNetworkStringTables(false));
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_STREQ(downloads->GetString(5), "");
  auto* voice = Iface<IVoiceServer>("VoiceServer001");
  voice->SetClientListening(1, 2, false);
  server.Run("sim_disconnect 3\nsim_connect Carol");
  EXPECT_TRUE(voice->GetClientListening(1, 2));
  EXPECT_FALSE(voice->SetClientListening(-1, 200, true));
  out.Take();
  Engine().SetView(Edict(1), Edict(77));
  Engine().SetView(Edict(9), Edict(0));
  std::string refused = "SetView: not a client, or no entity to look through; view unchanged\n";
  EXPECT_EQ(out.Take(), refused + refused);
}

// Key 0 is the menu's tenth bit; the key pressed reaches the plugin as menuselect in the player's name.
TEST_F(MessageTest, AMenuKeyIsPressedInThePlayersName) {
  Send({1}, 10, [](bf_write& m) { m.WriteShort(0x200), m.WriteChar(-1), m.WriteByte(0), m.WriteString("0. Exit"); });
  World().ShowDeliveries(false);
  EXPECT_EQ(server.Run("sim_menu 9 1"), "sim_menu: no client has userid \"9\"\n");
  Plugin().Take();
  EXPECT_EQ(server.Run("sim_menu 2 0"), "");
  World().ShowDeliveries(true);
  EXPECT_EQ(Plugin().Take(), "SetCommandClient 0\nClientCommand menuselect [0] @1\nSetCommandClient -1\n");
}

}  // namespace
