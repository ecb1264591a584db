// The lifecycle commands called from Python: no usage lines, a missing name does nothing, load without a
// name lists, and createscriptlist answers with a dictionary instead of a keygroup.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "keygroups/keygroups.h"
#include "python/methodtable.h"
#include "script_fixture.h"

#ifdef TW_SANITIZE
// The interpreter is never finalised, as in the plugin: what it holds at exit is not ours to report.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libpython3\n";
}
#endif

namespace {

// Owns one new reference for the length of a test.
struct Ref {
  PyObject* object;
  explicit Ref(PyObject* o) : object(o) {}
  ~Ref() { Py_XDECREF(object); }
  Ref(const Ref&) = delete;
  Ref& operator=(const Ref&) = delete;
  operator PyObject*() const { return object; }
};

class LifecyclePythonTest : public ScriptTest {
protected:
  static void SetUpTestSuite() {
    if (!Py_IsInitialized()) Py_Initialize();
  }
  // Calls tw_C.<method>(*items) and gives the result; everything it queued has run by then, its output in `out`.
  static PyObject* Call(const char* method, PyObject* tuple, std::string* out = nullptr) {
    const PyMethodDef* def = FindTwMethod(method);
    EXPECT_NE(def, nullptr) << method;
    OutputCapture capture;
    PyObject* result = def ? def->ml_meth(nullptr, tuple) : nullptr;
    Standin().Settle();
    if (out) *out = capture.Take();
    return result;
  }
  static std::string CallForOutput(const char* method, PyObject* tuple) {
    std::string out;
    Ref result(Call(method, tuple, &out));
    EXPECT_EQ(result.object, Py_None) << method;
    return out;
  }
};

TEST_F(LifecyclePythonTest, LoadWithoutANameLists) {
  Load("foo", "");
  Ref none(PyTuple_New(0));
  EXPECT_EQ(CallForOutput("load", none),
            "\n[Tidewright] Loaded:\n[Tidewright]   [ enabled] foo\n[Tidewright]------------------------\n\n");
}

TEST_F(LifecyclePythonTest, LoadAndUnloadByName) {
  WriteScript("py", "block load\n{\necho py load\n}\nblock unload\n{\necho py unload\n}\n");
  Ref name(Py_BuildValue("(s)", "py"));
  EXPECT_EQ(CallForOutput("load", name), "[Tidewright] Loaded py\npy load\n");
  EXPECT_EQ(CallForOutput("unload", name), "Unloading py...\npy unload\nScript removed: py\n");
}

TEST_F(LifecyclePythonTest, NameCommandsWithoutANameDoNothing) {
  Load("foo", "block enable\n{\necho never\n}\nblock disable\n{\necho never\n}\n");
  Ref none(PyTuple_New(0));
  for (const char* method : {"unload", "_unload", "reload", "enable", "disable", "_disable"})
    EXPECT_EQ(CallForOutput(method, none), "") << method;
  EXPECT_NE(g_scriptMachine.registry.FindScript("foo"), nullptr);
  EXPECT_TRUE(g_scriptMachine.registry.FindScript("foo")->enabled);
}

TEST_F(LifecyclePythonTest, DisableAndEnableRunTheirBlocks) {
  Load("foo", "block enable\n{\necho enable block\n}\nblock disable\n{\necho disable block\n}\n");
  Ref name(Py_BuildValue("(s)", "foo"));
  EXPECT_EQ(CallForOutput("disable", name), "Disabling foo...\ndisable block\n");
  EXPECT_FALSE(g_scriptMachine.registry.FindScript("foo")->enabled);
  EXPECT_EQ(CallForOutput("enable", name), "Enabling foo...\nenable block\n");
  EXPECT_TRUE(g_scriptMachine.registry.FindScript("foo")->enabled);
}

// The dictionary's repr, which lists the entries in insertion order.
std::string Repr(PyObject* object) {
  if (!object) return "<null>";
  Ref text(PyObject_Repr(object));
  return text.object ? PyUnicode_AsUTF8(text) : "<no repr>";
}

TEST_F(LifecyclePythonTest, ScriptListIsADictionary) {
  Load("py_alpha", "");
  Load("py_beta", "");
  Run("tw_xdisable py_beta");
  Ref none(PyTuple_New(0));
  Ref all(Call("createscriptlist", none));
  EXPECT_EQ(Repr(all),
            "{'py_alpha': {'status': 'enabled', 'type': 'txt'}, 'py_beta': {'status': 'disabled', 'type': 'txt'}}");
  Ref name(Py_BuildValue("(s)", "PY_BETA"));
  Ref one(Call("createscriptlist", name));
  EXPECT_EQ(Repr(one), "{'py_beta': {'status': 'disabled', 'type': 'txt'}}");
  Ref ghost(Py_BuildValue("(s)", "ghost"));
  Ref empty(Call("createscriptlist", ghost));
  EXPECT_EQ(Repr(empty), "{}");
  EXPECT_EQ(FindGroup("PY_BETA", false), nullptr);
}

}  // namespace
