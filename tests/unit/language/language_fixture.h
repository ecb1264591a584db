// The command language's fixture: the script fixture, a current game event cleared after each test, and a
// way to see an expanded line: `tw tw_xlogq <text>` logs the expanded text as it stands, quotes included.
#pragma once

#include <string>

#include "../script/script_fixture.h"
#include "events/current_event.h"

class LanguageTest : public ScriptTest {
protected:
  void TearDown() override {
    g_currentEvent = nullptr;
    tidewright_escapechars.SetValue("; {}()':");
    tidewright_autocreate.SetValue("");
    ScriptTest::TearDown();
  }
  // The expansion of `text`, as tw_xlogq logs it (with a line feed).
  static std::string Expand(const std::string& text) { return LogOf(Run("tw tw_xlogq " + text)); }
};
