// The execution engine: CScriptMachine with its block frames, DoBlock, the start of the scripts' event
// sections, and the commands that the compiled lines and the buffer run on (tw__ip, tw__db, tw__de, tw__sb,
// tw__eb) plus tw_xdoblock/tw_doblock.
#include "script/machine.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "eiface.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "python/hooks.h"

// Defined before the machine so that they outlive it: destroying the scripts gives their handles back.
HandleTable<CScriptLine> g_lineHandles;
HandleTable<CBlock> g_blockHandles;
CScriptMachine g_scriptMachine;

namespace {

constexpr size_t kByteStackStart = 32;
constexpr size_t kPointerStackStart = 8;

// "tw__ip <handle>\n", the command that runs a line: written by hand, as every script line pays for it.
struct StepCommand {
  char text[48];
  explicit StepCommand(LineHandle handle) {
    memcpy(text, "tw__ip ", 7);
    char* end = std::to_chars(text + 7, text + sizeof text - 2, handle).ptr;
    end[0] = '\n';
    end[1] = '\0';
  }
};

template <class T>
void PopInto(std::vector<T>& stack, T& field) {
  if (stack.empty()) return;  // a stray tw__eb leaves the field as it is
  field = stack.back();
  stack.pop_back();
}

// Hands a prepared block to the buffer: its first line, with the tw__ip of the second behind it.
void QueueFirstLine(const Instruction& start, const char* name) {
  if (!start.next) {
    DbgMsg(2, "Null instruction pointer provided for block: %s.\n", name);
    ImmediateExecuteCommand(start.cmd);
    return;
  }
  ImmediateExecuteCommand(StepCommand(start.next->handle).text);
  ImmediateExecuteCommand(start.cmd);
}

void FillInstruction(CBlock* block, Instruction& instruction) {
  CScriptLine* first = block->FirstLine();
  instruction.cmd = first->text;
  instruction.next = first->Next();
  instruction.line = block->FileName();
  instruction.current = first;
}

// Error reports name the running line's place through this.
const bool s_locatorSet = (SetLineLocator(DescribeLine), true);

}  // namespace

// ---- the machine ----

CScriptMachine::CScriptMachine() : blockArgs(new CommandArgs) {
  ifResultStack.reserve(kByteStackStart);
  ownsStack.reserve(kByteStackStart);
  argsStack.reserve(kPointerStackStart);
  startingBlocks.reserve(kPointerStackStart);
  frameBlocks.reserve(kPointerStackStart);
}

CScriptMachine::~CScriptMachine() {
  delete blockArgs;
  for (CommandArgs* saved : argsStack) delete saved;
}

void CScriptMachine::Reset() {
  delete blockArgs;
  for (CommandArgs* saved : argsStack) delete saved;
  blockArgs = new CommandArgs;
  argsStack.clear();
  ifResultStack.clear();
  ownsStack.clear();
  startingBlocks.clear();
  frameBlocks.clear();
  lastIfResult = skipNextBlock = argsPending = blockOwnsArgs = 0;
}

bool CScriptMachine::ExecBlock(const char* name, Instruction& instruction, const char* args) {
  if (skipNextBlock) {
    skipNextBlock = 0;
    return false;
  }
  CBlock* block = registry.GetBlock(name);
  if (!block) return false;
  DbgMsg(4, "ExecBlock found block: %s;\n", name);
  FillInstruction(block, instruction);
  DbgMsg(6, "ExecBlock discovered:\n   NextIP: 0x%llx\n      Cmd: %s",
         static_cast<unsigned long long>(instruction.next ? instruction.next->handle : 0), instruction.cmd);
  if (args) PushArgs(args);
  startingBlocks.push_back(block->handle);
  return true;
}

bool CScriptMachine::ExecEvent(BlockHandle handle, Instruction& instruction) {
  CBlock* block = registry.GetEvent(handle);
  if (!block) return false;
  DbgMsg(4, "ExecEvent found block: %llu;\n", static_cast<unsigned long long>(handle));
  DbgMsg(7, "ExecEventpCode->GetString\n");
  DbgMsg(7, "ExecEventpCode->GetNextLine\n");
  DbgMsg(7, "ExecEventpCode->GetLineNumberStrin\n");
  FillInstruction(block, instruction);
  startingBlocks.push_back(block->handle);
  DbgMsg(6, "ExecEvent discovered:\n   NextIP: 0x%llx\n      Cmd: %s",
         static_cast<unsigned long long>(instruction.next ? instruction.next->handle : 0), instruction.cmd);
  return true;
}

