// Registered commands: three tables that bind a word to a block (console commands, say commands, client
// commands), the commands that fill them, the proxies behind script-made console commands, and the two
// paths on which players' text comes in: the say path (CSayWrap::Dispatch) and the plugin's ClientCommand.
#pragma once

#include "iserverplugin.h"

// ClientCommand, in this order: tidewright_version (or tw_version) is answered with the description; a
// command starting with one of tidewright_cmdprefixes, or menuselect, fires tw_client_command; while
// brannock_tidewright is above 0 a registered client command runs its block and stops there (PLUGIN_STOP).
PLUGIN_RESULT RegCmds_OnClientCommand(edict_t* edict);

// The block bound to a word, or null (also for a null name). Names compare ignoring case, but the hash
// counts it: a word is found in the case it was registered in.
const char* FindConsoleCommand(const char* name);
const char* FindSayCommand(const char* name);
const char* FindClientCommand(const char* name);

// The text of a chat line as the chat event shows it: the outer pair of double quotes cut when the text
// begins and ends with one and at most one more stands between them. Works in place.
void CutOuterQuotes(char* text);
