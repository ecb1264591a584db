// Every command that reads a handle back from text, given numbers it was never handed for it: random
// numbers, junk, handles of another kind (a block's, an event's, a key node's, a line's), and handles of
// objects that are gone (an unloaded script's lines and blocks, a deleted key). None may run anything.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "python_call.h"
#include "keygroups/keygroups.h"
#include "script/machine.h"
#include "test_server.h"

namespace {

// Each line of this script says which of its lines ran; a forged handle that reached one would set it.
constexpr const char* kVictim =
    "block load\n{\n}\n"
    "block mark\n{\n  tw_set hz_ran \"mark line one\"\n  tw_set hz_ran \"mark line two\"\n}\n"
    "event player_say\n{\n  tw_set hz_ran \"the event block\"\n}\n";

struct Handles {
  std::vector<std::pair<std::string, uint64_t>> live, stale;
};

class ForgedHandles : public ::testing::Test {
protected:
  void SetUp() override {
    server.Run("tw_set hz_ran nothing\ntw_set hz_v none\ntw_keygroupcreate hzgroup\n"
               "tw_keycreate hzgroup k1\ntw_keysetvalue hzgroup k1 v 1\ntw_keycreate hzgroup k2");
  }
  void TearDown() override { server.Run("tw_unload hzvictim\ntw_unload hzgone\ntw_keygroupdelete hzgroup"); }

  void LoadScript(const char* name) {
    std::string dir = server.GameDir() + "/addons/tidewright/" + name;
    std::filesystem::create_directories(dir);
    std::ofstream(dir + "/tw_" + name + ".txt") << kVictim;
    server.Run(std::string("tw_load ") + name);
  }
  // Handles of every kind that live now, and handles of a script and a key that are gone.
  Handles Collect() {
    Handles h;
    LoadScript("hzgone");
    CScript* gone = g_scriptMachine.registry.FindScript("hzgone");
    for (CBlock* b = gone->firstBlock; b; b = b->next) {
      h.stale.push_back({"block of an unloaded script", b->handle});
      for (CScriptLine* l = b->FirstLine(); l; l = l->Next()) h.stale.push_back({"line of an unloaded script", l->handle});
    }
    server.Run("tw_unload hzgone");
    LoadScript("hzvictim");
    CScript* victim = g_scriptMachine.registry.FindScript("hzvictim");
    for (CBlock* b = victim->firstBlock; b; b = b->next) {
      h.live.push_back({b->isEvent ? "event block" : "block", b->handle});
      for (CScriptLine* l = b->FirstLine(); l; l = l->Next()) h.live.push_back({"line", l->handle});
    }
    KeyValues* group = FindGroup("hzgroup", false);
    KeyValues* k2 = group->FindKey("k2");
    h.live.push_back({"key node", group->FindKey("k1")->GetHandle()});
    h.live.push_back({"value node", group->FindKey("k1")->GetFirstSubKey()->GetHandle()});
    h.live.push_back({"group node", group->GetHandle()});
    h.stale.push_back({"deleted key", k2->GetHandle()});
    server.Run("tw_keydelete hzgroup k2");
    return h;
  }

