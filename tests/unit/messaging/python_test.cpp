// The messaging commands through their Python door where the scenario python/binders_messaging doesn't
// reach: texts only Python can pass (a line feed, blanks inside one item), and no count checked, so missing
// arguments go on as empty ones, or nothing happens where the text has no blank to split at.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "messaging_fixture.h"
#include "python_call.h"

namespace {

class MessagingPythonTest : public MessagingTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
};

TEST_F(MessagingPythonTest, ChatFromPythonSplitsWhereTheConsoleDoes) {
  const std::string a = std::to_string(Connect("Alice"));
  OutputCapture capture;
  SimWorld().ShowDeliveries(false);
  EXPECT_EQ(CallTwRepr("msg", {"a\nb"}), "None");  // a line feed anywhere: none added
  EXPECT_EQ(capture.Take(), "a\nb");
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(Hex(got[0].bytes), "03 61 0A 62 00");
  // No blank behind the userid or the colour: nothing to send, nothing printed, no last error.
  Set("tidewright_lasterror", "kept");
  for (const char* method : {"tell", "centertell"}) EXPECT_EQ(CallTwRepr(method, {a.c_str()}), "None") << method;
  EXPECT_EQ(CallTwRepr("msg", {"#green"}), "None");
  SimWorld().ShowDeliveries(true);
  EXPECT_EQ(capture.Text(), "");
  EXPECT_TRUE(Take().empty());
  EXPECT_EQ(LastError(), "kept");
}

TEST_F(MessagingPythonTest, MissingArgumentsGoOnAsEmptyOnes) {
  const int alice = Connect("Alice");
  const std::string a = std::to_string(alice);
  EXPECT_EQ(CallTwRepr("menu", {"0", a.c_str(), "x"}), "None");  // no options: all keys
  std::vector<SentUserMessage> got = Take();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(Hex(got[0].bytes), "FF 03 FF 00 78 00");
  OutputCapture capture;
  CallTwRepr("toptext", {a.c_str(), "10", "#red Hi there"});  // one item with blanks: the message follows its word
  EXPECT_EQ(capture.Take(), "> dialog msg to " + a + ": \"msg\" title=\"Hi there\" color=255,0,0,255 level=5 time=10\n");
  CallTwRepr("escinputbox", {"10", a.c_str(), "T", "x"});  // a missing command is the empty one, quoted
  EXPECT_TRUE(capture.Contains("command=\"\\\"\\\"\"")) << capture.Text();
  capture.Take();
  CallTwRepr("playsound", {a.c_str(), "py/one.wav"});  // no volume: 0.0, where the console refuses
  EXPECT_TRUE(capture.Contains("> sound to " + a + ": \"py/one.wav\" entity " + std::to_string(Client(alice).slot) +
                               " channel 0 volume 0.00 attenuation 1.00 pitch 100\n"))
      << capture.Text();
  capture.Take();
  EXPECT_EQ(CallTwRepr("usermsg", {}), "None");
  EXPECT_EQ(capture.Take(), "Not enough parameters\n");
  CallTwRepr("precachesound", {});  // no path: nothing at all
  EXPECT_EQ(capture.Text(), "");
}

}  // namespace
