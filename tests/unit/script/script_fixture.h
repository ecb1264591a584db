// The fixture of the script engine's and command language's tests: the fake engine connected once, and a
// clean machine (no scripts, no frames, empty buffer, quiet debug level) around every test.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "fake_server.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "output_capture.h"
#include "script/machine.h"

inline void ResetScriptMachine() {
  CScriptMachine& m = g_scriptMachine;
  while (CScript* script = m.registry.FirstScript()) {
    std::string name = script->name;
    m.registry.RemoveScript(name.c_str());
  }
  for (CommandArgs* saved : m.argsStack) delete saved;
  m.argsStack.clear();
  if (m.blockOwnsArgs || !m.blockArgs) {
    delete m.blockArgs;
    m.blockArgs = new CommandArgs;
  }
  m.ifResultStack.clear();
  m.ownsStack.clear();
  m.lastIfResult = m.skipNextBlock = m.argsPending = m.blockOwnsArgs = 0;
  ip.cmd = "(no script)\n";
  ip.line = "(console)";
  ip.next = nullptr;
}

class ScriptTest : public ::testing::Test {
protected:
  void SetUp() override {
    Server().ClearBuffer();
    tidewright_debug.SetValue(0);
    tidewright_scripttrace.SetValue(0);
    ResetScriptMachine();
  }
  void TearDown() override {
    Server().ClearBuffer();
    tidewright_debug.SetValue(0);
    ResetScriptMachine();
  }

  // Runs a console line and everything it queues; gives what was printed.
  static std::string Run(const std::string& line) {
    OutputCapture capture;
    Server().Run(line);
    return capture.Take();
  }
  // Puts a script file in place and loads it (its load block runs).
  static std::string Load(const std::string& name, const std::string& text) {
    Server().AddScript(name, text);
    return Run("tw_xload " + name);
  }
  // Makes the variables that value commands store into (they set with force false).
  static void MakeVars(std::initializer_list<const char*> names) {
    for (const char* name : names) SetVarText(name, "", true);
  }
  static std::string Var(const char* name) {
    ConVar* var = FindServerVar(name);
    return var ? var->GetString() : "<missing>";
  }
};
