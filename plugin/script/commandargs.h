// CommandArgs: one tokenized command line that outlives the engine's own tokens. The expanded twins, the
// Python binders and block calls with arguments each fill one; handlers read it as they read the engine.
#pragma once

#include <cstddef>
#include <cstdint>

// Tokens kept per record, the command name included; further tokens are dropped.
enum { MAX_COMMAND_TOKENS = 80 };

class CommandArgs {
public:
  CommandArgs() = default;
  ~CommandArgs();
  CommandArgs(const CommandArgs&) = delete;
  CommandArgs& operator=(const CommandArgs&) = delete;

  int Argc() const { return m_argc; }
  // Token `i`; the empty text for any index out of range, negative ones included.
  const char* Argv(int i) const {
    return unsigned(i) < unsigned(m_argc) && unsigned(i) < MAX_COMMAND_TOKENS ? m_store + m_argv[i] : "";
  }
  // The text behind the first token, quotes included; null until a second token exists.
  const char* Args() const { return m_args < 0 ? nullptr : m_store + m_args; }

  // Building a record item by item (the Python door): tokens beyond the limit are dropped.
  void AddToken(const char* text, size_t length);
  void SetArgs(const char* text, size_t length);

private:
  friend CommandArgs* Cmd_Tokenize(const char* line);
  // Copies text (plus a terminator) into the store and gives its offset.
  uint32_t Store(const char* text, size_t length);
  void Reserve(size_t bytes);

  int m_argc = 0;
  uint32_t m_argv[MAX_COMMAND_TOKENS] = {};
  int64_t m_args = -1;
  // One block holds the line's copy and every token, so a record costs one allocation.
  char* m_store = nullptr;
  size_t m_used = 0;
  size_t m_capacity = 0;
};

// A new record from one line of text; the first line feed between tokens ends the line. The caller owns it.
CommandArgs* Cmd_Tokenize(const char* line);
