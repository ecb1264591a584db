// Interactive console: readline, history and completion.
#include "interactive.h"

#include <readline/history.h>
#include <readline/readline.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "standin.h"

namespace {

constexpr const char* kPrompt = "] ";

std::vector<std::string> g_matches;

// Names of the chain and the aliases that start with `prefix`, ignoring case.
void CollectNames(const char* prefix) {
  size_t n = strlen(prefix);
  for (ConCommandBase* c = g_standIn->Console().GetCommands(); c; c = c->GetNext())
    if (strncasecmp(c->GetName(), prefix, n) == 0) g_matches.emplace_back(c->GetName());
  for (const std::string& name : g_standIn->AliasNames())
    if (strncasecmp(name.c_str(), prefix, n) == 0) g_matches.push_back(name);
}

// What the command in front of the cursor suggests for the whole line typed so far.
void CollectSuggestions(const std::string& line) {
  std::string name = line.substr(0, line.find(' '));
  ConCommandBase* base = g_standIn->Console().FindCommandBase(name);
  if (!base || !base->IsCommand()) return;
  auto* command = static_cast<ConCommand*>(base);
  if (!command->CanAutoComplete()) return;
  static char answers[COMMAND_COMPLETION_MAXITEMS][COMMAND_COMPLETION_ITEM_LENGTH];
  int count = command->AutoCompleteSuggest(line.c_str(), answers);
  for (int i = 0; i < count && i < COMMAND_COMPLETION_MAXITEMS; ++i) {
    answers[i][COMMAND_COMPLETION_ITEM_LENGTH - 1] = '\0';
    // A suggestion is a whole line; readline completes the word under the cursor.
    std::string s = answers[i];
    size_t space = s.rfind(' ');
    g_matches.push_back(space == std::string::npos ? s : s.substr(space + 1));
  }
}

char* NextMatch(const char* text, int state) {
  if (state == 0) {
    g_matches.clear();
    std::string line(rl_line_buffer, size_t(rl_point));
    if (line.find(' ') == std::string::npos) CollectNames(text);
    else CollectSuggestions(line);
  }
  return size_t(state) < g_matches.size() ? strdup(g_matches[size_t(state)].c_str()) : nullptr;
}

char** Complete(const char* text, int, int) {
  rl_attempted_completion_over = 1;
  return rl_completion_matches(text, NextMatch);
}

}  // namespace

void RunInteractive(CStandIn& server) {
  rl_attempted_completion_function = Complete;
  while (!server.QuitRequested()) {
    char* line = readline(kPrompt);
    if (!line) break;
    if (line[0]) add_history(line);
    server.RunLine(line);
    free(line);
    fflush(stdout);
  }
}