void CScriptMachine::PushArgs(const char* args) {
  argsStack.push_back(blockArgs);
  blockArgs = Cmd_Tokenize(args);
  ownsStack.push_back(blockOwnsArgs);
  blockOwnsArgs = 1;
  argsPending = 1;
}

void CScriptMachine::StartBlock(BlockHandle block) {
  TW_ASSERT(frameBlocks.size() == ifResultStack.size(), "each open frame has its saved if result");
  frameBlocks.push_back(block);
  ifResultStack.push_back(lastIfResult);
  if (argsPending) {
    argsPending = 0;  // PushArgs has saved the owner flag already
    return;
  }
  ownsStack.push_back(blockOwnsArgs);
  blockOwnsArgs = 0;
}

void CScriptMachine::EndBlock() {
  TW_ASSERT(frameBlocks.size() == ifResultStack.size(), "each open frame has its saved if result");
  TW_ASSERT(!blockOwnsArgs || blockArgs, "a block that owns its arguments has a record");
  if (!frameBlocks.empty()) frameBlocks.pop_back();
  PopInto(ifResultStack, lastIfResult);
  if (blockOwnsArgs) {
    delete blockArgs;
    blockArgs = nullptr;
    PopInto(argsStack, blockArgs);
  }
  PopInto(ownsStack, blockOwnsArgs);
}

BlockHandle CScriptMachine::TakeStartingBlock() {
  if (startingBlocks.empty()) return 0;
  BlockHandle block = startingBlocks.back();
  startingBlocks.pop_back();
  return block;
}

void CScriptMachine::CloseDeadFrames() {
  while (!frameBlocks.empty() && frameBlocks.back() != 0 && !g_blockHandles.Get(frameBlocks.back())) EndBlock();
}

// ---- running blocks ----

bool ExecNextInstruction(LineHandle handle, Instruction& instruction) {
  CScriptLine* line = g_lineHandles.Get(handle);
  if (!line) return false;
  instruction.cmd = line->text;
  instruction.next = line->Next();
  // The shared end lines belong to no block: the place stays the one of the line before.
  if (const CBlock* block = line->Block()) {
    instruction.line = block->FileName();
    instruction.current = line;
  }
  if (g_cached.debug >= 6)
    DbgMsg(6, "ExecNextInstruction discovered:\n   NextIP: 0x%llx\n      Cmd: %s",
           static_cast<unsigned long long>(handle), instruction.cmd);
  return instruction.next != nullptr;
}

namespace {

// A name that no script block has may be a Python block: it runs to its end inside its own frame, with the
// call's arguments.
void RunPythonBlock(const char* name, const char* args) {
  if (args) g_scriptMachine.PushArgs(args);
  g_scriptMachine.StartBlock();
  Python_CallBlock(name);
  g_scriptMachine.EndBlock();
}

}  // namespace

void DoBlock(const char* text, const char* args) {
  DbgMsg(4, "tw__db %s;\n", text);
  // Block names are far shorter than the buffer, so a cut name can only fail to be found.
  const char* begin = text ? text : "";
  while (*begin == ' ' || *begin == '\t' || *begin == '\r' || *begin == '\n') ++begin;
  size_t n = strlen(begin);
  while (n > 0 && strchr(" \t\r\n", begin[n - 1])) --n;
  char name[TEXT_BUFFER_SIZE];
  snprintf(name, sizeof name, "%.*s", int(n < sizeof name ? n : sizeof name - 1), begin);

  if (!g_scriptMachine.registry.GetBlock(name)) {  // a missing block is no error
    if (Python_IsUp()) RunPythonBlock(name, args);
    return;
  }
  Instruction start{};
  if (!g_scriptMachine.ExecBlock(name, start, args)) {
    DbgMsg(2, "Block was refused: %s.\n", name);
    return;
  }
  DbgMsg(5, "doblock preparing:\n   NextIP: 0x%llx\n      Cmd: %s",
         static_cast<unsigned long long>(start.next ? start.next->handle : 0), start.cmd);
  QueueFirstLine(start, name);
}

bool AnyScriptRegistered(const char* name) {
  return g_scriptMachine.registry.HasEvent(name) || AnyPythonRegistered(name);
}

