// The server command buffer: texts appended at the tail (ServerCommand) and inserted at the head
// (InsertServerCommand), handed out one command at a time. Knows nothing of what a command means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

// Default capacity in bytes of text waiting in the buffer.
constexpr size_t CBUF_DEFAULT_CAPACITY = size_t(16) << 20;

// Inserted texts live on a stack whose top is the head of the buffer, appended texts in a queue behind it,
// so both operations cost the length of the text added and never touch what waits. The end of every added
// text ends a command; inside a text, commands end at ';' and line feeds outside double quotes, and a ';'
// in a // comment ends nothing.
class CommandBuffer {
public:
  explicit CommandBuffer(size_t capacity = CBUF_DEFAULT_CAPACITY) : m_capacity(capacity) {}

  // Both give false, print one overflow message and keep nothing of `text` when it doesn't fit.
  bool AddText(const char* text);
  bool InsertText(const char* text);
  // Inserts the text of an alias: the commands taken from it are known as alias text until it is used up.
  bool InsertAliasText(const char* text);
  // Inserts a text line by line, so that each line ends its command whatever its quotes: a file's broken
  // line can't swallow the lines behind it. All of it or, when it doesn't fit, nothing.
  bool InsertLines(const char* text);

  // Takes the next command off the head into `out` (without its separator). False when the buffer is empty.
  // Empty commands (two separators in a row) are handed out as empty texts.
  bool NextCommand(std::string& out);
  // Whether the command NextCommand gave last came from alias text.
  bool LastFromAlias() const { return m_lastFromAlias; }
  // Drops the alias texts at the head of the buffer, up to the first text that isn't an alias's.
  void DropAliasText();

  // The next command's text as NextCommand would give it, cut to `limit` bytes; empty when none waits.
  std::string PeekCommand(size_t limit) const;

  bool IsEmpty() const { return m_pending == 0; }
  size_t PendingBytes() const { return m_pending; }
  size_t Capacity() const { return m_capacity; }
  void Clear();

private:
  // One inserted text: [begin, end) of the stack arena, `read` the first byte not yet handed out.
  struct Chunk {
    uint32_t begin, read, end;
    bool alias;
  };

  bool Fits(size_t length, const char* text);
  bool Insert(const char* text, bool alias);
  void PushChunk(const char* text, size_t length, bool alias);
  void PopChunk();
  bool TakeFromStack(std::string& out);
  bool TakeFromQueue(std::string& out);

  size_t m_capacity;
  size_t m_pending = 0;         // bytes not yet handed out, stack and queue together
  bool m_overflowReported = false;
  bool m_lastFromAlias = false;

  std::vector<char> m_stackText;  // the inserted texts, the most recent at the end
  std::vector<Chunk> m_stack;

  std::string m_queueText;        // the appended texts, read from m_queueRead on
  size_t m_queueRead = 0;
  std::deque<size_t> m_queueEnds;  // where each appended text ends in m_queueText
};
