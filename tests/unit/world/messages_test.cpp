// What reaches clients: user messages with their layouts and recipients, dialogs, queries answered later,
// sounds, string tables, voice routing and views.
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

// Bit order and the overflow flag belong to the bit buffer; here, each layout read back field by field.
TEST_F(MessageTest, MessagesAreDecodedFieldByFieldAndWhatCantBeReadShowsItsBytes) {
  const std::string text(250, 'm');
  auto full = [&](bf_write& m) { m.WriteShort(1), m.WriteChar(-1), m.WriteByte(1), m.WriteString(text.c_str()); };
  const struct {
    int id;
    std::function<void(bf_write&)> write;
    std::string shown;
  } cases[] = {
      {10, [](bf_write& m) { m.WriteShort(0x3FF), m.WriteChar(-1), m.WriteByte(0), m.WriteString("1. Yes\n2. No"); },
       "> ShowMenu to 2: keys=0x3ff time=-1 more=0 text=\"1. Yes\\n2. No\"\n"},
      // Four bytes of header, 250 characters and the zero byte fill the buffer exactly.
      {10, full, "> ShowMenu to 2: keys=0x001 time=-1 more=1 text=\"" + text + "\"\n"},
      {3, [](bf_write& m) { m.WriteByte(3), m.WriteString(std::string(300, 'x').c_str()); },
       "> SayText to 2: overflowed its 255 bytes; not delivered\n"},
      {5, [](bf_write& m) { m.WriteByte(3), m.WriteString("\x04\"hi\"\t\\"); },
       "> TextMsg to 2: dest=3 text=\"\\x04\\\"hi\\\"\\x09\\\\\"\n"},
      {5, [](bf_write& m) { m.WriteByte(4), m.WriteString("hi"), m.WriteString(""), m.WriteString("x"); },
       "> TextMsg to 2: dest=4 text=\"hi\" params=\"\",\"x\"\n"},
      // A string without its zero byte can't be read as SayText.
      {3, [](bf_write& m) { m.WriteByte(3), m.WriteByte('h'); }, "> SayText to 2: bytes=03 68\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(Send({1}, c.id, c.write), c.shown);
}

TEST_F(MessageTest, MessagesAndDialogsReachClientsByUseridAndTheGameNamesItsMessages) {
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
  menu->SetString("title", "Pick");
  menu->SetColor("color", Color(255, 255, 255, 255));
  menu->FindKey("1", true)->SetString("command", "menuselect 1;//\"");
  Helpers()->CreateMessage(Edict(2), DIALOG_MENU, menu, nullptr);
  Helpers()->CreateMessage(Edict(9), DIALOG_MENU, menu, nullptr);
  menu->deleteThis();
  EXPECT_EQ(out.Take(),
            "> dialog menu to 3: \"menu\" title=\"Pick\" color=255,255,255,255 1.command=\"menuselect 1;//\\\"\"\n"
            "CreateMessage: not a client; nothing shown\n");
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
  std::string shown = server.Run("sim_disconnect 3");  // its frame is the second
  EXPECT_EQ(Plugin().Take(), "ClientDisconnect @2\nQuery " + std::to_string(found) + " 0 cl_language=english @1\n" +
                                 "Query " + std::to_string(missing) + " 1 no_such= @1\n");
  EXPECT_NE(shown.find("< query from 2: \"no_such\" = \"\" (not found)\n"), std::string::npos);
}

TEST_F(MessageTest, SoundsAndStringsAreAddedOnceVoiceRoutingResetsAndViewsNeedAClient) {
  auto* sound = Iface<IEngineSound>("IEngineSoundServer003");
  OutputCapture out;
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_TRUE(sound->PrecacheSound("ambient/wind.wav", false));
  EXPECT_FALSE(sound->PrecacheSound("", false));
  EXPECT_EQ(out.Take(), "> precache sound: \"ambient/wind.wav\" at 1\n");
  INetworkStringTable* downloads =
      Iface<INetworkStringTableContainer>("VEngineServerStringTable001")->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), INVALID_STRING_INDEX);  // locked
  EXPECT_TRUE(Engine().LockNetworkStringTables(false));
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_EQ(downloads->AddString("sound/x.wav", -1, nullptr), 0);
  EXPECT_EQ(out.Take(), "> stringtable downloadables: \"sound/x.wav\" at 0\n");
  EXPECT_EQ(downloads->FindStringIndex("sound/y.wav"), INVALID_STRING_INDEX);
  EXPECT_STREQ(downloads->GetString(5), "");
  auto* voice = Iface<IVoiceServer>("VoiceServer001");
  voice->SetClientListening(1, 2, false);
  server.Run("sim_disconnect 3\nsim_connect Carol");
  EXPECT_TRUE(voice->GetClientListening(1, 2));
  EXPECT_FALSE(voice->SetClientListening(-1, 200, true));
  Engine().SetView(Edict(1), Edict(0));
  Engine().SetView(Edict(1), Edict(77));
  Engine().SetView(Edict(9), Edict(0));
  std::string refused = "SetView: not a client, or no entity to look through; view unchanged\n";
  EXPECT_EQ(out.Take(), "> view to 2: entity 0 (worldspawn)\n" + refused + refused);
}

}  // namespace
