// The clients' side of menus and dialogs, and the stand-in's commands that play the player answering them:
// sim_menu presses a number key on an open "ShowMenu" menu, sim_dialog picks a button of an escape-screen
// menu or types into an entry box. sim_stringtable adds a string to a network string table as the engine
// itself does, past the lock that holds plugins back once a level has started.
#include <strings.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "KeyValues.h"
#include "console.h"
#include "iserverplugin.h"
#include "standin.h"
#include "tier0.h"
#include "world/sim_world.h"

void KeyValuesDeleter::operator()(KeyValues* record) const {
  if (record) record->deleteThis();
}

// ---- menus ----

void CSimWorld::ReceiveMenuPiece(CClient& client, int keys, int time, bool more, const char* text) {
  ClientMenu& menu = client.menu;
  menu.pieces += text;
  if (more) return;
  menu.text = std::move(menu.pieces);
  menu.pieces.clear();
  menu.keys = keys;
  menu.open = true;
  menu.timed = time != -1;
  menu.closesAt = Now() + time;
}

bool CSimWorld::MenuOpen(CClient& client) const {
  ClientMenu& menu = client.menu;
  if (menu.open && menu.timed && Now() >= menu.closesAt) menu.open = false;
  return menu.open;
}

namespace {

IVEngineServer& Engine() { return g_standIn->Engine(); }
const char* Argv(int i) { return Engine().Cmd_Argv(i); }
int Argc() { return Engine().Cmd_Argc(); }

// The client that argument 1 names by userid, or null after a line saying so.
CClient* ClientArg() {
  char* end = nullptr;
  errno = 0;
  long userid = strtol(Argv(1), &end, 10);
  bool number = !errno && end != Argv(1) && !*end && userid > 0 && userid <= INT_MAX;
  CClient* client = number ? SimWorld().ClientByUserid(int(userid)) : nullptr;
  if (!client) Msg("%s: no client has userid \"%s\"\n", Argv(0), Argv(1));
  return client;
}

// The bit of a number key in a menu's key mask: key 1 is bit 0, key 0 bit 9.
int KeyBit(char key) { return 1 << (key == '0' ? 9 : key - '1'); }

void SimMenu_f() {
  const char* key = Argv(2);
  if (key[0] < '0' || key[0] > '9' || key[1]) {
    PrintConsoleUsage();
    return;
  }
  CClient* client = ClientArg();
  if (!client) return;
  CSimWorld& world = SimWorld();
  if (!world.MenuOpen(*client)) {
    Msg("sim_menu: userid %d has no menu open\n", client->userid);
    return;
  }
  if (!(client->menu.keys & KeyBit(key[0]))) {
    Msg("sim_menu: the menu of userid %d doesn't take key %s\n", client->userid, key);
    return;
  }
  // Closed before the answer runs, so that a menu the answer opens stays open.
  client->menu.open = false;
  std::string command = std::string("menuselect ") + key;
  g_standIn->RunClientCommand(Engine().PEntityOfEntIndex(client->slot), command.c_str());
}

const char* DialogKind(int type) {
  switch (type) {
    case DIALOG_MSG: return "msg";
    case DIALOG_TEXT: return "text";
    default: return nullptr;
  }
}

// The console line that answers the client's last dialog with `choice`; false, after a line saying why,
// when that dialog takes no such answer.
bool DialogAnswer(const CClient& client, const char* choice, std::string& line) {
  const ClientDialog& dialog = client.dialog;
  KeyValues* record = dialog.record.get();
  if (!record) {
    Msg("sim_dialog: userid %d has no dialog to answer\n", client.userid);
    return false;
  }
  if (dialog.type == DIALOG_MENU) {
    KeyValues* button = record->FindKey(choice);
    if (!button || !button->GetFirstSubKey() || !button->FindKey("command")) {
      Msg("sim_dialog: the menu of userid %d has no button \"%s\"\n", client.userid, choice);
      return false;
    }
    line = button->GetString("command");
    return true;
  }
  if (dialog.type == DIALOG_ENTRY) {
    line = std::string(record->GetString("command")) + " " + choice;
    return true;
  }
  const char* kind = DialogKind(dialog.type);
  if (kind)
    Msg("sim_dialog: the last dialog of userid %d is a %s dialog, which takes no answer\n", client.userid, kind);
  else
    Msg("sim_dialog: the last dialog of userid %d is of type %d, which takes no answer\n", client.userid,
        dialog.type);
  return false;
}

void SimDialog_f() {
  CClient* client = ClientArg();
  std::string line;
  if (!client || !DialogAnswer(*client, Argv(2), line)) return;
  // Answered once: the dialog is gone from the client's screen.
  client->dialog.record.reset();
  client->dialog.type = -1;
  SimWorld().ClientConsole(*client, line.c_str());
}

void SimStringTable_f() {
  CStringTable* table = SimWorld().StringTables().Table(Argv(1));
  if (!table) {
    Msg("sim_stringtable: no string table \"%s\"\n", Argv(1));
    return;
  }
  int index = table->AddInternal(Argv(2));
  if (index != INVALID_STRING_INDEX && Argc() > 3) table->SetStringUserData(index, int(strlen(Argv(3))), Argv(3));
}

const ConsoleCommandDef kCommands[] = {
    {"sim_menu", SimMenu_f, "The player presses a number key on the open menu: sim_menu <userid> <key 0-9>.", 0, 3,
     "Usage: sim_menu <userid> <key 0-9>: the player presses a number key on the open menu\n"},
    {"sim_dialog", SimDialog_f, "The player answers the last dialog: sim_dialog <userid> <button number or text>.",
     0, 3,
     "Usage: sim_dialog <userid> <choice>: the player answers the last dialog (a button's number, or the text "
     "typed into an entry box)\n"},
    {"sim_stringtable", SimStringTable_f,
     "Adds a string to a string table as the engine does: sim_stringtable <table> <text> [userdata].", 0, 3,
     "Usage: sim_stringtable <table> <text> [userdata]: adds a string to a table as the engine does\n"},
};

}  // namespace

void RegisterMessagingSimCommands(CCvar& console) {
  console.AddCommands(kCommands, sizeof kCommands / sizeof kCommands[0]);
}
