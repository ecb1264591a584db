// WalkCommands: splitting, tokenizing and the prefixes that run another command.
#include "commandwalk.h"

#include <strings.h>

#include <cctype>
#include <cstring>

#include "cbuf.h"

namespace {

// A then-command inside a then-command inside ...: deeper than any line a person writes.
constexpr int kMaxDepth = 8;

std::string Lower(const char* text) {
  std::string out = text;
  for (char& c : out) c = char(tolower(static_cast<unsigned char>(c)));
  return out;
}

void Walk(const std::string& line, bool expanded, int depth, const std::function<void(const WalkedCommand&)>& visit) {
  if (depth > kMaxDepth) return;
  CommandBuffer buffer(line.size() + 1);
  buffer.AddText(line.c_str());
  std::string text;
  while (buffer.NextCommand(text)) {
    std::unique_ptr<CommandArgs> args(Cmd_Tokenize(text.c_str()));
    if (args->Argc() == 0) continue;
    const WalkedCommand command{*args, text, Lower(args->Argv(0)), expanded, depth};
    visit(command);
    if (expanded && StartsVariableForm(*args, 0)) continue;
    const std::string rest = args->Args() ? args->Args() : "";
    const std::string& name = command.name;
    if (name == "tw" || name == "twnq") {
      Walk(rest, true, depth + 1, visit);
    } else if (name == "tw_xnq") {
      Walk(rest, expanded, depth + 1, visit);
    } else if ((name == "tw_xif" || name == "if") && strcasecmp(args->Argv(6), "then") == 0) {
      const size_t then = rest.find(") then ");
      if (then != std::string::npos) Walk(rest.substr(then + 7), expanded || name == "if", depth + 1, visit);
    } else if ((name == "tw_xelse" || name == "else") && args->Argc() > 1 && strcasecmp(args->Argv(1), "do") != 0) {
      Walk(rest, expanded || name == "else", depth + 1, visit);
    } else if (name == "alias" && args->Argc() == 3) {
      Walk(args->Argv(2), false, depth + 1, visit);
    }
  }
}

}  // namespace

void WalkCommands(const std::string& line, const std::function<void(const WalkedCommand&)>& visit) {
  Walk(line, false, 0, visit);
}

bool StartsVariableForm(const CommandArgs& args, int index) {
  const char* token = args.Argv(index);
  return (strcasecmp(token, "server_var") == 0 || strcasecmp(token, "event_var") == 0) &&
         strcmp(args.Argv(index + 1), "(") == 0;
}

std::string ReplaceVariableForms(const std::string& text, const std::string& placeholder) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    size_t length = 0;
    if (strncasecmp(text.c_str() + i, "server_var", 10) == 0) length = 10;
    if (strncasecmp(text.c_str() + i, "event_var", 9) == 0) length = 9;
    size_t open = i + length;
    while (length && open < text.size() && (text[open] == ' ' || text[open] == '\t')) ++open;
    const size_t close = length && open < text.size() && text[open] == '(' ? text.find(')', open) : std::string::npos;
    if (close == std::string::npos) {
      out += text[i++];
      continue;
    }
    out += placeholder;
    i = close + 1;
  }
  return out;
}
