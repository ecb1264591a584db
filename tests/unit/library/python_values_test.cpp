// The Python doors of this library, one per shape of value: exists gives an integer (its inputs one index
// lower), sql's queryvalue a text or None; the string, format and mathparse binders keep their variable and
// give None; delayed, soon, sql's other operations and dosql give None and act. No syntax test applies.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "../script/script_fixture.h"
#include "library/delayed.h"
#include "python_call.h"

namespace {

class LibraryValueDoorTest : public ScriptTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  void TearDown() override {
    Delayed_OnLevelInit();
    ScriptTest::TearDown();
  }
  // The repr of tw_C.<method>(*tuple), the tuple built by Py_BuildValue.
  template <class... Items>
  static std::string Call(const char* method, const char* format, Items... items) {
    PyObject* tuple = Py_BuildValue(format, items...);
    std::string repr = CallTwRepr(method, tuple);
    Py_XDECREF(tuple);
    return repr;
  }
};

TEST_F(LibraryValueDoorTest, ExistsGivesAnIntegerWithItsInputsOneIndexLower) {
  Set("py_present", "1");
  OutputCapture capture;
  EXPECT_EQ(Call("exists", "(ss)", "variable", "py_present"), "1");
  EXPECT_EQ(Call("exists", "(ss)", "VARIABLE", "py_absent"), "0");
  EXPECT_EQ(Call("exists", "(ss)", "nonsense", "py_present"), "0");
  EXPECT_EQ(Call("exists", "()"), "0");  // no syntax test: a missing type word is no type
  EXPECT_EQ(FindServerVar("variable"), nullptr);
  EXPECT_EQ(capture.Text(), "");
}

TEST_F(LibraryValueDoorTest, QueryValueGivesTextOrNone) {
  OutputCapture capture;
  EXPECT_EQ(Call("sql", "(sss)", "open", "py_db", ":memory:"), "None");
  EXPECT_EQ(Call("sql", "(sss)", "query", "py_db", "create table t(a); insert into t values('x'), (NULL)"), "None");
  EXPECT_EQ(Call("sql", "(sss)", "queryvalue", "py_db", "select 'one', 'two'"), "'one'");
  EXPECT_EQ(Call("sql", "(sss)", "queryvalue", "py_db", "select a from t"), "''");  // the last row, NULL as ""
  EXPECT_EQ(Call("sql", "(sss)", "queryvalue", "py_db", "select 1 where 0"), "None");
  EXPECT_EQ(Call("sql", "(sss)", "queryvalue", "py_db", "select nonsense"), "None");
  EXPECT_EQ(Call("sql", "(ss)", "queryvalue", "py_db"), "None");  // too few: nothing runs
  EXPECT_EQ(Call("sql", "(ss)", "close", "PY_DB"), "None");
  EXPECT_EQ(Call("sql", "(sss)", "queryvalue", "py_db", "select 1"), "None");
  EXPECT_NE(capture.Text().find("tw_sql close: PY_DB database closed.\n"), std::string::npos);
  EXPECT_NE(capture.Text().find("Specified database does not exist."), std::string::npos);
}

TEST_F(LibraryValueDoorTest, StringBindersStoreIntoTheirVariableAndGiveNone) {
  MakeVars({"py_out"});
  Set("py_name", "O'Brien");
  EXPECT_EQ(Call("strcmp", "(sss)", "py_out", "b", "a"), "None");
  EXPECT_EQ(Var("py_out"), "1");
  EXPECT_EQ(Call("strlen", "(ss)", "py_out", "four"), "None");
  EXPECT_EQ(Var("py_out"), "4");
  EXPECT_EQ(Call("strlen", "(s)", "py_out"), "None");  // nothing to measure: 0
  EXPECT_EQ(Var("py_out"), "0");
  EXPECT_EQ(Call("format", "(ssi)", "py_out", "n=%1", 5), "None");
  EXPECT_EQ(Var("py_out"), "n=5");
  EXPECT_EQ(Call("formatv", "(sss)", "py_out", "%1!", "py_name"), "None");
  EXPECT_EQ(Var("py_out"), "O'Brien!");
  EXPECT_EQ(Call("formatqv", "(sss)", "py_out", "name='%1'", "py_name"), "None");
  EXPECT_EQ(Var("py_out"), "name='O''Brien'");
  EXPECT_EQ(Call("mathparse", "(ss)", "py_out", "6*7"), "None");
  EXPECT_EQ(Var("py_out"), "42");
}

TEST_F(LibraryValueDoorTest, DelayedAndSoonActAndGiveNone) {
  EXPECT_EQ(Call("delayed", "(i)", 0), "None");  // no command text: nothing is scheduled
  EXPECT_EQ(Delayed_PendingCount(), 0u);
  EXPECT_EQ(Call("delayed", "(is)", 60, "echo later"), "None");
  EXPECT_EQ(Delayed_PendingCount(), 1u);
  EXPECT_EQ(Call("delayed", "(is)", 0, std::string(DELAYED_MAX_COMMAND + 1, 'c').c_str()), "None");
  EXPECT_EQ(Delayed_PendingCount(), 1u);
  EXPECT_EQ(Call("soon", "(s)", "echo from python"), "None");
  EXPECT_EQ(Settle(), "from python\n");
}

TEST_F(LibraryValueDoorTest, DoSqlGivesNone) {
  OutputCapture capture;
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Call("dosql", "(ss)", ":memory:", "select 7 as seven"), "None");
  tidewright_debug.SetValue(0);
  EXPECT_EQ(capture.Text(), "SQL query returned: seven = 7\n");
}

}  // namespace
