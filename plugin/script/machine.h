// The execution engine: a block runs through the engine's command buffer, each line inserted with a pending
// "tw__ip <handle of the next line>" behind it. CScriptMachine holds the frame state that block calls share.
#pragma once

#include <vector>

#include "host/diagnostics.h"
#include "script/commandargs.h"
#include "script/registry.h"

class CScriptMachine {
public:
  CScriptMachine();
  ~CScriptMachine();
  CScriptMachine(const CScriptMachine&) = delete;
  CScriptMachine& operator=(const CScriptMachine&) = delete;

  // Finds the block and fills `instruction` from its first line; false when there is none or when a false
  // condition asked for the next block to be refused. `args`, when given, become the block's arguments.
  bool ExecBlock(const char* name, Instruction& instruction, const char* args);
  // The same for a block named by handle, without arguments and without refusal.
  bool ExecEvent(BlockHandle handle, Instruction& instruction);

  // Block frames: tw__sb and tw__eb bracket every block's run. `block` is the block whose frame opens, 0
  // when unknown (a Python block).
  void PushArgs(const char* args);
  void StartBlock(BlockHandle block = 0);
  void EndBlock();
  // The block of the next tw__sb to run: the last block that ExecBlock or ExecEvent prepared, since the
  // buffer runs the first lines of prepared blocks in the reverse order of their preparation.
  BlockHandle TakeStartingBlock();
  // Closes the frames on top whose blocks are gone. A block that unloads its own script never reaches its
  // tw__eb; the tw__ip that finds its next line gone closes the frame instead.
  void CloseDeadFrames();
  // Back to no frames: every stack empty, every flag 0, a fresh empty argument record. The scripts stay.
  void Reset();

  // A frame's fields move together: frameBlocks and ifResultStack hold one entry per open frame; each
  // argument record is in exactly one place, blockArgs or argsStack, and is the machine's to delete.
  unsigned char lastIfResult = 0;
  unsigned char skipNextBlock = 0;
  unsigned char argsPending = 0;
  unsigned char blockOwnsArgs = 0;
  // The arguments of the running block call, read by tw_getargv/c/s. Not the doors' current record.
  CommandArgs* blockArgs;
  std::vector<unsigned char> ifResultStack;
  std::vector<CommandArgs*> argsStack;
  std::vector<unsigned char> ownsStack;
  std::vector<BlockHandle> startingBlocks;
  std::vector<BlockHandle> frameBlocks;
  CScriptRegistry registry;
};

// The one machine of the process.
extern CScriptMachine g_scriptMachine;

// Fills `instruction` from the line of that handle; true when the line has a successor. A handle of a line
// that is gone fills nothing and gives false.
bool ExecNextInstruction(LineHandle handle, Instruction& instruction);
// Starts a block by name (white space around it removed); `args`, when given, become its arguments.
void DoBlock(const char* text, const char* args);

// True when a loaded script has an event section of that name, enabled or not.
bool AnyScriptRegistered(const char* name);
// Appends the tw__de commands of the scripts' event sections of that name (enabled scripts, load order).
void BeginAllScriptEvents(const char* name);
