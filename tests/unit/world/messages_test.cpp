// What reaches clients: user messages with their bits and recipients, dialogs, queries answered later,
// sounds, string tables and voice routing.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "KeyValues.h"
#include "irecipientfilter.h"
#include "world_fixture.h"

namespace {

class Recipients final : public IRecipientFilter {
public:
  explicit Recipients(std::vector<int> indexes) : m_indexes(std::move(indexes)) {}
  bool IsReliable() const override { return false; }
  bool IsInitMessage() const override { return false; }
  int GetRecipientCount() const override { return int(m_indexes.size()); }
  int GetRecipientIndex(int slot) const override {
    return slot >= 0 && slot < int(m_indexes.size()) ? m_indexes[size_t(slot)] : -1;
  }

private:
  std::vector<int> m_indexes;
};

// Alice (userid 2, index 1), Bob (3, 2) and the bot Robo (4, 3).
class MessageTest : public WorldTest {
protected:
  MessageTest() { server.Run("sim_connect Alice\nsim_connect Bob\nsim_addbot Robo"); }
  std::string Send(std::vector<int> to, int id, const std::function<void(bf_write&)>& write) {
    Recipients filter(std::move(to));
    OutputCapture out;
    bf_write* msg = Engine().UserMessageBegin(&filter, id);
    write(*msg);
    Engine().MessageEnd();
    return out.Take();
  }
  IServerPluginHelpers* Helpers() { return Iface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001"); }
};

TEST_F(MessageTest, MessagesAreDecodedFieldByFieldFromBitsWrittenLowestFirst) {
  const struct {
    int id;
    std::function<void(bf_write&)> write;
    const char* shown;
  } cases[] = {
      {10, [](bf_write& m) { m.WriteShort(0x3FF), m.WriteChar(-1), m.WriteByte(0), m.WriteString("1. Yes\n2. No"); },
       "> ShowMenu to 2: keys=0x3ff time=-1 more=0 text=\"1. Yes\\n2. No\"\n"},
      {5, [](bf_write& m) { m.WriteByte(3), m.WriteString("\x04hi\n"); }, "> TextMsg to 2: dest=3 text=\"\\x04hi\\n\"\n"},
      {5,
       [](bf_write& m) {
         m.WriteByte(4), m.WriteString("hi");
         for (int i = 0; i < 4; ++i) m.WriteString("");
       },
       "> TextMsg to 2: dest=4 text=\"hi\" params=\"\",\"\",\"\",\"\"\n"},
      {23, [](bf_write& m) { m.WriteString("press \"E\""); }, "> HintText to 2: text=\"press \\\"E\\\"\"\n"},
      {14,
       [](bf_write& m) {
         m.WriteOneBit(1), m.WriteOneBit(0), m.WriteOneBit(1), m.WriteUBitLong(0x1F, 5);
         m.WriteShort(-2), m.WriteLong(0x01020304);
       },
       "> Rumble to 2: bytes=FD FE FF 04 03 02 01\n"},
      // A string without its zero byte can't be read as SayText.
      {3, [](bf_write& m) { m.WriteByte(3), m.WriteByte('h'); }, "> SayText to 2: bytes=03 68\n"},
      {8, [](bf_write&) {}, "> GameTitle to 2: bytes=(none)\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(Send({1}, c.id, c.write), c.shown);
}

TEST_F(MessageTest, AFullBufferOverflowsAndIsNotDelivered) {
  std::string out = Send({1}, 3, [](bf_write& m) {
    m.WriteByte(3);
    m.WriteString(std::string(300, 'x').c_str());
    EXPECT_TRUE(m.IsOverflowed());
    EXPECT_EQ(m.GetNumBitsWritten(), WORLD_USER_MESSAGE_BYTES * 8);
  });
  EXPECT_EQ(out, "> SayText to 2: overflowed its 255 bytes; not delivered\n");
  // 250 characters of menu text with its four bytes of header and its zero byte fill the buffer exactly.
  std::string menu = Send({1}, 10, [](bf_write& m) {
    m.WriteShort(1), m.WriteChar(-1), m.WriteByte(1), m.WriteString(std::string(250, 'm').c_str());
    EXPECT_FALSE(m.IsOverflowed());
  });
  EXPECT_EQ(menu.find("more=1 text=\"mmm"), 36u);
}

TEST_F(MessageTest, RecipientsAreUseridsOfClientsAndTheGameNamesItsMessages) {
  auto say = [](bf_write& m) { m.WriteByte(3), m.WriteString("x"); };
  EXPECT_EQ(Send({3, 0, 99, -1, 1}, 3, say), "> SayText to 4,2: dest=3 text=\"x\"\n");
  EXPECT_EQ(Send({}, 3, say), "");
  EXPECT_EQ(Send({1}, 99, say), "User message 99 doesn't exist; not delivered\n");
  OutputCapture out;
  Engine().MessageEnd();
  EXPECT_TRUE(out.Contains("MessageEnd without UserMessageBegin"));
  auto* dll = Iface<IServerGameDLL>("ServerGameDLL005");
  char name[32];
  int size = 0;
  ASSERT_TRUE(dll->GetUserMessageInfo(27, name, sizeof name, size));
  EXPECT_STREQ(name, "AmmoDenied");
  EXPECT_FALSE(dll->GetUserMessageInfo(28, name, sizeof name, size));
  EXPECT_FALSE(dll->GetUserMessageInfo(-1, name, sizeof name, size));
  ASSERT_TRUE(dll->GetUserMessageInfo(10, name, 5, size));
  EXPECT_STREQ(name, "Show");
}

TEST_F(MessageTest, DialogsShowEveryFieldToClientsOnly) {
  KeyValues* menu = new KeyValues("menu");
  menu->SetString("title", "Pick");
  menu->SetInt("level", 0);
  menu->SetColor("color", Color(255, 255, 255, 255));
  KeyValues* button = menu->FindKey("1", true);
  button->SetString("msg", "Yes");
  button->SetString("command", "menuselect 1;//\"");
  OutputCapture out;
  Helpers()->CreateMessage(Edict(2), DIALOG_MENU, menu, nullptr);
  Helpers()->CreateMessage(Edict(9), DIALOG_MENU, menu, nullptr);
  menu->deleteThis();
  EXPECT_EQ(out.Take(), "> dialog menu to 3: \"menu\" title=\"Pick\" level=0 color=255,255,255,255 1.msg=\"Yes\" "
                        "1.command=\"menuselect 1;//\\\"\"\nCreateMessage: not a client; nothing shown\n");
}

TEST_F(MessageTest, QueriesAreAnsweredTwoFramesLaterAndDroppedWhenTheClientLeft) {
  QueryCvarCookie_t found = Helpers()->StartQueryCvarValue(Edict(1), "cl_language");
  QueryCvarCookie_t missing = Helpers()->StartQueryCvarValue(Edict(1), "no_such");
  Helpers()->StartQueryCvarValue(Edict(2), "cl_language");  // Bob leaves before his answer comes
  EXPECT_EQ(Helpers()->StartQueryCvarValue(Edict(9), "x"), InvalidQueryCvarCookie);
  EXPECT_NE(found, missing);
  Plugin().Take();
  server.Server().Frame();
  EXPECT_EQ(Plugin().Take(), "");
  std::string shown = server.Run("sim_disconnect 3");  // its frame is the second
  EXPECT_EQ(Plugin().Take(), "ClientDisconnect @2\nQuery " + std::to_string(found) + " 0 cl_language=english @1\n" +
                                 "Query " + std::to_string(missing) + " 1 no_such= @1\n");
  EXPECT_NE(shown.find("< query from 2: \"no_such\" = \"\" (not found)\n"), std::string::npos);
}

TEST_F(MessageTest, SoundsPrecacheOnceAndStringTablesRefuseAddsWhileLocked) {
  auto* sound = Iface<IEngineSound>("IEngineSoundServer003");
  Recipients everyone({1, 2, 3});
  OutputCapture out;
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_FALSE(sound->PrecacheSound("", false));
  sound->EmitSound(everyone, 1, CHAN_AUTO, "ambient/wind.wav", 0.7f, 1.0f);
  EXPECT_EQ(out.Take(),
            "> precache sound: \"ambient/wind.wav\" at 1\n"
            "> sound to 2,3,4: \"ambient/wind.wav\" entity 1 channel 0 volume 0.70 attenuation 1.00 pitch 100\n");
  INetworkStringTable* downloads =
      Iface<INetworkStringTableContainer>("VEngineServerStringTable001")->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), INVALID_STRING_INDEX);
  EXPECT_TRUE(Engine().LockNetworkStringTables(false));
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_FALSE(Engine().LockNetworkStringTables(true));
  EXPECT_EQ(out.Take(), "> stringtable downloadables: \"sound/x.wav\" at 0\n");
  EXPECT_EQ(downloads->FindStringIndex("sound/y.wav"), INVALID_STRING_INDEX);
  EXPECT_STREQ(downloads->GetString(5), "");
}

TEST_F(MessageTest, VoiceRoutingResetsForANewClient) {
  auto* voice = Iface<IVoiceServer>("VoiceServer001");
  voice->SetClientListening(1, 2, false);
  EXPECT_FALSE(voice->GetClientListening(1, 2));
  server.Run("sim_disconnect 3\nsim_connect Carol");
  EXPECT_TRUE(voice->GetClientListening(1, 2));
  EXPECT_FALSE(voice->SetClientListening(-1, 200, true));
}

}  // namespace
