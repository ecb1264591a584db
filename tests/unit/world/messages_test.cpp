// What reaches clients: user messages with their bits and recipients, dialogs, queries answered later,
// sounds, string tables and the escaping of delivery lines.
#include <gtest/gtest.h>

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

class MessageTest : public WorldTest {
protected:
  MessageTest() { server.Run("sim_connect Alice\nsim_connect Bob\nsim_addbot Robo"); }
  template <class Write>
  std::string Send(std::vector<int> to, int id, Write write) {
    Recipients filter(std::move(to));
    OutputCapture out;
    bf_write* msg = Engine().UserMessageBegin(&filter, id);
    write(*msg);
    Engine().MessageEnd();
    return out.Take();
  }
};

TEST_F(MessageTest, AMenuIsDecodedFieldByField) {
  std::string out = Send({1}, 10, [](bf_write& m) {
    m.WriteShort(0x3FF);
    m.WriteChar(-1);
    m.WriteByte(0);
    m.WriteString("1. Yes\n2. No");
  });
  EXPECT_EQ(out, "> ShowMenu to 2: keys=0x3ff time=-1 more=0 text=\"1. Yes\\n2. No\"\n");
}

TEST_F(MessageTest, ChatAndCentredTextLayouts) {
  EXPECT_EQ(Send({1, 2}, 3, [](bf_write& m) { m.WriteByte(3), m.WriteString("hi\n"); }),
            "> SayText to 2,3: dest=3 text=\"hi\\n\"\n");
  EXPECT_EQ(Send({2}, 5, [](bf_write& m) { m.WriteByte(3), m.WriteString("\x04hi\n"); }),
            "> TextMsg to 3: dest=3 text=\"\\x04hi\\n\"\n");
  EXPECT_EQ(Send({1}, 5, [](bf_write& m) {
              m.WriteByte(4), m.WriteString("hi");
              for (int i = 0; i < 4; ++i) m.WriteString("");
            }),
            "> TextMsg to 2: dest=4 text=\"hi\" params=\"\",\"\",\"\",\"\"\n");
  EXPECT_EQ(Send({1}, 23, [](bf_write& m) { m.WriteString("press \"E\""); }),
            "> HintText to 2: text=\"press \\\"E\\\"\"\n");
}

