// What reaches clients, shown on the console one line per delivery: user messages (decoded where the game's
// layout is known, raw bytes otherwise), dialogs, and the delivery lines of every other service. A
// "ShowMenu" piece and a dialog are also kept by the clients they reach, for sim_menu and sim_dialog.
//   > KIND to USERIDS: CONTENT     something reached these clients (none: no line)
//   > KIND: CONTENT                something changed for every client (precache, tables, effects...)
//   < KIND from USERID: CONTENT    a client sent something the game handles itself
#include <cstring>

#include "KeyValues.h"
#include "irecipientfilter.h"
#include "tier0.h"
#include "world/sim_world.h"

namespace {

struct UserMessageInfo {
  const char* name;
  int size;  // bytes, -1 for variable
};

// The game's user messages; the index is the id.
constexpr UserMessageInfo kUserMessages[] = {
    {"Geiger", 1},        {"Train", 1},         {"HudText", -1},     {"SayText", -1},      {"SayText2", -1},
    {"TextMsg", -1},      {"HudMsg", -1},       {"ResetHUD", 1},     {"GameTitle", 0},     {"ItemPickup", -1},
    {"ShowMenu", -1},     {"Shake", 13},        {"Fade", 10},        {"VGUIMenu", -1},     {"Rumble", 3},
    {"CloseCaption", -1}, {"SendAudio", -1},    {"RawAudio", -1},    {"VoiceMask", 17},    {"RequestState", 0},
    {"BarTime", -1},      {"Damage", -1},       {"RadioText", -1},   {"HintText", -1},     {"KeyHintText", -1},
    {"ReloadEffect", 2},  {"PlayerAnimEvent", -1}, {"AmmoDenied", 2},
};
constexpr int kUserMessageCount = int(sizeof kUserMessages / sizeof kUserMessages[0]);

enum UserMessageId { MSG_HUDTEXT = 2, MSG_SAYTEXT = 3, MSG_SAYTEXT2 = 4, MSG_TEXTMSG = 5, MSG_SHOWMENU = 10,
                     MSG_VGUIMENU = 13, MSG_HINTTEXT = 23, MSG_KEYHINTTEXT = 24 };

constexpr int kMaxDecodedString = 2048;
// Strings that may follow the text of a TextMsg or SayText2.
constexpr int kMaxMessageParams = 4;

// Reads the fields of one user message; any read past the end or string without its zero byte fails the
// whole decoding, and the message is shown as bytes.
class Decoder {
public:
  Decoder(const unsigned char* data, int bits) : m_read(data, (bits + 7) / 8, bits) {}
  bool ok() const { return m_ok && !m_read.IsOverflowed(); }
  bool AtEnd() const { return m_read.GetNumBitsLeft() < 8; }
  int Byte() { return Check(8) ? m_read.ReadByte() : 0; }
  int Char() { return Check(8) ? m_read.ReadChar() : 0; }
  int Short() { return Check(16) ? m_read.ReadShort() : 0; }
  std::string String() {
    char text[kMaxDecodedString];
    if (!Check(8) || !m_read.ReadString(text, sizeof text)) m_ok = false;
    return m_ok ? EscapedText(text) : std::string();
  }

private:
  bool Check(int bits) {
    if (m_read.GetNumBitsLeft() < bits) m_ok = false;
    return m_ok;
  }
  bf_read m_read;
  bool m_ok = true;
};

std::string Params(Decoder& d) {
  std::string text;
  for (int i = 0; i < kMaxMessageParams && !d.AtEnd(); ++i) text += (i ? "," : " params=") + d.String();
  return text;
}

std::string DecodeFields(int id, Decoder& d) {
  switch (id) {
    case MSG_SAYTEXT: {
      std::string dest = std::to_string(d.Byte());
      return "dest=" + dest + " text=" + d.String();
    }
    case MSG_SAYTEXT2: {
      std::string entity = std::to_string(d.Byte());
      std::string chat = std::to_string(d.Byte());
      std::string text = d.String();
      return "entity=" + entity + " chat=" + chat + " text=" + text + Params(d);
    }
    case MSG_TEXTMSG: {
      std::string dest = std::to_string(d.Byte());
      std::string text = d.String();
      return "dest=" + dest + " text=" + text + Params(d);
    }
    case MSG_SHOWMENU: {
      char keys[16];
      snprintf(keys, sizeof keys, "0x%03x", d.Short() & 0xFFFF);
      std::string time = std::to_string(d.Char());
      std::string more = std::to_string(d.Byte());
      return std::string("keys=") + keys + " time=" + time + " more=" + more + " text=" + d.String();
    }
    case MSG_HUDTEXT:
    case MSG_HINTTEXT: return "text=" + d.String();
    case MSG_KEYHINTTEXT: {
      int count = d.Byte();
      std::string text = "count=" + std::to_string(count);
      for (int i = 0; i < count && d.ok(); ++i) text += " text=" + d.String();
      return text;
    }
    case MSG_VGUIMENU: {
      std::string name = d.String();
      std::string show = std::to_string(d.Byte());
      int count = d.Byte();
      std::string text = "name=" + name + " show=" + show;
      for (int i = 0; i < count && d.ok(); ++i) {
        std::string key = d.String();
        text += " " + key + "=" + d.String();
      }
      return text;
    }
    default: return std::string();
  }
}

// The fields of one "ShowMenu" piece.
struct MenuPiece {
  int keys;
  int time;
  bool more;
  char text[kMaxDecodedString];
};

bool ReadMenuPiece(const unsigned char* data, int bits, MenuPiece& piece) {
  bf_read read(data, (bits + 7) / 8, bits);
  if (read.GetNumBitsLeft() < 40) return false;
  piece.keys = read.ReadShort() & 0xFFFF;
  piece.time = read.ReadChar();
  piece.more = read.ReadByte() != 0;
  return read.ReadString(piece.text, sizeof piece.text) && !read.IsOverflowed();
}

std::string Bytes(const unsigned char* data, int bytes) {
  if (bytes == 0) return "bytes=(none)";
  std::string text = "bytes=";
  char hex[4];
  for (int i = 0; i < bytes; ++i) {
    snprintf(hex, sizeof hex, i ? " %02X" : "%02X", data[i]);
    text += hex;
  }
  return text;
}

std::string DecodeUserMessage(int id, const unsigned char* data, int bits) {
  Decoder d(data, bits);
  bool known = id == MSG_SAYTEXT || id == MSG_SAYTEXT2 || id == MSG_TEXTMSG || id == MSG_SHOWMENU ||
               id == MSG_HUDTEXT || id == MSG_HINTTEXT || id == MSG_KEYHINTTEXT || id == MSG_VGUIMENU;
  if (known) {
    std::string text = DecodeFields(id, d);
    if (d.ok() && d.AtEnd()) return text;
  }
  return Bytes(data, (bits + 7) / 8);
}

// ---- dialogs ----

const char* DialogName(int type) {
  switch (type) {
    case DIALOG_MSG: return "msg";
    case DIALOG_MENU: return "menu";
    case DIALOG_TEXT: return "text";
    case DIALOG_ENTRY: return "entry";
    default: return nullptr;
  }
}

void FlattenKeys(KeyValues* key, const std::string& prefix, std::string& out) {
  for (KeyValues* k = key->GetFirstSubKey(); k; k = k->GetNextKey()) {
    std::string name = prefix + k->GetName();
    char number[64];
    switch (k->GetDataTypeRaw()) {
      case KeyValues::TYPE_NONE:
        if (k->GetFirstSubKey()) FlattenKeys(k, name + ".", out);
        else out += " " + name + "=\"\"";
        continue;
      case KeyValues::TYPE_INT: snprintf(number, sizeof number, "%d", k->GetInt()); break;
      case KeyValues::TYPE_FLOAT: snprintf(number, sizeof number, "%g", double(k->GetFloat())); break;
      case KeyValues::TYPE_COLOR: {
        Color c = k->GetColor();
        snprintf(number, sizeof number, "%d,%d,%d,%d", c.r, c.g, c.b, c.a);
        break;
      }
      case KeyValues::TYPE_STRING: out += " " + name + "=" + EscapedText(k->GetString()); continue;
      default: snprintf(number, sizeof number, "(type %d)", int(k->GetDataTypeRaw())); break;
    }
    out += " " + name + "=" + number;
  }
}

}  // namespace

