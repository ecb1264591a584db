// The console on a terminal: a readline prompt with history and tab completion over command, variable
// and alias names, and over what a command suggests for its arguments.
#pragma once

class CStandIn;

// Reads lines until end of input or quit, running each to its end before the prompt returns.
void RunInteractive(CStandIn& server);
