// Memory exec: tw_mexec runs a configuration file like the engine's exec, from lines kept in memory and read
// again only when the file's time rises. With tidewright_exec-cmd set to tw_mexec, event and script pack
// files run this way.
#pragma once

#include "language/textbuf.h"

class KeyValues;

// Longest line handed to the engine: with its line feed it is a whole console line.
enum { MEXEC_MAX_LINE = kMaxConsoleLine - 1 };
// Bytes of one read: a longer line of the file comes in pieces, each a line of its own.
enum { MEXEC_READ_SIZE = 8000 };

// The cache tree "Mexec": one key per file, named "cfg/<name>", holding "filetime", the lines "1", "2", ...
// and "eof". Null until the first tw_mexec.
KeyValues* Mexec_Tree();
// The key of a file by its name in the tree ("cfg/<name>", compared exactly), or null.
KeyValues* Mexec_FindKey(const char* keyName);
