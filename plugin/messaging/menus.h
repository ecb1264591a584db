// Menus and dialog boxes. A menu is the user message "ShowMenu": the text in pieces, the number keys it
// takes and how long it stays; the player's answer comes back as the client command "menuselect". The
// dialogs of the escape screen are KeyValues records handed to the engine; tw_keygroupmsg sends one that a
// script built in a keygroup.
#pragma once

// Characters of menu text in one "ShowMenu" message.
enum { MENU_PIECE_LENGTH = 250 };
// The key mask of all ten number keys: key 1 is bit 0, key 9 bit 8, key 0 bit 9.
enum { MENU_ALL_KEYS = 0x3FF };
// The time field of a menu that stays until answered.
enum { MENU_NO_TIME_LIMIT = -1 };

// The keys that an options text lets a menu take: each digit anywhere in it; all ten for a null text.
int GetMenuKeyMask(const char* options);
// Sends a menu to one player in pieces of MENU_PIECE_LENGTH characters. A time of 0 means no limit; a
// userid of 0 or below sends nothing.
void ShowMenu(int userid, int time, const char* text, const char* options);
