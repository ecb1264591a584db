// The messaging commands through their Python door: arguments stand where they stand at the console (no
// command here yields a value), nothing is counted, every call gives None, and each handler's Python form
// does what its console form does, or nothing where the text has no blank to split at.
#include <Python.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "messaging_fixture.h"
#include "python/methodtable.h"
#include "python_call.h"

namespace {

class MessagingPythonTest : public MessagingTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  // Calls tw_C.<method>(*items), items passed as texts; gives the repr of the result and what was printed.
  static std::string Call(const char* method, std::initializer_list<std::string> items, std::string* printed = nullptr) {
    OutputCapture capture;
    PyObject* tuple = PyTuple_New(Py_ssize_t(items.size()));
    Py_ssize_t i = 0;
    for (const std::string& item : items) PyTuple_SET_ITEM(tuple, i++, PyUnicode_FromString(item.c_str()));
    std::string repr = CallTwRepr(method, tuple);
    Py_DECREF(tuple);
    if (printed) *printed = capture.Take();
    return repr;
  }
};

TEST_F(MessagingPythonTest, EveryCommandHasItsBinder) {
  for (const char* name : {"usermsg", "msg", "tell", "centermsg", "centertell", "toptext", "menu", "escmenu",
                           "esctextbox", "escinputbox", "keygroupmsg", "emitsound", "playsound", "stopsound",
                           "precachesound", "effect", "stringtable", "dumpstringtable"})
    EXPECT_NE(FindTwMethod(name), nullptr) << name;
  EXPECT_EQ(FindTwMethod("dumpusermessages"), nullptr);  // one form only
  EXPECT_EQ(FindTwMethod("dumpstringtables"), nullptr);
}

TEST_F(MessagingPythonTest, ChatFromPythonSplitsWhereTheConsoleDoes) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  std::string printed;
  SimWorld().ShowDeliveries(false);
  EXPECT_EQ(Call("msg", {"#green", "hi there"}, &printed), "None");
  EXPECT_EQ(printed, "\x04hi there\n");
  EXPECT_EQ(Call("msg", {"a\nb"}, &printed), "None");  // a line feed anywhere: none added
  EXPECT_EQ(printed, "a\nb");
  EXPECT_EQ(Call("tell", {a, "hi"}), "None");
  EXPECT_EQ(Call("centertell", {a, "hi"}), "None");
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 4u);
  EXPECT_EQ(Hex(got[0].bytes), "03 04 68 69 20 74 68 65 72 65 0A 00");
  EXPECT_EQ(Hex(got[1].bytes), "03 61 0A 62 00");
  EXPECT_EQ(Hex(got[2].bytes), "03 68 69 0A 00");
  EXPECT_EQ(Hex(got[3].bytes), "04 68 69 0A 00 00 00 00 00");
  // No blank behind the userid: nothing to send, nothing printed, no last error.
  Set("tidewright_lasterror", "kept");
  EXPECT_EQ(Call("tell", {a}, &printed), "None");
  EXPECT_EQ(Call("centertell", {a}), "None");
  EXPECT_EQ(Call("msg", {"#green"}), "None");
  SimWorld().ShowDeliveries(true);
  EXPECT_EQ(printed, "");
  EXPECT_TRUE(Take().empty());
  EXPECT_EQ(LastError(), "kept");
}

TEST_F(MessagingPythonTest, MenusDialogsAndMessagesFromPython) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  EXPECT_EQ(Call("menu", {"0", a, "x"}), "None");  // no options: all keys
  EXPECT_EQ(Call("usermsg", {"create", "py", "SayText"}), "None");
  EXPECT_EQ(Call("usermsg", {"write", "byte", "py", "9"}), "None");
  EXPECT_EQ(Call("usermsg", {"send", "py", a}), "None");
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(Hex(got[0].bytes), "FF 03 FF 00 78 00");
  EXPECT_EQ(Hex(got[1].bytes), "09");
  std::string printed;
  Call("toptext", {a, "10", "#red Hi there"}, &printed);  // one item with blanks: the message follows its word
  EXPECT_EQ(printed, "> dialog msg to " + a + ": \"msg\" title=\"Hi there\" color=255,0,0,255 level=5 time=10\n");
  Call("escmenu", {"10", a, "T", "x", "Yes", "No"}, &printed);
  EXPECT_NE(printed.find("2.msg=\"No\" 2.command=\"menuselect 2;//\\\"\""), std::string::npos) << printed;
  Call("escinputbox", {"10", a, "T", "x"}, &printed);  // a missing command is the empty one, quoted
  EXPECT_NE(printed.find("command=\"\\\"\\\"\""), std::string::npos) << printed;
  // No count is checked: too few arguments go on with empty ones.
  EXPECT_EQ(Call("usermsg", {}, &printed), "None");
  EXPECT_EQ(printed, "Not enough parameters\n");
}

TEST_F(MessagingPythonTest, SoundsAndTablesFromPython) {
  int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  std::string printed;
  Call("playsound", {a, "py/one.wav"}, &printed);  // no volume: 0.0, where the console refuses
  EXPECT_NE(printed.find("> sound to " + a + ": \"py/one.wav\" entity " + std::to_string(Client(alice).slot) +
                         " channel 0 volume 0.00 attenuation 1.00 pitch 100\n"),
            std::string::npos)
      << printed;
  Call("emitsound", {"player", a, "py/two.wav", "0.5"}, &printed);  // no attenuation: 0.0
  EXPECT_NE(printed.find("volume 0.50 attenuation 0.00"), std::string::npos) << printed;
  Call("precachesound", {}, &printed);  // no path: nothing at all
  EXPECT_EQ(printed, "");
  Call("stringtable", {"downloadables", "py/file.txt"}, &printed);
  EXPECT_EQ(printed, "> stringtable downloadables: \"py/file.txt\" at " +
                         std::to_string(SimWorld().StringTables().Table("downloadables")->GetNumStrings() - 1) + "\n");
  Call("dumpstringtable", {"downloadables", "py/file.txt"}, &printed);
  EXPECT_EQ(printed, "Data:\npy/file.txt\nData:\n\n");
}

}  // namespace
