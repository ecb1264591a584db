// The fixture of the script engine's and command language's tests: the shared stand-in server with the real
// plugin, and a clean machine (no scripts, no frames, empty buffer, quiet debug level) around every test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>

#include "host/console.h"
#include "host/diagnostics.h"
#include "output_capture.h"
#include "script/machine.h"
#include "standin.h"
#include "test_server.h"

inline void ResetScriptMachine() {
  while (CScript* script = g_scriptMachine.registry.FirstScript()) {
    std::string name = script->name;
    g_scriptMachine.registry.RemoveScript(name.c_str());
  }
  g_scriptMachine.Reset();
  ClearInstruction();
}

class ScriptTest : public ::testing::Test {
protected:
  static TestServer& Shared() { return TestServer::Shared(); }
  static CStandIn& Standin() { return Shared().Server(); }

  void SetUp() override {
    Shared();
    Standin().Cbuf().Clear();
    tidewright_debug.SetValue(0);
    tidewright_scripttrace.SetValue(0);
    ResetScriptMachine();
  }
  void TearDown() override {
    Standin().Cbuf().Clear();
    tidewright_debug.SetValue(0);
    tidewright_scripttrace.SetValue(0);
    ResetScriptMachine();
  }

  // Runs console lines (one per line feed), each with everything it queues; gives what was printed.
  static std::string Run(const std::string& lines) { return Shared().Run(lines); }
  // Runs what waits in the buffer.
  static std::string Settle() {
    OutputCapture capture;
    Standin().Settle();
    return capture.Take();
  }
  static void WriteGameFile(const std::string& path, const std::string& text) {
    std::filesystem::path full = std::filesystem::path(Shared().GameDir()) / path;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream(full, std::ios::binary) << text;
  }
  // A script file where LoadAddonFile looks for the script `name`.
  static void WriteScript(const std::string& name, const std::string& text) {
    std::string base = name.substr(name.find_last_of('/') + 1);
    WriteGameFile("addons/tidewright/" + name + "/tw_" + base + ".txt", text);
  }
  // Puts a script file in place and loads it (its load block runs).
  static std::string Load(const std::string& name, const std::string& text) {
    WriteScript(name, text);
    return Run("tw_xload " + name);
  }
  // The server log lines in an output, without their "L " mark.
  static std::string LogOf(const std::string& output) {
    std::istringstream in(output);
    std::string line, log;
    while (std::getline(in, line))
      if (line.rfind("L ", 0) == 0) log += line.substr(2) + "\n";
    return log;
  }
  // The commands an event queues for the scripts that hear it.
  static std::string EventCommands(const char* event) {
    char* text = g_scriptMachine.registry.BuildEventCommands(event);
    std::string commands = text;
    free(text);
    return commands;
  }
  static ConCommandBase* FindCommand(const char* name) { return Standin().Console().FindCommandBase(name); }
  // Makes the variables that value commands store into (they set with force false).
  static void MakeVars(std::initializer_list<const char*> names) {
    for (const char* name : names) SetVarText(name, "", true);
  }
  static void Set(const char* name, const char* value) { SetVarText(name, value, true); }
  static std::string Var(const char* name) {
    ConVar* var = FindServerVar(name);
    return var ? var->GetString() : "<missing>";
  }
};
