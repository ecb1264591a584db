// Menus and dialogs: tw_menu and the "ShowMenu" pieces it sends, the escape-screen dialogs tw_escmenu,
// tw_esctextbox and tw_escinputbox with the records they build, and tw_keygroupmsg, which hands a script's
// own record to the engine. The answers come back as client commands; this file keeps no state of its own.
#include "messaging/menus.h"

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
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "messaging/usermessages.h"
#include "vstdlib.h"
#include "world/players.h"

namespace {

// Seconds that a dialog may stay, both ends allowed.
constexpr int kMinDialogTime = 10;
constexpr int kMaxDialogTime = 200;
// Buttons of an escape menu.
constexpr int kMaxDialogButtons = 8;
// "menuselect %i;//\"" holds its 16 characters exactly.
constexpr int kButtonCommandSize = 17;
// The entry command in its quotes: at most 1022 characters.
constexpr int kEntryCommandSize = 1023;

void SendMenuPiece(MRecipientFilter& filter, int id, int keys, int time, bool more, const char* text) {
  bf_write* buffer = engine->UserMessageBegin(&filter, id);
  if (buffer) {
    buffer->WriteShort(keys);
    buffer->WriteChar(time);
    buffer->WriteByte(more ? 1 : 0);
    buffer->WriteString(text);
  }
  engine->MessageEnd();
}

// A dialog's text: each backslash followed by the letter n becomes a line feed, nothing else.
void DialogText(char* out, size_t size, const char* in) {
  size_t n = 0;
  for (const char* p = in; *p && n + 1 < size; ++p) {
    if (p[0] == '\\' && p[1] == 'n') {
      out[n++] = '\n';
      ++p;
    } else {
      out[n++] = *p;
    }
  }
  out[n] = '\0';
}

// What the three dialog commands share: the time checked before the userid, then the record with its keys
// in their order. Null, after the report, for a time out of bounds or a userid without a player.
KeyValues* OpenDialog(const ArgView& args, const char* recordName, edict_t*& edict) {
  const int time = Q_atoi(args.Argv(1));
  if (time < kMinDialogTime || time > kMaxDialogTime) {
    ReportScriptError(0,
                      "Error: \"%s\" is an invalid specifier for <time>.\n"
                      "Error: <time> must be at least 10 or at the most 200.\n",
                      args.Argv(1));
    return nullptr;
  }
  edict = LookupEdictByUserid(Q_atoi(args.Argv(2)));
  if (!edict) {
    ReportScriptError(0, "Error: \"%s\" is an invalid userid.\n", args.Argv(2));
    return nullptr;
  }
  char text[TEXT_BUFFER_SIZE];
  DialogText(text, sizeof text, args.Argv(4));
  KeyValues* record = new KeyValues(recordName);
  record->SetString("title", args.Argv(3));
  record->SetInt("level", 0);
  record->SetColor("color", Color(255, 255, 255, 255));
  record->SetInt("time", time);
  record->SetString("msg", text);
  return record;
}

void ShowDialog(edict_t* edict, DIALOG_TYPE type, KeyValues* record) {
  CreateDialog(edict, type, record);
  record->deleteThis();
}

// ---- commands ----

void Menu_h(bool expand, bool) {
  ArgView args(expand);
  char text[TEXT_BUFFER_SIZE];
  ExpandEscapes(text, sizeof text, args.Argv(3));
  const char* options = args.Argc() > 4 ? args.Argv(4) : nullptr;
  ShowMenu(atoi(args.Argv(2)), atoi(args.Argv(1)), text, options);
}

void EscMenu_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* edict = nullptr;
  KeyValues* record = OpenDialog(args, "menu", edict);
  if (!record) return;
  for (int n = 1; n <= kMaxDialogButtons && args.Argc() > n + 4; ++n) {
    char name[4];
    char command[kButtonCommandSize];
    snprintf(name, sizeof name, "%d", n);
    snprintf(command, sizeof command, "menuselect %i;//\"", n);
    KeyValues* button = record->FindKey(name, true);
    button->SetString("msg", args.Argv(n + 4));
    button->SetString("command", command);
  }
  ShowDialog(edict, DIALOG_MENU, record);
}

