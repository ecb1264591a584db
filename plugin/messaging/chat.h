// Chat lines and HUD text: coloured chat to everybody or to one player, centred text, and the top text that
// the engine's plugin dialog shows. The layouts are fixed: a chat line is the destination byte 3 and the
// text; centred text is the destination byte, the text and four empty strings.
#pragma once

#include <cstddef>

#include "basetypes.h"

// Which message a chat line goes as: a plain line as "SayText", a coloured one as "TextMsg".
enum ChatKind { CHAT_PLAIN = 3, CHAT_COLORED = 5 };

// Destination codes of a text: the chat area and the centre of the screen.
enum { TEXT_DEST_CHAT = 3, TEXT_DEST_CENTER = 4 };
// Centred text goes under this id, with no lookup by name.
enum { CENTER_TEXT_MESSAGE_ID = 5 };
// Colour bytes that the game's chat renders inside a text.
enum : char { CHAT_COLOR_DEFAULT = 0x01, CHAT_COLOR_LIGHTGREEN = 0x03, CHAT_COLOR_GREEN = 0x04 };

// To every human player, and printed on the server console verbatim at level 0.
void SendChatLine(ChatKind kind, const char* text);
// To one player (bots included), printed nowhere. A userid without a player reaches nobody.
void SendChatLineTo(int userid, ChatKind kind, const char* text);
// To every human player for a userid below 1, else to that player.
void SendCenterText(int userid, int destination, const char* text);

// ---- texts ----

// `in` without any double quote, into `out` of `size` bytes.
void StripQuotes(char* out, size_t size, const char* in);
// A chat line from a command's raw argument text: the quotes stripped and a line feed added when the text
// holds none. `out` holds TEXT_BUFFER_SIZE bytes.
void MakeChatLine(char* out, const char* raw);
// "#multi": `text` with "#green", "#lightgreen" and "#default" (case ignored, in that order) made into their
// colour bytes, behind CHAT_COLOR_DEFAULT when `leadingDefault`. False when a step didn't fit 2048 bytes;
// `out` (TEXT_BUFFER_SIZE bytes) then holds as much as fitted.
bool ReplaceChatColors(char* out, const char* text, bool leadingDefault);

// A dialog colour by its word ("#red", "#grey"...), case ignored. False, and white, for any other word.
bool ParseColorName(const char* word, Color& color);

// The top text of tw_toptext: the message behind the userid and the duration, a leading colour word taken
// off it, its double quotes stripped.
struct TopText {
  enum { kMessageSize = 256, kMaxColorWord = 32 };
  char message[kMessageSize];
  Color color;
};
// `rawArgs` is the command's raw argument text; the message starts at `offset`. False when a colour word
// has no message behind it.
bool ParseTopText(const char* rawArgs, size_t offset, TopText& top);
