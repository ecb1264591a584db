// Chat and HUD text: tw_msg and tw_tell (chat lines, coloured by a leading colour word), tw_centermsg and
// tw_centertell (centred text) and tw_toptext (a dialog record of the type "msg"). Texts come from the raw
// argument string, not from the split arguments, so a line keeps its own spacing. The filter, the id lookup
// and the dialog hand-over are usermessages.cpp's.
#include "messaging/chat.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "KeyValues.h"
#include "bitbuf.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iserverplugin.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "messaging/usermessages.h"
#include "vstdlib.h"
#include "world/players.h"

namespace {

struct NamedColor {
  const char* word;
  Color color;
};

const NamedColor kDialogColors[] = {
    {"#red", Color(255, 0, 0)},       {"#green", Color(0, 255, 0)},       {"#blue", Color(0, 0, 255)},
    {"#orange", Color(255, 130, 0)},  {"#purple", Color(144, 0, 226)},    {"#violet", Color(144, 0, 226)},
    {"#pink", Color(226, 0, 165)},    {"#cyan", Color(0, 255, 255)},      {"#yellow", Color(255, 255, 0)},
    {"#white", Color(255, 255, 255)}, {"#black", Color(0, 0, 0)},         {"#darkgreen", Color(0, 145, 0)},
    {"#darkblue", Color(0, 0, 145)},  {"#darkred", Color(145, 0, 0)},     {"#gray", Color(120, 120, 120)},
    {"#grey", Color(120, 120, 120)},
};

// The colour words of chat, first word of the message. "#multi" announces colour words inside the text.
enum class ChatColor { None, Green, LightGreen, Multi };

ChatColor ChatColorOf(const char* word) {
  if (strcasecmp(word, "#GREEN") == 0) return ChatColor::Green;
  if (strcasecmp(word, "#LIGHTGREEN") == 0) return ChatColor::LightGreen;
  if (strcasecmp(word, "#multi") == 0) return ChatColor::Multi;
  return ChatColor::None;
}

void SendChat(MRecipientFilter& filter, ChatKind kind, const char* text) {
  bf_write* buffer = engine->UserMessageBegin(&filter, GetUserMessageID(kind == CHAT_COLORED ? "TextMsg" : "SayText"));
  if (buffer) {
    buffer->WriteByte(TEXT_DEST_CHAT);
    buffer->WriteString(text);
  }
  engine->MessageEnd();
}

// The text behind the first place of `marker` (blank included) in the line; null when the line doesn't hold
// it there, as when the colour word is the last thing on the line.
const char* TextBehind(const char* line, const char* marker) {
  const char* found = Q_stristr(line, marker);
  return found ? found + strlen(marker) : nullptr;
}

// What a chat command sends, from its made line and colour word: the text into `out` and the kind of line.
// False when there is nothing to send. tw_tell's line starts with the userid, and its "#multi" text gets
// no leading default colour.
bool ChatText(const char* line, const char* colorWord, bool tell, char* out, ChatKind& kind) {
  kind = CHAT_COLORED;
  const char* text = nullptr;
  switch (ChatColorOf(colorWord)) {
    case ChatColor::Green:
      DbgMsg(1, "#green text\n");
      if (!(text = TextBehind(line, "#GREEN "))) return false;
      snprintf(out, TEXT_BUFFER_SIZE, "%c%s", CHAT_COLOR_GREEN, text);
      return true;
    case ChatColor::LightGreen:
      DbgMsg(1, "#lightgreen text\n");
      if (!(text = TextBehind(line, "#LIGHTGREEN "))) return false;
      snprintf(out, TEXT_BUFFER_SIZE, "%c%s", CHAT_COLOR_LIGHTGREEN, text);
      return true;
    case ChatColor::Multi:
      DbgMsg(1, "#multi text\n");
      if (!(text = TextBehind(line, "#MULTI "))) return false;
      if (ReplaceChatColors(out, text, !tell)) return true;
      ReportScriptError(0, "ERROR: resulting replaced string too long. Copied as much as we could.\n");
      SetLastErrorText("Resulting string too long.");
      return false;
    case ChatColor::None: break;
  }
  kind = CHAT_PLAIN;
  if (tell && !(text = strchr(line, ' '))) return false;
  snprintf(out, TEXT_BUFFER_SIZE, "%s", tell ? text + 1 : line);
  return true;
}

}  // namespace

// ---- sending ----

void SendChatLine(ChatKind kind, const char* text) {
  MRecipientFilter filter;
  filter.AddAllPlayers(MaxClients, playerinfomanager);
  SendChat(filter, kind, text);
  DbgMsg(0, "%s", text);
}

void SendChatLineTo(int userid, ChatKind kind, const char* text) {
  MRecipientFilter filter;
  filter.AddRecipientByUserid(userid, MaxClients, playerinfomanager);
  SendChat(filter, kind, text);
}

void SendCenterText(int userid, int destination, const char* text) {
  MRecipientFilter filter;
  if (userid < 1)
    filter.AddAllPlayers(MaxClients, playerinfomanager);
  else
    filter.AddRecipientByUserid(userid, MaxClients, playerinfomanager);
  bf_write* buffer = engine->UserMessageBegin(&filter, CENTER_TEXT_MESSAGE_ID);
  if (buffer) {
    buffer->WriteByte(destination);
    buffer->WriteString(text);
    for (int i = 0; i < 4; ++i) buffer->WriteString("");
  }
  engine->MessageEnd();
}

// ---- texts ----