void EscTextBox_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* edict = nullptr;
  if (KeyValues* record = OpenDialog(args, "textBox", edict)) ShowDialog(edict, DIALOG_TEXT, record);
}

void EscInputBox_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* edict = nullptr;
  KeyValues* record = OpenDialog(args, "entryBox", edict);
  if (!record) return;
  char command[kEntryCommandSize];
  snprintf(command, sizeof command, "\"%s\"", args.Argv(5));
  record->SetString("command", command);
  ShowDialog(edict, DIALOG_ENTRY, record);
}

void KeyGroupMsg_h(bool expand, bool) {
  ArgView args(expand);
  KeyValues* group = FindGroup(args.Argv(3), false);
  const int userid = atoi(args.Argv(1));
  if (userid <= 0) ReportScriptError(0, "Invalid userid: %s\n", args.Argv(1));
  const int type = atoi(args.Argv(2));
  if (!group) {
    ReportScriptError(0, "Error: KeyGroup %s not found.\n", args.Argv(3));
    return;
  }
  KeyValues* message = FindChildKey(group, "message");
  if (!message) {
    ReportScriptError(0, "Error: 'message' subkey was not found inside keygroup %s\n", args.Argv(3));
    return;
  }
  SendKeyValuesMessage(userid, type, message);
}

const CommandRow kMenuCommands[] = {
    {"menu", Menu_h, 3, "Syntax: %s <duration> <userid> <menu-text> [options]\n",
     "Shows a menu to one player; \\n starts a new line, the options' digits are the keys it takes and a "
     "duration of 0 keeps it open.",
     DOORS_ALL},
    {"escmenu", EscMenu_h, 6,
     "Syntax: %s <time> <userid> <title> <text> <button1> [button...] [button8]\n",
     "Shows a menu of up to eight buttons on a player's escape screen; a button answers with menuselect.",
     DOORS_ALL},
    {"esctextbox", EscTextBox_h, 5, "Syntax: %s <time> <userid> <title> <text>\n",
     "Shows a text box on a player's escape screen.", DOORS_ALL},
    {"escinputbox", EscInputBox_h, 6, "Syntax: %s <time> <userid> <title> <text> <command>\n",
     "Asks a player for a text on the escape screen; the client runs the command followed by the answer.",
     DOORS_ALL},
    {"keygroupmsg", KeyGroupMsg_h, 3, "Syntax: %s <userid> <type> <keygroup>\n",
     "Sends the key \"message\" of a keygroup to a player as a dialog of that type.", DOORS_ALL},
};
const CommandTable s_menuCommands(kMenuCommands);

}  // namespace

int GetMenuKeyMask(const char* options) {
  if (!options) return MENU_ALL_KEYS;
  int mask = 0;
  for (const char* p = options; *p; ++p)
    if (*p >= '0' && *p <= '9') mask |= 1 << (*p == '0' ? 9 : *p - '1');
  return mask;
}

void ShowMenu(int userid, int time, const char* text, const char* options) {
  if (userid <= 0) return;
  const int timeField = time == 0 ? MENU_NO_TIME_LIMIT : time;
  const int keys = GetMenuKeyMask(options);
  const int id = GetUserMessageID("ShowMenu");
  MRecipientFilter filter;
  filter.AddRecipientByUserid(userid, MaxClients, playerinfomanager);
  const char* rest = text ? text : "";
  size_t remaining = strlen(rest);
  char piece[MENU_PIECE_LENGTH + 1];
  for (; remaining >= MENU_PIECE_LENGTH; rest += MENU_PIECE_LENGTH, remaining -= MENU_PIECE_LENGTH) {
    memcpy(piece, rest, MENU_PIECE_LENGTH);
    piece[MENU_PIECE_LENGTH] = '\0';
    SendMenuPiece(filter, id, keys, timeField, true, piece);
  }
  TW_ASSERT(strlen(rest) < MENU_PIECE_LENGTH, "the last piece is shorter than a full one");
  SendMenuPiece(filter, id, keys, timeField, false, rest);
}