// ---- text ----

std::string EscapedText(const char* text) { return EscapedText(text, text ? strlen(text) : 0); }

std::string EscapedText(const char* text, size_t length) {
  std::string out = "\"";
  for (size_t i = 0; text && i < length; ++i) {
    unsigned char c = (unsigned char)text[i];
    if (c == '\n') out += "\\n";
    else if (c == '\\') out += "\\\\";
    else if (c == '"') out += "\\\"";
    else if (c < 0x20 || c == 0x7F) {
      char hex[8];
      snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    } else {
      out += char(c);
    }
  }
  return out + "\"";
}

// ---- recipients and lines ----

std::string CSimWorld::Recipients(const IRecipientFilter& filter) const {
  std::vector<int> indexes;
  int count = filter.GetRecipientCount();
  for (int i = 0; i < count; ++i) indexes.push_back(filter.GetRecipientIndex(i));
  return RecipientsOf(indexes);
}

std::string CSimWorld::RecipientsOf(const std::vector<int>& indexes) const {
  std::string list;
  for (int index : indexes) {
    int userid = UseridOfIndex(index);
    if (userid <= 0) continue;
    if (!list.empty()) list += ',';
    list += std::to_string(userid);
  }
  return list;
}

std::string CSimWorld::HumanRecipients(int team) const {
  std::string list;
  for (CClient* c : Clients()) {
    if (c->fake || (team >= 0 && c->entity->fields.teamNum != team)) continue;
    if (!list.empty()) list += ',';
    list += std::to_string(c->userid);
  }
  return list;
}

