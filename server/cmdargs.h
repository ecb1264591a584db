// The console command being run: its tokens as the engine's tokenizer (ParseToken) reads them, and the raw
// text behind its name. Handlers read it through the engine's Cmd_Argc, Cmd_Argv and Cmd_Args.
#pragma once

#include <string>

// Tokens kept of one command, the command name included; further tokens are dropped.
constexpr int CMD_MAX_ARGS = 80;

class ConsoleCommand {
public:
  // Reads one command text. Storage is reused from call to call, so a record that is refilled often
  // allocates only when a command is longer than any before.
  void Tokenize(const char* text);

  int Argc() const { return m_argc; }
  // "" past the end, and for a negative index.
  const char* Argv(int index) const {
    return unsigned(index) < unsigned(m_argc) && index < CMD_MAX_ARGS ? m_argv[index] : "";
  }
  // Everything behind the command name, quotes kept, white space at both ends cut; "" if nothing.
  const char* Args() const { return m_lineText + m_argsStart; }
  // The whole command text as given.
  const char* Line() const { return m_text.c_str(); }

private:
  int m_argc = 0;
  const char* m_argv[CMD_MAX_ARGS] = {};
  std::string m_text;    // the command as given
  std::string m_line;    // the command with white space cut at the end, when it had any
  const char* m_lineText = "";  // m_line, or m_text when nothing was cut; Args points into it
  size_t m_argsStart = 0;
  std::string m_tokens;  // the tokens, each ended by a zero byte; m_argv points into it
};