  TestServer& server = TestServer::Shared();
};

std::string Ran(TestServer& server) { return server.Run("tw echo ran server_var(hz_ran)"); }

TEST_F(ForgedHandles, NoCommandRunsAnythingForANumberItWasNotGiven) {
  Handles h = Collect();
  std::vector<std::pair<std::string, std::string>> values = {
      {"zero", "0"}, {"negative", "-7"}, {"junk", "12abc"}, {"empty", "\"\""}, {"huge", "18446744073709551615"},
      {"hex junk", "ffffffffffffffff"}, {"blank", "\" \""}};
  std::mt19937_64 random(25);
  for (int i = 0; i < 40; ++i) values.push_back({"random", std::to_string(random() >> (i % 40))});
  for (const auto& [kind, handle] : h.live) {
    // A line's handle is what tw__ip takes and an event block's is what tw__de takes: they're not forged
    // there. Every other pairing is.
    values.push_back({kind, std::to_string(handle)});
    char hex[32];
    snprintf(hex, sizeof hex, "%llx", static_cast<unsigned long long>(handle));
    values.push_back({kind + " in hex", hex});
  }
  for (const auto& [kind, handle] : h.stale) values.push_back({kind, std::to_string(handle)});

  const std::vector<std::pair<std::string, std::vector<std::string>>> readers = {
      {"tw__ip @", {"line"}},
      {"tw__de @", {"event block in hex"}},
      {"tw__ep @", {}},
      {"tw__foreachkey @ hz_v in hzgroup tw_set hz_ran loop", {"key node", "value node"}},
      {"tw__foreachval @ hz_v in hzgroup k1 tw_set hz_ran loop", {"key node", "value node"}},
      {"tw_x_foreachkey @ hz_v in hzgroup tw_set hz_ran loop", {"key node", "value node"}},
      {"_mexecl @", {}},
  };
  for (const auto& [reader, own] : readers) {
    for (const auto& [kind, value] : values) {
      bool itsOwn = false;
      for (const std::string& o : own) itsOwn |= kind == o;
      if (itsOwn) continue;
      std::string line = reader;
      line.replace(line.find('@'), 1, value);
      server.Run(line);
      EXPECT_EQ(Ran(server), "ran nothing\n") << line << " (" << kind << ")";
      server.Run("tw_set hz_ran nothing");
    }
  }
}

// The test above can see a handle that works: each reader given its own kind of live handle does run.
TEST_F(ForgedHandles, TheirOwnLiveHandlesDoRun) {
  Handles h = Collect();
  for (const auto& [kind, handle] : h.live) {
    if (kind != "line") continue;
    server.Run("tw__ip " + std::to_string(handle));
    if (Ran(server) != "ran nothing\n") {
      server.Run("tw_set hz_ran nothing");
      SUCCEED();
      return;
    }
  }
  ADD_FAILURE() << "no live line handle ran a line";
}

// tw_C's key pointers: a pointer that names no live key acts as 0, whatever the method. Each method is
// called with a forged pointer and with 0, and must answer the same.
TEST_F(ForgedHandles, TwCKeyPointersThatNameNoLiveKeyActAsZero) {
  StartTestPython();
  Handles h = Collect();
  std::vector<std::pair<std::string, uint64_t>> forged = h.stale;
  for (const auto& [kind, handle] : h.live)
    if (kind == "line" || kind == "block" || kind == "event block") forged.push_back({kind, handle});
  std::mt19937_64 random(7);
  for (int i = 0; i < 20; ++i) forged.push_back({"random", random() >> (i * 2)});
  // Each method with the format of its arguments: K a pointer, s a text, i an int, d a float, b a flag.
  const std::pair<const char*, const char*> methods[] = {
      {"keypdelete", "K"}, {"keypgetname", "K"}, {"keypsetname", "Ks"}, {"keypcreatesubkey", "K"},
      {"keypfindsubkey", "Ksb"}, {"keypdetachsubkey", "KK"}, {"keypgetfirstsubkey", "K"},
      {"keypgetnextkey", "K"}, {"keypgetfirsttruesubkey", "K"}, {"keypgetnexttruesubkey", "K"},
      {"keypgetfirstvaluekey", "K"}, {"keypgetnextvaluekey", "K"}, {"keypgetint", "Ks"}, {"keypgetfloat", "Ks"},
      {"keypgetstring", "Ks"}, {"keypgetdatatype", "Ks"}, {"keypsetstring", "Kss"}, {"keypsetint", "Ksi"},
      {"keypsetfloat", "Ksd"}, {"keypisempty", "K"}, {"keypsavetofile", "Ks"}, {"keyploadfromfile", "Ks"},
      {"keyprecursivekeycopy", "KK"}};
  auto call = [](const char* method, const char* format, uint64_t handle) {
    PyObject* args = PyTuple_New(Py_ssize_t(strlen(format)));
    for (Py_ssize_t i = 0; format[i]; ++i) {
      PyObject* item = nullptr;
      switch (format[i]) {
        case 'K': item = PyLong_FromUnsignedLongLong(handle); break;
        case 's': item = PyUnicode_FromString(i == 1 && strstr(method, "file") ? "cfg/hz_forged.txt" : "v"); break;
        case 'i': item = PyLong_FromLong(5); break;
        case 'd': item = PyFloat_FromDouble(2.5); break;
        default: item = PyBool_FromLong(1);
      }
      PyTuple_SET_ITEM(args, i, item);
    }
    std::string repr = CallTwRepr(method, args);
    PyErr_Clear();
    Py_DECREF(args);
    return repr;
  };
  for (const auto& [method, format] : methods) {
    ASSERT_NE(call(method, format, 0), "<no method>") << method;
    for (const auto& [kind, handle] : forged)
      EXPECT_EQ(call(method, format, handle), call(method, format, 0)) << method << " " << handle << " (" << kind << ")";
  }
  // A live key's pointer does answer otherwise: the comparison above can see a pointer that works.
  for (const auto& [kind, handle] : h.live) {
    if (kind == "key node") {
      EXPECT_EQ(call("keypgetname", "K", handle), "'k1'");
    }
  }
  EXPECT_FALSE(std::filesystem::exists(server.GameDir() + "/cfg/hz_forged.txt"));
  EXPECT_EQ(Ran(server), "ran nothing\n");
}

}  // namespace
