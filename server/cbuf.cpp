// The server command buffer: a stack of inserted texts in front of a queue of appended ones, and the rules
// that split them into commands.
#include "cbuf.h"

#include <algorithm>
#include <cstring>

#include "tier0.h"

namespace {

// Appended text already handed out is dropped from the front of the queue once it is this large and at
// least half of the queue's storage.
constexpr size_t kQueueCompactBytes = size_t(1) << 20;
// How much of a dropped text the overflow message shows.
constexpr int kOverflowPreview = 60;

// Bytes that can end a command or change how the bytes behind them count: the rest pass by in one loop.
struct SpecialBytes {
  bool flags[256] = {};
  constexpr SpecialBytes() {
    for (unsigned char c : {'"', ';', '\n', '/'}) flags[c] = true;
  }
};
constexpr SpecialBytes kSpecial;

// Finds where the command that starts at `p` ends: the first ';' or line feed outside double quotes, or
// `end`. A // that opens a word outside quotes makes the rest of the line a comment, where ';' ends nothing.
const char* FindCommandEnd(const char* p, const char* end) {
  bool quoted = false;
  const char* start = p;
  for (;; ++p) {
    while (p < end && !kSpecial.flags[static_cast<unsigned char>(*p)]) ++p;
    if (p == end) return end;
    const char c = *p;
    if (c == '"') {
      quoted = !quoted;
    } else if (c == '\n') {
      if (!quoted) return p;
    } else if (!quoted) {
      if (c == ';') return p;
      if (p + 1 < end && p[1] == '/' && (p == start || (unsigned char)p[-1] <= ' ')) {
        const void* lineEnd = memchr(p, '\n', size_t(end - p));
        return lineEnd ? static_cast<const char*>(lineEnd) : end;
      }
    }
  }
}

// The length of the command [start, stop) without its separator: a text's last line feed ends its command
// even inside an open quote, and isn't part of it.
size_t CommandLength(const char* start, const char* stop, const char* end) {
  size_t length = size_t(stop - start);
  if (stop == end && length > 0 && stop[-1] == '\n') --length;
  return length;
}

// Copies the command [start, stop) to `out` and gives the bytes it used up, its separator included.
size_t TakeCommand(const char* start, const char* stop, const char* end, std::string& out) {
  out.assign(start, CommandLength(start, stop, end));
  return size_t(stop - start) + (stop < end ? 1 : 0);
}

}  // namespace

bool CommandBuffer::Fits(size_t length, const char* text) {
  if (m_pending + length <= m_capacity) return true;
  if (!m_overflowReported) {
    m_overflowReported = true;
    int preview = 0;
    while (preview < kOverflowPreview && text[preview] && text[preview] != '\n') ++preview;
    Warning("Command buffer overflow: %zu of %zu bytes in use; dropped %zu bytes: %.*s\n", m_pending, m_capacity,
            length, preview, text);
  }
  return false;
}

bool CommandBuffer::AddText(const char* text) {
  if (!text) return true;
  size_t length = strlen(text);
  if (length == 0) return true;
  if (!Fits(length, text)) return false;
  if (m_queueEnds.empty()) {
    m_queueText.clear();
    m_queueRead = 0;
  }
  m_queueText.append(text, length);
  m_queueEnds.push_back(m_queueText.size());
  m_pending += length;
  return true;
}

bool CommandBuffer::InsertText(const char* text) { return Insert(text, false); }

bool CommandBuffer::InsertAliasText(const char* text) { return Insert(text, true); }

bool CommandBuffer::Insert(const char* text, bool alias) {
  if (!text) return true;
  size_t length = strlen(text);
  if (length == 0) return true;
  if (!Fits(length, text)) return false;
  PushChunk(text, length, alias);
  return true;
}

bool CommandBuffer::InsertLines(const char* text) {
  if (!text) return true;
  size_t length = strlen(text);
  if (length == 0) return true;
  if (!Fits(length, text)) return false;
  // The last line goes in first, so the first line ends on top.
  const char* end = text + length;
  while (end > text) {
    const char* start = end - 1;
    while (start > text && start[-1] != '\n') --start;
    PushChunk(start, size_t(end - start), false);
    end = start;
  }
  return true;
}

void CommandBuffer::PushChunk(const char* text, size_t length, bool alias) {
  uint32_t begin = uint32_t(m_stackText.size());
  m_stackText.insert(m_stackText.end(), text, text + length);
  m_stack.push_back(Chunk{begin, begin, uint32_t(m_stackText.size()), alias});
  m_pending += length;
}

void CommandBuffer::PopChunk() {
  const Chunk& top = m_stack.back();
  m_pending -= top.end - top.read;
  m_stackText.resize(top.begin);
  m_stack.pop_back();
}

void CommandBuffer::DropAliasText() {
  while (!m_stack.empty() && m_stack.back().alias) PopChunk();
  if (m_pending == 0) m_overflowReported = false;
}

bool CommandBuffer::NextCommand(std::string& out) {
  m_lastFromAlias = !m_stack.empty() && m_stack.back().alias;
  bool got = !m_stack.empty() ? TakeFromStack(out) : TakeFromQueue(out);
  if (m_pending == 0) m_overflowReported = false;
  return got;
}

std::string CommandBuffer::PeekCommand(size_t limit) const {
  const char* start = nullptr;
  const char* end = nullptr;
  if (!m_stack.empty()) {
    start = m_stackText.data() + m_stack.back().read;
    end = m_stackText.data() + m_stack.back().end;
  } else if (!m_queueEnds.empty()) {
    start = m_queueText.data() + m_queueRead;
    end = m_queueText.data() + m_queueEnds.front();
  } else {
    return std::string();
  }
  return std::string(start, std::min(CommandLength(start, FindCommandEnd(start, end), end), limit));
}

bool CommandBuffer::TakeFromStack(std::string& out) {
  Chunk& top = m_stack.back();
  const char* base = m_stackText.data();
  const char* start = base + top.read;
  const char* end = base + top.end;
  const char* stop = FindCommandEnd(start, end);
  size_t consumed = TakeCommand(start, stop, end, out);
  m_pending -= consumed;
  top.read += uint32_t(consumed);
  if (top.read == top.end) PopChunk();
  return true;
}

bool CommandBuffer::TakeFromQueue(std::string& out) {
  if (m_queueEnds.empty()) return false;
  const char* base = m_queueText.data();
  const char* start = base + m_queueRead;
  const char* end = base + m_queueEnds.front();
  const char* stop = FindCommandEnd(start, end);
  size_t consumed = TakeCommand(start, stop, end, out);
  m_pending -= consumed;
  m_queueRead += consumed;
  if (m_queueRead == m_queueEnds.front()) m_queueEnds.pop_front();
  if (m_queueEnds.empty()) {
    m_queueText.clear();
    m_queueRead = 0;
  } else if (m_queueRead >= kQueueCompactBytes && m_queueRead * 2 >= m_queueText.size()) {
    m_queueText.erase(0, m_queueRead);
    for (size_t& e : m_queueEnds) e -= m_queueRead;
    m_queueRead = 0;
  }
  return true;
}

void CommandBuffer::Clear() {
  m_stackText.clear();
  m_stack.clear();
  m_queueText.clear();
  m_queueEnds.clear();
  m_queueRead = 0;
  m_pending = 0;
  m_overflowReported = false;
  m_lastFromAlias = false;
}
