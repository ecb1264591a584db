// The world commands through the Python door, one test per shape of value: inputs stand one lower, the
// value comes back instead of being stored, and no count is checked.
#include <Python.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "python_call.h"
#include "worldaccess_fixture.h"

namespace {

class WorldPythonTest : public WorldAccessTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  // The repr of what tw_C.<method>(*items) gives, items passed as texts.
  static std::string Call(const char* method, std::initializer_list<std::string> items) {
    PyObject* tuple = PyTuple_New(Py_ssize_t(items.size()));
    Py_ssize_t i = 0;
    for (const std::string& item : items) PyTuple_SET_ITEM(tuple, i++, PyUnicode_FromString(item.c_str()));
    std::string text = CallTwRepr(method, tuple);
    Py_DECREF(tuple);
    return text;
  }
};

TEST_F(WorldPythonTest, AnIntegerComesBack) {
  int userid = Connect("Pythonista");
  EXPECT_EQ(Call("getuserid", {"python"}), std::to_string(userid));
  EXPECT_EQ(Call("getuserid", {}), std::to_string(userid));
  EXPECT_EQ(Call("getplayercount", {}), "1");
  EXPECT_EQ(Call("getplayercount", {"3"}), "0");
  EXPECT_EQ(Call("getplayercount", {"3", "4"}), "None");  // one too many, as at the console
}

TEST_F(WorldPythonTest, ANameIsTextOrTheIntegerZero) {
  int userid = Connect("Named");
  EXPECT_EQ(Call("getplayername", {std::to_string(userid)}), "'Named'");
  EXPECT_EQ(Call("getplayername", {std::to_string(userid + 50)}), "0");
  EXPECT_EQ(Call("getplayersteamid", {std::to_string(userid + 50)}), "None");
  EXPECT_EQ(Call("getplayername", {"0"}), "None");
  EXPECT_EQ(LastError(), "Invalid userid");
}

TEST_F(WorldPythonTest, ALocationIsATupleOfThreeFloats) {
  int userid = Connect("Walker");
  Run("sim_set " + std::to_string(userid) + " origin 1.5,-2,3");
  EXPECT_EQ(Call("getplayerlocation", {std::to_string(userid)}), "(1.5, -2.0, 3.0)");
  EXPECT_EQ(Call("getplayerlocation", {std::to_string(userid + 50)}), "(0.0, 0.0, 0.0)");
}

TEST_F(WorldPythonTest, APropertyComesBackByItsType) {
  int userid = Connect("Propped");
  const std::string id = std::to_string(userid);
  Run("sim_set " + id + " origin 1,2,3");
  EXPECT_EQ(Call("getplayerprop", {id, "CCSPlayer.m_iAccount"}), "800");
  EXPECT_EQ(Call("getplayerprop", {id, "CBaseEntity.m_vecOrigin"}), "'1.000000,2.000000,3.000000'");
  EXPECT_EQ(Call("getplayerprop", {id, "CCSPlayer.m_iHealth"}), "None");  // not found: nothing
  EXPECT_EQ(Call("setplayerprop", {id, "CCSPlayer.m_iAccount", "5"}), "None");
  EXPECT_EQ(Client(userid).entity->fields.account, 5);
  EXPECT_EQ(Call("getindexprop", {std::to_string(Client(userid).slot), "CCSPlayer.m_iAccount"}), "5");
}

}  // namespace

namespace {

TEST_F(WorldPythonTest, AListIsADictionaryKeyedByNumber) {
  int a = Connect("First");
  int b = AddBot("Second");
  EXPECT_EQ(Call("createplayerlist", {std::to_string(b)}).substr(0, 40),
            "{" + std::to_string(b) + ": {'name': 'Second', 'steamid': 'BOT'");
  std::string all = Call("createplayerlist", {});
  EXPECT_NE(all.find(std::to_string(a) + ": {'name': 'First'"), std::string::npos) << all;
  EXPECT_EQ(Call("createplayerlist", {"99"}), "{}");
  std::string one = Call("createentitylist", {std::to_string(Client(a).slot)});
  EXPECT_EQ(one.rfind("{" + std::to_string(Client(a).slot) + ": {'classname': 'player', ", 0), 0u) << one;
  EXPECT_NE(one.find("'CCSPlayer.m_iAccount': 800"), std::string::npos) << one;
}

}  // namespace

namespace {

TEST_F(WorldPythonTest, DirectCommandsGiveTheirValues) {
  int a = Connect("Listener");
  int b = Connect("Speaker");
  EXPECT_EQ(Call("voicechat", {"islistening", std::to_string(a), std::to_string(b)}), "1");
  EXPECT_EQ(Call("physics", {"get", "gravity"}), "'0.000000,0.000000,-600.000000'");
  EXPECT_EQ(Call("physics", {"get", "airdensity"}), "2.0");
  EXPECT_EQ(Call("getentityindex", {"worldspawn"}), "0");
  std::string bot = Call("createbot", {"Pybot"});
  EXPECT_EQ(SimWorld().ClientByUserid(atoi(bot.c_str()))->name, "Pybot");
  EXPECT_EQ(Call("precachemodel", {}), "None");
  EXPECT_EQ(LastError(), "Syntax error");
  EXPECT_NE(Call("precachemodel", {"models/py.mdl"}), "None");
  EXPECT_EQ(Call("cexec", {std::to_string(a), "say hi"}), "None");
}

}  // namespace
