// The console tokenizers (the engine's ParseToken and command record, the plugin's Cmd_Tokenize) on any
// line, and the command buffer under any mix of appends and inserts into a small capacity, drained to its
// end. The input is cut at byte 0x01; each piece's first byte picks how it enters the buffer.
#include <cstring>

#include "cbuf.h"
#include "cmdargs.h"
#include "fuzz_target.h"
#include "output_capture.h"
#include "script/commandargs.h"
#include "tier1/tokenize.h"

namespace {

constexpr size_t kBufferCapacity = 600;

void Tokenize(const std::string& line) {
  char token[MAX_TOKEN_CHARS];
  for (const char* p = line.c_str(); (p = ParseToken(p, token, sizeof token));) {
  }
  char small[8];
  int length = 0;
  for (const char* p = line.c_str(); (p = ParseToken(p, small, sizeof small, length));) {
  }
  ConsoleCommand command;
  command.Tokenize(line.c_str());
  for (int i = 0; i <= command.Argc(); ++i) command.Argv(i);
  command.Args();
  CommandArgs* args = Cmd_Tokenize(line.c_str());
  for (int i = 0; i < args->Argc(); ++i) args->Argv(i);
  delete args;
}

void Feed(CommandBuffer& buffer, const std::string& piece) {
  if (piece.empty()) return;
  const char* text = piece.c_str() + 1;
  switch (uint8_t(piece[0]) % 6) {
    case 0: buffer.AddText(text); break;
    case 1: buffer.InsertText(text); break;
    case 2: buffer.InsertAliasText(text); break;
    case 3: buffer.InsertLines(text); break;
    case 4: buffer.DropAliasText(); break;
    default: {
      std::string command;
      for (int i = uint8_t(piece[0]) / 6; i > 0 && buffer.NextCommand(command); --i) Tokenize(command);
      buffer.PeekCommand(uint8_t(piece.size()));
    }
  }
}

}  // namespace

TW_FUZZ_TARGET(tokenizers) {
  OutputCapture quiet;
  std::string whole(reinterpret_cast<const char*>(data), size);
  Tokenize(whole);
  CommandBuffer buffer(kBufferCapacity);
  for (const std::string& piece : FuzzSplit(data, size, '\x01', 256)) Feed(buffer, piece);
  std::string command;
  size_t pending = buffer.PendingBytes();
  while (buffer.NextCommand(command)) {
    if (buffer.PendingBytes() > pending) abort();
    pending = buffer.PendingBytes();
    Tokenize(command);
  }
  if (!buffer.IsEmpty()) abort();
}