// A text without a command (no enabled script has the section) isn't queued: it would run nothing.
void BeginAllScriptEvents(const char* name) {
  DbgMsg(7, "BeginAllScriptEvents: %s\n", name);
  char* commands = g_scriptMachine.registry.BuildEventCommands(name);
  DbgMsg(7, "BeginAllScriptEvents: %s\n+%s", name, commands);
  if (commands[0] != '\n') engine->ServerCommand(commands);
  free(commands);
  BeginAllPythonEvents(name);
}

namespace {

// The handle as strtoull reads it; a text of digits alone, the usual case, is read here.
LineHandle ReadHandle(const char* text) {
  constexpr int kSafeDigits = 19;  // fewer can't pass 64 bits
  LineHandle value = 0;
  int digits = 0;
  for (; text[digits] >= '0' && text[digits] <= '9' && digits < kSafeDigits; ++digits)
    value = value * 10 + LineHandle(text[digits] - '0');
  return text[digits] == '\0' && digits > 0 ? value : strtoull(text, nullptr, 10);
}

// tw__ip <line handle>: runs that line, with the tw__ip of its successor behind it. A line without a
// successor (a block's end line), and a handle of no live line, only mark that no script runs.
void InstructionPointer_f() {
  ip.next = nullptr;
  LineHandle handle = ReadHandle(engine->Cmd_Args());
  if (!ExecNextInstruction(handle, ip)) {
    if (!g_lineHandles.Get(handle)) g_scriptMachine.CloseDeadFrames();
    ClearInstruction();
    return;
  }
  ImmediateExecuteCommand(StepCommand(ip.next->handle).text);
  if (g_cached.debug >= 7) DbgMsg(7, "ip.cmd: %s\nip.line: %s\n", ip.cmd, ip.line);
  if (g_cached.scripttrace == 1) {
    const bool internal = strlen(ip.cmd) > 3 && ip.cmd[2] == '_' && ip.cmd[3] == '_';
    if (!internal) DbgMsg(0, "[%s] %s", ip.line, ip.cmd);
  }
  ImmediateExecuteCommand(ip.cmd);
}

void DoBlockInternal_f() { DoBlock(engine->Cmd_Args(), nullptr); }

// tw__de <block handle in hex>: runs an event block named by handle; a handle of a block that is gone, or of
// a block that is no event section, runs nothing.
void DoEvent_f() {
  BlockHandle handle = strtoull(engine->Cmd_Args(), nullptr, 16);
  DbgMsg(4, "tw__de %llx;\n", static_cast<unsigned long long>(handle));
  Instruction start{};
  if (!g_scriptMachine.ExecEvent(handle, start)) {
    DbgMsg(2, "Block was refused: %llu.\n", static_cast<unsigned long long>(handle));
    ClearInstruction();
    return;
  }
  DbgMsg(5, "doevent preparing:\n   NextIP: 0x%llx\n      Cmd: %s",
         static_cast<unsigned long long>(start.next ? start.next->handle : 0), start.cmd);
  char name[32];
  snprintf(name, sizeof name, "%llu", static_cast<unsigned long long>(handle));
  QueueFirstLine(start, name);
}

void StartBlock_f() {
  g_scriptMachine.StartBlock(g_scriptMachine.TakeStartingBlock());
  DbgMsg(4, "tw__startblock %s\n", engine->Cmd_Args());
}

void EndBlock_f() {
  g_scriptMachine.EndBlock();
  DbgMsg(4, "tw__endblock\n");
}

void DoBlock_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  DbgMsg(1, "tw_xdoblock: Executing block: %s\n", args.Args());
  DoBlock(args.Args(), nullptr);
}

const PlainCommandRow kMachineCommands[] = {
    {"tw__ip", InstructionPointer_f, "Tidewright internal command: runs the next line of a block."},
    {"tw__db", DoBlockInternal_f, "Tidewright internal command: runs a nested block."},
    {"tw__de", DoEvent_f, "Tidewright internal command: runs an event block."},
    {"tw__sb", StartBlock_f, "Tidewright internal command: opens a block's frame."},
    {"tw__eb", EndBlock_f, "Tidewright internal command: closes a block's frame."},
};
const CommandTable s_machineCommands(kMachineCommands);

const CommandRow kBlockCommands[] = {
    {"doblock", DoBlock_h, 2, "Syntax: %s <script>/<function>\n", "Runs a block of a loaded script: <script>/<block>.",
     DOORS_ALL},
};
const CommandTable s_blockCommands(kBlockCommands);

}  // namespace
