// The command and event reference (docs/commands.md, docs/events.md), generated from what the plugin and
// the stand-in register: the plugin's command tables with their doors, usage lines, minimum counts and
// help texts, grouped by the subsystem and file that declare them; the stand-in's own console; and the
// game events that the resource files of a game tree declare, with their fields, types and comments.
#pragma once

#include <string>

// The two texts, from stand-ins started on `gameDir`. False with the reason in `error`.
bool BuildReference(const std::string& gameDir, std::string& commands, std::string& events, std::string& error);
// Writes FOLDER/commands.md and FOLDER/events.md; false after printing why on standard error.
bool WriteReference(const std::string& gameDir, const std::string& folder);
