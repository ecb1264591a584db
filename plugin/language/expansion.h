// Variable expansion: server_var(name) and event_var(name) in the engine's tokens of the running command
// become their values, and every argument that needs double quotes gets them back. Also the commands
// tw, twnq (expand, then run) and tw_xnq (run with quotes removed).
#pragma once

#include "language/textbuf.h"

// Reads one variable form at token `index`; `out` already holds that token. Gives `index` when the token
// starts no form (out untouched), the index of the form's ")" with the expansion in `out`, or -1 for a
// malformed form (and for a value that passes the buffer).
int ParseVar(TextBuf& out, int index, int argc);
// Builds in `out` the expanded line of tokens first..argc-1, the last blank replaced by `last`. False on a
// malformed form or an overlong line, reported as "Error in string format.".
bool ParseCommand(TextBuf& out, int first, int argc, char last);
