// A list result in its two forms: one handler fills the rows once; the console doors write them into a
// keygroup (typed values, a row name with '/' as a path, rows found again by name), the Python door returns
// a dictionary of dictionaries in row order. A group that can't be made is reported before anything is listed.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "keygroups_fixture.h"
#include "language/doors.h"
#include "language/results.h"
#include "python_call.h"

namespace {

int s_rowsGathered = 0;

// twtestlist <group>: a row with a field of each type, and a row whose name is a path.
void TestList_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  KeyValues* group = fromConsole ? OpenListGroup(args.Argv(1)) : nullptr;
  if (fromConsole && !group) return;
  ListResult list;
  list.AddRow("alpha");
  list.Text("name", "Alice Smith");
  list.Int("kills", 7);
  list.Float("x", 1.5f);
  list.AddRow("nested/beta");
  list.Int("kills", -2);
  s_rowsGathered = int(list.Rows().size());
  ReturnList(fromConsole, group, std::move(list));
}

const CommandRow kTestRows[] = {
    {"testlist", TestList_h, 2, "Syntax: %s <keygroup>\n", "Test: a list of two rows.", DOORS_ALL},
};
const CommandTable s_testRows(kTestRows);

class ListResultTest : public KeyGroupTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
};

TEST_F(ListResultTest, ConsoleDoorsWriteTypedKeysIntoTheGroup) {
  EXPECT_EQ(Run("tw_xtestlist players"), "");
  KeyValues* group = Groups()->FindKey("players");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(Names(group), "alpha nested");
  KeyValues* alpha = group->FindKey("alpha");
  EXPECT_STREQ(alpha->GetString("name"), "Alice Smith");
  EXPECT_EQ(alpha->GetDataType("name"), KeyValues::TYPE_STRING);
  EXPECT_EQ(alpha->GetInt("kills"), 7);
  EXPECT_EQ(alpha->GetDataType("kills"), KeyValues::TYPE_INT);
  EXPECT_FLOAT_EQ(alpha->GetFloat("x"), 1.5f);
  EXPECT_EQ(alpha->GetDataType("x"), KeyValues::TYPE_FLOAT);
  EXPECT_EQ(group->FindKey("nested")->FindKey("beta")->GetInt("kills"), -2);
  alpha->SetInt("kills", 0);
  EXPECT_EQ(Run("tw_testlist players"), "");
  EXPECT_EQ(Names(group), "alpha nested");  // found again by name, not added twice
  EXPECT_EQ(alpha->GetInt("kills"), 7);
}

TEST_F(ListResultTest, GroupThatCantBeMadeIsReportedBeforeListing) {
  s_rowsGathered = 0;
  std::string out = Run("tw_xtestlist \"\"");
  EXPECT_NE(out.find("ERROR: Tidewright couldn't create the user group.\n"), std::string::npos) << out;
  EXPECT_EQ(s_rowsGathered, 0);
  EXPECT_EQ(Names(Groups()), "");
}

TEST_F(ListResultTest, PythonDoorReturnsADictionaryInRowOrder) {
  PyObject* none = PyTuple_New(0);
  EXPECT_EQ(CallTwRepr("testlist", none),
            "{'alpha': {'name': 'Alice Smith', 'kills': 7, 'x': 1.5}, 'nested/beta': {'kills': -2}}");
  Py_DECREF(none);
  EXPECT_EQ(Names(Groups()), "");  // no keygroup from Python
  EXPECT_TRUE(std::holds_alternative<std::monostate>(TakeResult()));
}

}  // namespace
