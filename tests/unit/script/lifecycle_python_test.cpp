// The lifecycle commands called from Python: no usage lines, a missing name does nothing, load without a
// name lists, and createscriptlist answers with a dictionary instead of a keygroup.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "keygroups/keygroups.h"
#include "python_call.h"
#include "script_fixture.h"

namespace {

class LifecyclePythonTest : public ScriptTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  // Calls tw_C.<method>(name), or without arguments for a null name, and runs what it queued; gives the
  // result's repr, the output in `out`.
  static std::string Call(const char* method, const char* name, std::string* out = nullptr) {
    PyObject* args = name ? Py_BuildValue("(s)", name) : PyTuple_New(0);
    OutputCapture capture;
    std::string repr = CallTwRepr(method, args);
    Standin().Settle();
    if (out) *out = capture.Take();
    Py_DECREF(args);
    return repr;
  }
};

TEST_F(LifecyclePythonTest, NameCommandsInTurn) {
  WriteScript("py", "block load\n{\necho py load\n}\nblock unload\n{\necho py unload\n}\n"
                    "block enable\n{\necho py enable\n}\nblock disable\n{\necho py disable\n}\n");
  const char* const kList =
      "\n[Tidewright] Loaded:\n[Tidewright]   [ enabled] py\n[Tidewright]------------------------\n\n";
  const struct {
    const char* method;
    const char* name;  // null: called without arguments
    const char* out;
  } steps[] = {
      {"load", "py", "[Tidewright] Loaded py\npy load\n"},
      {"load", nullptr, kList},  // load without a name lists; the others do nothing
      {"unload", nullptr, ""},
      {"_unload", nullptr, ""},
      {"reload", nullptr, ""},
      {"enable", nullptr, ""},
      {"disable", nullptr, ""},
      {"_disable", nullptr, ""},
      {"load", nullptr, kList},
      {"disable", "py", "Disabling py...\npy disable\n"},
      {"enable", "py", "Enabling py...\npy enable\n"},
      {"unload", "py", "Unloading py...\npy unload\nScript removed: py\n"},
  };
  for (const auto& step : steps) {
    std::string out;
    EXPECT_EQ(Call(step.method, step.name, &out), "None") << step.method;
    EXPECT_EQ(out, step.out) << step.method << " " << (step.name ? step.name : "");
  }
}

// The scenario python/binders_script shows the dictionary; here a disabled script's status, and no keygroup
// left behind.
TEST_F(LifecyclePythonTest, ScriptListIsADictionary) {
  Load("py_beta", "");
  Run("tw_xdisable py_beta");
  EXPECT_EQ(Call("createscriptlist", "PY_BETA"), "{'py_beta': {'status': 'disabled', 'type': 'txt'}}");
  EXPECT_EQ(FindGroup("PY_BETA", false), nullptr);
}

}  // namespace