void CSimWorld::Deliver(const char* kind, const std::string& recipients, const std::string& content) const {
  if (!m_showDeliveries || recipients.empty()) return;
  Msg("> %s to %s: %s\n", kind, recipients.c_str(), content.c_str());
}

void CSimWorld::Announce(const char* kind, const std::string& content) const {
  if (m_showDeliveries) Msg("> %s: %s\n", kind, content.c_str());
}

void CSimWorld::ShowDialog(CClient& client, int type, KeyValues* data) {
  client.dialog.type = type;
  client.dialog.record.reset(data ? data->MakeCopy() : nullptr);
  const char* name = DialogName(type);
  std::string kind = name ? std::string("dialog ") + name : "dialog type " + std::to_string(type);
  std::string fields;
  if (data) FlattenKeys(data, "", fields);
  Deliver(kind.c_str(), std::to_string(client.userid), (data ? EscapedText(data->GetName()) : "\"\"") + fields);
}

// ---- user messages ----

bool UserMessageInfoOf(int id, char* name, int maxNameLength, int& size) {
  if (id < 0 || id >= kUserMessageCount || !name || maxNameLength < 1) return false;
  snprintf(name, size_t(maxNameLength), "%s", kUserMessages[id].name);
  size = kUserMessages[id].size;
  return true;
}

bf_write* CSimWorld::UserMessageBegin(IRecipientFilter* filter, int msgType) {
  if (m_messageType >= 0) Warning("UserMessageBegin: message %d was never ended; dropped\n", m_messageType);
  m_messageType = msgType;
  // The recipients are copied as they stand at the start; the copy keeps its capacity from send to send.
  m_messageIndexes.clear();
  int count = filter ? filter->GetRecipientCount() : 0;
  for (int i = 0; i < count; ++i) m_messageIndexes.push_back(filter->GetRecipientIndex(i));
  m_message.StartWriting(m_messageData, sizeof m_messageData);
  return &m_message;
}

void CSimWorld::MessageEnd() {
  if (m_messageType < 0) {
    Warning("MessageEnd without UserMessageBegin; ignored\n");
    return;
  }
  int id = m_messageType;
  m_messageType = -1;
  if (id >= kUserMessageCount) {
    Warning("User message %d doesn't exist; not delivered\n", id);
    return;
  }
  if (id == MSG_SHOWMENU && !m_message.IsOverflowed()) {
    MenuPiece piece;
    if (ReadMenuPiece(m_messageData, m_message.GetNumBitsWritten(), piece))
      for (int index : m_messageIndexes)
        if (CClient* client = ClientBySlot(index)) ReceiveMenuPiece(*client, piece.keys, piece.time, piece.more, piece.text);
  }
  if (m_messageTap) {
    SentUserMessage sent{id, {}, {m_messageData, m_messageData + m_message.GetNumBytesWritten()}, m_message.IsOverflowed()};
    for (int index : m_messageIndexes)
      if (int userid = UseridOfIndex(index); userid > 0) sent.userids.push_back(userid);
    m_messageTap(sent);
  }
  if (m_showDeliveries) DeliverMessage(id);
}

void CSimWorld::DeliverMessage(int id) {
  const char* name = kUserMessages[id].name;
  if (m_message.IsOverflowed()) {
    Deliver(name, RecipientsOf(m_messageIndexes),
            "overflowed its " + std::to_string(WORLD_USER_MESSAGE_BYTES) + " bytes; not delivered");
    return;
  }
  Deliver(name, RecipientsOf(m_messageIndexes), DecodeUserMessage(id, m_messageData, m_message.GetNumBitsWritten()));
}
