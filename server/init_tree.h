// `tidewright-server --init DIR`: a new server root to start from, with what the stand-in and the plugin
// read at start-up, and nothing else.
#pragma once

#include <string>

// Makes the server root `root`: hl2/resource/ with the engine's event files, and the mod game/ with its
// event file, the plugin's event file, cfg/autoexec.cfg, cfg/server.cfg, an empty corelib and an example
// script. The event files come from the demo tree as built. Changes nothing and gives false with a
// message when one of the files exists already or can't be made. `program` is how the server was started,
// for the message that tells how to start the new tree.
bool InitServerRoot(const std::string& root, const std::string& program);