void StripQuotes(char* out, size_t size, const char* in) {
  if (!out || size == 0) return;
  size_t n = 0;
  for (const char* p = in ? in : ""; *p && n + 1 < size; ++p)
    if (*p != '"') out[n++] = *p;
  out[n] = '\0';
}

void MakeChatLine(char* out, const char* raw) {
  // One byte stays free for the line feed.
  StripQuotes(out, TEXT_BUFFER_SIZE - 1, raw);
  if (!strchr(out, '\n')) strcat(out, "\n");
}

bool ReplaceChatColors(char* out, const char* text, bool leadingDefault) {
  static const struct {
    const char* word;
    char byte[2];
  } kSteps[] = {{"#green", {CHAT_COLOR_GREEN, 0}},
                {"#lightgreen", {CHAT_COLOR_LIGHTGREEN, 0}},
                {"#default", {CHAT_COLOR_DEFAULT, 0}}};
  char work[2][TEXT_BUFFER_SIZE];
  int length = snprintf(work[0], sizeof work[0], "%s%s", leadingDefault ? "\x01" : "", text);
  bool fits = length < TEXT_BUFFER_SIZE;
  int current = 0;
  for (const auto& step : kSteps) {
    fits = Q_StrSubst(work[current], step.word, step.byte, work[1 - current], TEXT_BUFFER_SIZE, false) && fits;
    current = 1 - current;
  }
  memcpy(out, work[current], TEXT_BUFFER_SIZE);
  return fits;
}

bool ParseColorName(const char* word, Color& color) {
  for (const NamedColor& named : kDialogColors) {
    if (strcasecmp(named.word, word) == 0) {
      color = named.color;
      return true;
    }
  }
  color = Color(255, 255, 255);
  return false;
}

bool ParseTopText(const char* rawArgs, size_t offset, TopText& top) {
  const size_t rawLength = strlen(rawArgs);
  char message[TopText::kMessageSize];
  snprintf(message, sizeof message, "%s", rawArgs + (offset < rawLength ? offset : rawLength));
  char word[TopText::kMaxColorWord + 1];
  snprintf(word, sizeof word, "%.*s", int(strcspn(message, " ")), message);
  const char* start = message;
  if (ParseColorName(word, top.color)) {
    if (strlen(message) <= strlen(word) + 1) return false;
    start += strlen(word) + 1;
  }
  StripQuotes(top.message, sizeof top.message, start);
  return true;
}

// ---- commands ----

namespace {

void Msg_h(bool expand, bool) {
  ArgView args(expand);
  char line[TEXT_BUFFER_SIZE];
  char text[TEXT_BUFFER_SIZE];
  MakeChatLine(line, args.Args());
  ChatKind kind;
  if (ChatText(line, args.Argv(1), false, text, kind)) SendChatLine(kind, text);
}

void Tell_h(bool expand, bool) {
  ArgView args(expand);
  char line[TEXT_BUFFER_SIZE];
  char text[TEXT_BUFFER_SIZE];
  MakeChatLine(line, args.Args());
  ChatKind kind;
  if (ChatText(line, args.Argv(2), true, text, kind)) SendChatLineTo(atoi(args.Argv(1)), kind, text);
}

void CenterMsg_h(bool expand, bool) {
  ArgView args(expand);
  SendCenterText(0, TEXT_DEST_CENTER, args.Args());
}

void CenterTell_h(bool expand, bool) {
  ArgView args(expand);
  char line[TEXT_BUFFER_SIZE];
  MakeChatLine(line, args.Args());
  const char* blank = strchr(line, ' ');
  if (blank) SendCenterText(atoi(args.Argv(1)), TEXT_DEST_CENTER, blank + 1);
}

void TopText_h(bool expand, bool) {
  ArgView args(expand);
  const int duration = atoi(args.Argv(2));
  if (duration < 1) {
    DbgMsg(0, "%s: The duration of your message was set too low\n", args.Argv(0));
    return;
  }
  const int userid = atoi(args.Argv(1));
  if (userid < 1) return;
  edict_t* edict = LookupEdictByUserid(userid);
  TopText top;
  if (!ParseTopText(args.Args(), strlen(args.Argv(1)) + strlen(args.Argv(2)) + 2, top)) {
    DbgMsg(0, "You must send a message\n");
    return;
  }
  if (!edict) return;
  KeyValues* record = new KeyValues("msg");
  record->SetString("title", top.message);
  record->SetColor("color", top.color);
  record->SetInt("level", 5);
  record->SetInt("time", duration);
  CreateDialog(edict, DIALOG_MSG, record);
  record->deleteThis();
}

const CommandRow kChatCommands[] = {
    {"msg", Msg_h, 2, "Syntax: %s Please provide a message to broadcast.\n",
     "Sends a chat line to every player: [#green|#lightgreen|#multi] <message>.", DOORS_ALL},
    {"tell", Tell_h, 3, "Syntax: %s <userid> [color] <message>\n",
     "Sends a chat line to one player: <userid> [#green|#lightgreen|#multi] <message>.", DOORS_ALL},
    {"centermsg", CenterMsg_h, 2, "Syntax: %s <string>\n", "Shows a text in the centre of every player's screen.",
     DOORS_ALL},
    {"centertell", CenterTell_h, 3, "Syntax: %s <userid> <string>\n",
     "Shows a text in the centre of one player's screen.", DOORS_ALL},
    {"toptext", TopText_h, 3, "Syntax: %s <userid> <duration> [color] <message>\n",
     "Shows a text at the top of one player's screen for a number of seconds, in a colour such as #red.",
     DOORS_ALL},
};
const CommandTable s_chatCommands(kChatCommands);

}  // namespace
