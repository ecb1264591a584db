// The commands on server variables: assignment, copy, forced values, flags, block arguments, and the small
// commands that write a text to the log, the debug output or back into the command stream.
#pragma once

// The userid of the client whose command or chat line is running; 0 when none. Written by the paths that
// run a client's command, read by tw_getcmduserid.
extern int g_commandUserid;
