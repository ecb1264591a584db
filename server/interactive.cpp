// Interactive console: readline in its callback form (so that Ctrl-C is ours at the prompt and while a
// line runs), history in a file under the user's home, and completion.
#include "interactive.h"

#include <readline/history.h>
#include <readline/readline.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "standin.h"

namespace {

constexpr const char* kPrompt = "] ";
// The history file under $HOME, and how many lines it keeps.
constexpr const char* kHistoryFile = ".tidewright_history";
constexpr int kHistoryLines = 1000;

// Set by SIGINT at the prompt; while a line runs, SIGINT asks the server to stop instead.
volatile std::sig_atomic_t g_promptInterrupt = 0;
volatile std::sig_atomic_t g_lineRunning = 0;

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

void OnInterrupt(int) {
  if (g_lineRunning) CStandIn::RequestInterrupt();
  else g_promptInterrupt = 1;
}

std::string HistoryPath() {
  const char* home = getenv("HOME");
  return home && home[0] ? std::string(home) + "/" + kHistoryFile : std::string();
}

// The prompt's state between the callbacks of readline.
struct Prompt {
  CStandIn* server = nullptr;
  std::string history;
  bool done = false;
  bool quitAsked = false;  // Ctrl-C on an empty line once: a second one ends the server
  bool installed = false;  // readline's handler (and its terminal mode) is in place
  sigset_t interrupt;      // SIGINT alone
};

Prompt g_prompt;

void RunTypedLine(char* line);

void ShowPrompt(bool show) {
  if (show && !g_prompt.installed) rl_callback_handler_install(kPrompt, RunTypedLine);
  if (!show && g_prompt.installed) rl_callback_handler_remove();
  g_prompt.installed = show;
}

void RunTypedLine(char* line) {
  if (!line) {  // Ctrl-D on an empty line, or the end of input
    printf("\n");
    g_prompt.done = true;
    return;
  }
  ShowPrompt(false);  // the terminal as usual while the line runs
  g_prompt.quitAsked = false;
  if (line[0]) {
    add_history(line);
    if (!g_prompt.history.empty() && append_history(1, g_prompt.history.c_str()) == 0)
      history_truncate_file(g_prompt.history.c_str(), kHistoryLines);
  }
  // SIGINT reaches the prompt's loop only inside its wait; while the line runs it stops the run.
  g_lineRunning = 1;
  sigprocmask(SIG_UNBLOCK, &g_prompt.interrupt, nullptr);
  g_prompt.server->RunLine(line);
  sigprocmask(SIG_BLOCK, &g_prompt.interrupt, nullptr);
  g_lineRunning = 0;
  free(line);
  fflush(stdout);
  if (g_prompt.server->QuitRequested()) g_prompt.done = true;
  else ShowPrompt(true);
}

// Ctrl-C at the prompt: clears what is typed; else empties a buffer left busy; else asks, then ends.
void InterruptAtPrompt() {
  g_promptInterrupt = 0;
  bool typed = rl_end > 0;
  printf("^C\n");
  rl_replace_line("", 0);
  if (typed) {
    g_prompt.quitAsked = false;
  } else if (!g_prompt.server->Cbuf().IsEmpty()) {
    g_prompt.server->Interrupt();
  } else if (g_prompt.quitAsked) {
    g_prompt.done = true;
    return;
  } else {
    g_prompt.quitAsked = true;
    printf("(Ctrl-C again or Ctrl-D to end the server; quit does the same)\n");
  }
  fflush(stdout);
  rl_on_new_line();
  rl_redisplay();
}

// SIGINT goes to OnInterrupt and stays blocked but in the wait for input, which it ends: a Ctrl-C can't
// slip in between the loop's test and its wait. Gives the signal mask for that wait.
sigset_t TakeInterrupts() {
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigemptyset(&g_prompt.interrupt);
  sigaddset(&g_prompt.interrupt, SIGINT);
  sigset_t waiting;
  sigprocmask(SIG_BLOCK, &g_prompt.interrupt, &waiting);
  sigdelset(&waiting, SIGINT);
  return waiting;
}

}  // namespace

void RunInteractive(CStandIn& server) {
  g_prompt.server = &server;
  g_prompt.history = HistoryPath();
  // A missing history file is made, so that each line can be appended as it is entered.
  if (!g_prompt.history.empty() && read_history(g_prompt.history.c_str()) != 0) write_history(g_prompt.history.c_str());
  rl_attempted_completion_function = Complete;
  rl_catch_signals = 0;
  sigset_t waiting = TakeInterrupts();
  ShowPrompt(true);
  while (!g_prompt.done) {
    fd_set in;
    FD_ZERO(&in);
    FD_SET(STDIN_FILENO, &in);
    int ready = pselect(STDIN_FILENO + 1, &in, nullptr, nullptr, nullptr, &waiting);
    if (g_promptInterrupt) InterruptAtPrompt();
    else if (ready > 0) rl_callback_read_char();
    else if (ready < 0 && errno != EINTR) break;
    if (rl_end > 0) g_prompt.quitAsked = false;
  }
  ShowPrompt(false);
  signal(SIGINT, SIG_DFL);
  sigprocmask(SIG_UNBLOCK, &g_prompt.interrupt, nullptr);
}