TEST_F(MessageTest, BitsGoInLowestFirstAndUndecodableMessagesShowTheirBytes) {
  EXPECT_EQ(Send({1}, 14, [](bf_write& m) {
              m.WriteOneBit(1), m.WriteOneBit(0), m.WriteOneBit(1);
              m.WriteUBitLong(0x1F, 5);
              m.WriteShort(-2);
              m.WriteLong(0x01020304);
            }),
            "> Rumble to 2: bytes=FD FE FF 04 03 02 01\n");
  // A string without its zero byte can't be read as SayText.
  EXPECT_EQ(Send({1}, 3, [](bf_write& m) { m.WriteByte(3), m.WriteByte('h'); }), "> SayText to 2: bytes=03 68\n");
  EXPECT_EQ(Send({1}, 8, [](bf_write&) {}), "> GameTitle to 2: bytes=(none)\n");
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

TEST_F(MessageTest, RecipientsAreUseridsAndNobodyPrintsNothing) {
  EXPECT_EQ(Send({3, 0, 99, -1, 1}, 3, [](bf_write& m) { m.WriteByte(3), m.WriteString("x"); }),
            "> SayText to 4,2: dest=3 text=\"x\"\n");
  EXPECT_EQ(Send({}, 3, [](bf_write& m) { m.WriteByte(3), m.WriteString("x"); }), "");
  EXPECT_EQ(Send({1}, 99, [](bf_write& m) { m.WriteByte(3); }), "User message 99 doesn't exist; not delivered\n");
  OutputCapture out;
  Engine().MessageEnd();
  EXPECT_TRUE(out.Contains("MessageEnd without UserMessageBegin"));
}

TEST_F(MessageTest, TheGameNamesItsMessages) {
  auto* dll = GameInterface<IServerGameDLL>("ServerGameDLL005");
  char name[32];
  int size = 0;
  ASSERT_TRUE(dll->GetUserMessageInfo(0, name, sizeof name, size));
  EXPECT_STREQ(name, "Geiger");
  ASSERT_TRUE(dll->GetUserMessageInfo(27, name, sizeof name, size));
  EXPECT_STREQ(name, "AmmoDenied");
  EXPECT_FALSE(dll->GetUserMessageInfo(28, name, sizeof name, size));
  EXPECT_FALSE(dll->GetUserMessageInfo(-1, name, sizeof name, size));
  ASSERT_TRUE(dll->GetUserMessageInfo(10, name, 5, size));
  EXPECT_STREQ(name, "Show");
}

TEST_F(MessageTest, DialogsShowEveryField) {
  auto* helpers = EngineInterface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001");
  KeyValues* menu = new KeyValues("menu");
  menu->SetString("title", "Pick");
  menu->SetInt("level", 0);
  menu->SetColor("color", Color(255, 255, 255, 255));
  menu->SetString("msg", "Which?");
  KeyValues* button = menu->FindKey("1", true);
  button->SetString("msg", "Yes");
  button->SetString("command", "menuselect 1;//\"");
  OutputCapture out;
  helpers->CreateMessage(Engine().PEntityOfEntIndex(2), DIALOG_MENU, menu, nullptr);
  helpers->CreateMessage(Engine().PEntityOfEntIndex(9), DIALOG_MENU, menu, nullptr);
  menu->deleteThis();
  EXPECT_EQ(out.Take(),
            "> dialog menu to 3: \"menu\" title=\"Pick\" level=0 color=255,255,255,255 msg=\"Which?\" 1.msg=\"Yes\" "
            "1.command=\"menuselect 1;//\\\"\"\nCreateMessage: not a client; nothing shown\n");
}

TEST_F(MessageTest, QueriesAreAnsweredTwoFramesLater) {
  auto* helpers = EngineInterface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001");
  OutputCapture out;
  QueryCvarCookie_t found = helpers->StartQueryCvarValue(Engine().PEntityOfEntIndex(1), "cl_language");
  QueryCvarCookie_t missing = helpers->StartQueryCvarValue(Engine().PEntityOfEntIndex(1), "no_such");
  EXPECT_EQ(helpers->StartQueryCvarValue(Engine().PEntityOfEntIndex(9), "x"), InvalidQueryCvarCookie);
  EXPECT_NE(found, missing);
  Plugin().calls.clear();
  server.Server().Frame();
  EXPECT_EQ(Plugin().Take(), "");
  server.Server().Frame();
  EXPECT_EQ(Plugin().Take(), "Query " + std::to_string(found) + " 0 cl_language=english @1\nQuery " +
                                 std::to_string(missing) + " 1 no_such= @1\n");
  EXPECT_TRUE(out.Contains("< query from 2: \"no_such\" = \"\" (not found)\n"));
}

TEST_F(MessageTest, AQueryForAClientWhoLeftIsDropped) {
  auto* helpers = EngineInterface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001");
  helpers->StartQueryCvarValue(Engine().PEntityOfEntIndex(1), "cl_language");
  server.Run("sim_disconnect 2");
  Plugin().calls.clear();
  server.Server().Frame();
  server.Server().Frame();
  EXPECT_EQ(Plugin().Take(), "");
}

TEST_F(MessageTest, SoundsGoToTheirRecipientsAndPrecacheOnce) {
  auto* sound = EngineInterface<IEngineSound>("IEngineSoundServer003");
  Recipients humans({1, 2, 3});
  OutputCapture out;
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_FALSE(sound->PrecacheSound("", false));
  sound->EmitSound(humans, 1, CHAN_AUTO, "ambient/wind.wav", 0.7f, 1.0f);
  sound->StopSound(1, 0, "ambient/wind.wav");
  EXPECT_EQ(out.Take(),
            "> precache sound: \"ambient/wind.wav\" at 1\n"
            "> sound to 2,3,4: \"ambient/wind.wav\" entity 1 channel 0 volume 0.70 attenuation 1.00 pitch 100\n"
            "> stopsound: \"ambient/wind.wav\" entity 1 channel 0\n");
}

TEST_F(MessageTest, StringTablesRefuseAddsWhileLocked) {
  auto* tables = EngineInterface<INetworkStringTableContainer>("VEngineServerStringTable001");
  INetworkStringTable* downloads = tables->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), INVALID_STRING_INDEX);
  EXPECT_TRUE(Engine().LockNetworkStringTables(false));
  OutputCapture out;
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_FALSE(Engine().LockNetworkStringTables(true));
  EXPECT_EQ(out.Take(), "> stringtable downloadables: \"sound/x.wav\" at 0\n");
  EXPECT_EQ(downloads->FindStringIndex("sound/x.wav"), 0);
  EXPECT_EQ(downloads->FindStringIndex("sound/y.wav"), INVALID_STRING_INDEX);
  EXPECT_STREQ(downloads->GetString(5), "");
  EXPECT_EQ(Engine().PrecacheModel("models/new.mdl", false), 5);
  EXPECT_STREQ(tables->FindTable("modelprecache")->GetString(5), "models/new.mdl");
}

TEST_F(MessageTest, VoiceRoutingResetsForANewClient) {
  auto* voice = EngineInterface<IVoiceServer>("VoiceServer001");
  EXPECT_TRUE(voice->GetClientListening(1, 2));
  voice->SetClientListening(1, 2, false);
  EXPECT_FALSE(voice->GetClientListening(1, 2));
  server.Run("sim_disconnect 3\nsim_connect Carol");
  EXPECT_TRUE(voice->GetClientListening(1, 2));
  EXPECT_FALSE(voice->SetClientListening(-1, 200, true));
}

TEST_F(MessageTest, TextIsEscapedSoADeliveryIsOneLine) {
  EXPECT_EQ(EscapedText("a\nb\\c\"d\te\x01"), "\"a\\nb\\\\c\\\"d\\x09e\\x01\"");
  EXPECT_EQ(EscapedText(nullptr), "\"\"");
  EXPECT_EQ(EscapedText("caf\xc3\xa9"), "\"caf\xc3\xa9\"");
}

TEST_F(MessageTest, PlayerOperationsOfTheEngineAreShown) {
  OutputCapture out;
  Engine().SetView(Engine().PEntityOfEntIndex(1), Engine().PEntityOfEntIndex(0));
  Engine().FadeClientVolume(Engine().PEntityOfEntIndex(1), 50, 1, 2, 3);
  Engine().LightStyle(0, "abc");
  Engine().ClientCommand(Engine().PEntityOfEntIndex(3), "%s", "say bots have no console");
  Engine().SetView(Engine().PEntityOfEntIndex(1), Engine().PEntityOfEntIndex(77));
  EXPECT_EQ(out.Take(),
            "> view to 2: entity 0 (worldspawn)\n> fadevolume to 2: 50% out 1.00 hold 2.00 in 3.00\n"
            "> lightstyle: 0 \"abc\"\nSetView: not a client, or no entity to look through; view unchanged\n");
}

}  // namespace
