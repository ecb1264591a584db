// The fixture of the event bridge's tests: the shared stand-in server with the real plugin, a clean machine,
// no queued or pending events, no script packs, and the event switches at their defaults around each test.
// Game files a test writes are removed when it ends.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "../script/script_fixture.h"
#include "events/current_event.h"
#include "events/declarations.h"
#include "events/intake.h"
#include "packs/scriptpacks.h"

class EventTest : public ScriptTest {
protected:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  void SetUp() override {
    ScriptTest::SetUp();
    ResetEvents();
  }
  void TearDown() override {
    ResetEvents();
    for (const std::string& path : m_written) std::filesystem::remove(std::filesystem::path(Shared().GameDir()) / path);
    ScriptTest::TearDown();
  }

  // Fires a game event through the engine's manager, as the game would; nothing of what it queues runs yet.
  static void Fire(const char* name, const Fields& fields = {}) {
    IGameEvent* event = Standin().Events().CreateEvent(name, true);
    ASSERT_NE(event, nullptr) << name;
    for (const auto& [key, value] : fields) event->SetString(key.c_str(), value.c_str());
    Standin().Events().FireEvent(event);
  }
  // The commands waiting in the buffer, taken off it, empty ones left out.
  static std::vector<std::string> TakeCommands() {
    std::vector<std::string> commands;
    std::string command;
    while (Standin().Cbuf().NextCommand(command))
      if (!command.empty()) commands.push_back(command);
    return commands;
  }
  // A game file that goes when the test ends.
  void WriteTestFile(const std::string& path, const std::string& text) {
    WriteGameFile(path, text);
    m_written.push_back(path);
  }

private:
  static void ResetEvents() {
    Standin().Cbuf().Clear();
    ReleaseEvents();
    ReleasePendingEvent();
    DeleteScriptPackTree();
    brannock_tidewright.SetValue(1);
    tidewright_noisy.SetValue(0);
    tidewright_defaultevents.SetValue(1);
    tidewright_subdirectory.SetValue("");
    tidewright_exec_cmd.SetValue("exec");
    tidewright_lasterror.SetValue("");
  }

  std::vector<std::string> m_written;
};
