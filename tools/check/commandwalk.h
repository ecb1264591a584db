// The commands a script line runs, as the console would take them: split at ';' and line ends outside
// quotes (the stand-in's own command buffer), tokenized by the plugin's tokenizer, and followed into the
// commands that tw, twnq, tw_xnq, a `then`, an `else` and an alias's text run in their turn.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "script/commandargs.h"

struct WalkedCommand {
  const CommandArgs& args;
  const std::string& text;  // the command's own text
  std::string name;         // token 0, lower case
  bool expanded;            // server_var() and event_var() are replaced before it runs
  int depth;                // 0 for a command of the line itself
};

void WalkCommands(const std::string& line, const std::function<void(const WalkedCommand&)>& visit);

// True when token `index` starts a server_var() or event_var() form: where the command expands, its value
// isn't known to the checker.
bool StartsVariableForm(const CommandArgs& args, int index);
// The text with every server_var(NAME) and event_var(NAME) replaced by `placeholder`.
std::string ReplaceVariableForms(const std::string& text, const std::string& placeholder);
