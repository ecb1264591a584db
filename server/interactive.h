// The console on a terminal: a readline prompt with history kept across runs and tab completion over
// command, variable and alias names, and over what a command suggests for its arguments. Ctrl-C clears the
// line typed, empties the command buffer while a line runs or after one was left busy, and on an empty
// line asks once before a second one ends the server; Ctrl-D on an empty line ends it.
#pragma once

class CStandIn;

// Reads lines until end of input, Ctrl-C twice or quit, running each to its end before the prompt
// returns. The caller shuts the server down.
void RunInteractive(CStandIn& server);
