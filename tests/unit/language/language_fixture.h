// The command language's fixture: the script fixture plus a game event to make current, and a way to see
// an expanded line: `tw tw_xlogq <text>` logs the expanded text as it stands, quotes included.
#pragma once

#include <map>
#include <string>

#include "../script/script_fixture.h"
#include "events/current_event.h"
#include "igameevents.h"

class FakeEvent : public IGameEvent {
public:
  explicit FakeEvent(const char* name) : m_name(name) {}
  std::map<std::string, std::string> keys;

  const char* GetName() const override { return m_name.c_str(); }
  bool IsEmpty(const char*) override { return keys.empty(); }
  bool GetBool(const char* key, bool d) override { return GetInt(key, d) != 0; }
  int GetInt(const char* key, int d) override { return keys.count(key) ? atoi(keys[key].c_str()) : d; }
  float GetFloat(const char* key, float d) override { return keys.count(key) ? float(atof(keys[key].c_str())) : d; }
  const char* GetString(const char* key, const char* d) override {
    auto it = keys.find(key ? key : "");
    return it == keys.end() ? d : it->second.c_str();
  }
  void SetBool(const char* key, bool v) override { keys[key] = v ? "1" : "0"; }
  void SetInt(const char* key, int v) override { keys[key] = std::to_string(v); }
  void SetFloat(const char* key, float v) override { keys[key] = std::to_string(v); }
  void SetString(const char* key, const char* v) override { keys[key] = v; }

private:
  std::string m_name;
};

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
