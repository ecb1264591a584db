// The keygroup tests' fixture: the script fixture, with the user tree emptied and the data folders at their
// defaults around every test, and a few ways to look at the tree.
#pragma once

#include <string>

#include "../script/script_fixture.h"
#include "KeyValues.h"
#include "keygroups/keygroups.h"

class KeyGroupTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    ClearUserTree();
  }
  void TearDown() override {
    ClearUserTree();
    tidewright_datadirectory.SetValue("cfg");
    tidewright_subdirectory.SetValue("");
    ScriptTest::TearDown();
  }

  static void ClearUserTree() {
    for (const char* name : {"UserGroups", "Ungrouped"}) {
      KeyValues* node = g_userTree->FindKey(name);
      while (KeyValues* sub = node->GetFirstSubKey()) {
        node->RemoveSubKey(sub);
        sub->deleteThis();
      }
    }
  }
  static KeyValues* Groups() { return g_userTree->FindKey("UserGroups"); }
  static KeyValues* Ungrouped() { return g_userTree->FindKey("Ungrouped"); }

  // The names of a node's children, in order, joined by blanks.
  static std::string Names(KeyValues* node) {
    std::string names;
    for (KeyValues* sub = node ? node->GetFirstSubKey() : nullptr; sub; sub = sub->GetNextKey())
      names += (names.empty() ? "" : " ") + std::string(sub->GetName());
    return names;
  }
  static std::string LastError() { return Var("tidewright_lasterror"); }
  static void ClearLastError() { Set("tidewright_lasterror", ""); }
};

// The place that ReportScriptError adds while no script line runs.
inline const char kConsolePlace[] = "  Error source (console): (no script)\n";
